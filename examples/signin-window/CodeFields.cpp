#include "CodeFields.h"

#include "Requests.h"
#include "Words.h"

#include <QtCore/QLocale>
#include <QtGui/QPixmap>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

using namespace VelqorPassPort;

namespace {

constexpr QSize pictureSize{160, 50};

QString purpose()
{
    return QStringLiteral("login");
}

} // namespace

CodeFields::CodeFields(Requests &requests, QWidget *parent)
    : QWidget(parent)
    , m_requests(requests)
    , m_picture(new QPushButton)
    , m_captcha(new QLineEdit)
    , m_send(new QPushButton(tr("Sen&d code")))
    , m_code(new QLineEdit)
{
    m_picture->setObjectName(QStringLiteral("picture"));
    m_picture->setAccessibleName(tr("Picture with characters"));
    m_picture->setToolTip(tr("Another picture"));
    m_picture->setIconSize(pictureSize);
    m_captcha->setObjectName(QStringLiteral("captcha"));
    m_send->setObjectName(QStringLiteral("send"));
    m_code->setObjectName(QStringLiteral("code"));

    auto *answer = new QHBoxLayout;
    answer->addWidget(m_captcha);
    answer->addWidget(m_send);
    auto *form = new QFormLayout(this);
    form->addRow(tr("Pict&ure:"), m_picture);
    auto *answerLabel = new QLabel(tr("C&haracters:"));
    answerLabel->setBuddy(m_captcha);
    form->addRow(answerLabel, answer);
    form->addRow(tr("C&ode:"), m_code);

    m_requests.addStarter(m_picture);
    m_requests.addStarter(m_send);
    connect(m_picture, &QPushButton::clicked, this, [this] { m_requests.say(renew()); });
    connect(m_code, &QLineEdit::textChanged, this, &CodeFields::codeChanged);
}

QString CodeFields::captcha() const
{
    return m_captcha->text().trimmed();
}

QString CodeFields::code() const
{
    return m_code->text().trimmed();
}

QString CodeFields::renew()
{
    m_captcha->clear();
    m_code->clear();
    QVariant drawn;
    const PassportCommunityError outcome = m_requests.run([&] {
        return m_requests.passport().reqCaptcha(
            drawn, QString::number(pictureSize.width()), QString::number(pictureSize.height()),
            QStringLiteral("300"), QStringLiteral("4"), purpose(), QString());
    });
    QPixmap picture;
    picture.loadFromData(
        QByteArray::fromBase64(drawn.toMap().value(QStringLiteral("data")).toString().toLatin1()));
    m_picture->setIcon(picture);
    m_picture->setText(picture.isNull() ? tr("Try again") : QString());
    return wordsFor(outcome);
}

void CodeFields::sendCode(const QString &account, const QString &phoneArea)
{
    QVariant answer;
    const PassportCommunityError outcome = m_requests.run([&] {
        return m_requests.passport().reqValidCode(answer, captcha(), account, phoneArea,
                                                  QLocale().bcp47Name(), purpose(), QString());
    });
    if (!outcome.isError()) {
        m_requests.say(tr("The code is on its way to you."));
        focusCode();
        return;
    }
    // The service takes one answer to a captcha, also a wrong one.
    renew();
    m_captcha->setFocus();
    m_requests.say(wordsFor(outcome));
}

void CodeFields::focusCode()
{
    m_code->setFocus();
    m_code->selectAll();
}
