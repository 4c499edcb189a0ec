// SPDX-License-Identifier: MIT
#include "CodeForm.h"

#include "CountdownButton.h"
#include "Field.h"
#include "Requests.h"
#include "Words.h"

#include <QtGui/QPixmap>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

using namespace VelqorPassPort;
using namespace std::chrono_literals;

namespace {

// Usual at the service, which does not tell it.
constexpr std::chrono::seconds pauseBetweenCodes = 60s;

QString purpose()
{
    return QStringLiteral("login");
}

} // namespace

CodeForm::CodeForm(Requests &requests, QWidget *parent)
    : QWidget(parent)
    , m_requests(requests)
    , m_picture(new QPushButton)
    , m_captcha(new QLineEdit)
    , m_send(new CountdownButton(tr("Sen&d code"), tr("Again in %1 s")))
    , m_code(new QLineEdit)
    , m_captchaField(new Field(tr("C&haracters:"), m_captcha))
    , m_codeField(new Field(tr("C&ode:"), m_code))
{
    m_picture->setObjectName(QStringLiteral("picture"));
    m_picture->setAccessibleName(tr("Picture with characters"));
    m_picture->setToolTip(tr("Another picture"));
    m_picture->setAutoDefault(false);
    m_captcha->setObjectName(QStringLiteral("captcha"));
    m_send->setObjectName(QStringLiteral("send"));
    m_code->setObjectName(QStringLiteral("code"));
    layOut();

    connect(m_picture, &QPushButton::clicked, this, &CodeForm::pictureWanted);
    connect(m_send, &QPushButton::clicked, this, &CodeForm::sendWanted);
    connect(m_send, &CountdownButton::countingChanged, this, &CodeForm::changed);
    connect(m_code, &QLineEdit::textChanged, this, &CodeForm::changed);
}

void CodeForm::layOut()
{
    m_captchaField->addBeside(m_send);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacingOfFields(*this));
    layout->addWidget(new Field(tr("Pict&ure, press it for another:"), m_picture));
    layout->addWidget(m_captchaField);
    layout->addWidget(m_codeField);
}

QString CodeForm::captcha() const
{
    return m_captcha->text().trimmed();
}

QString CodeForm::code() const
{
    return m_code->text().trimmed();
}

bool CodeForm::needsSending() const
{
    return code().isEmpty() && !m_send->isCounting();
}

QPushButton *CodeForm::sendButton() const
{
    return m_send;
}

Field *CodeForm::field(const QString &name) const
{
    if (name == QLatin1String("captcha"))
        return m_captchaField;
    return name == QLatin1String("code") ? m_codeField : nullptr;
}

PassportCommunityError CodeForm::fetchPicture()
{
    m_captcha->clear();
    m_code->clear();
    const QSize size = QSize(10, 3) * fontMetrics().height();
    const QSize pixels = size * devicePixelRatioF();
    QVariant drawn;
    PassportCommunityError outcome = m_requests.run([&](Passport &passport) {
        return passport.reqCaptcha(drawn, QString::number(pixels.width()),
                                   QString::number(pixels.height()), QStringLiteral("300"),
                                   QStringLiteral("4"), purpose(), QString());
    });
    QPixmap picture;
    picture.loadFromData(
        QByteArray::fromBase64(drawn.toMap().value(QStringLiteral("data")).toString().toLatin1()));
    picture.setDevicePixelRatio(devicePixelRatioF());
    m_hasPicture = !picture.isNull();
    m_picture->setIconSize(size);
    m_picture->setIcon(picture);
    m_picture->setText(m_hasPicture ? QString() : tr("Try again"));
    return outcome;
}

PassportCommunityError CodeForm::sendCode(const QString &account, const QString &phoneArea)
{
    QVariant answer;
    PassportCommunityError outcome = m_requests.run([&](Passport &passport) {
        return passport.reqValidCode(answer, captcha(), account, phoneArea, spokenLanguageTag(),
                                     purpose(), QString());
    });
    const bool wasSentBefore = outcome.errorMessage == QLatin1String("tooFrequent");
    if (!outcome.isError() || wasSentBefore)
        m_send->startCountdown(pauseBetweenCodes);
    if (!outcome.isError())
        m_codeField->focusInput();
    else if (!outcome.errorMessage.isEmpty())
        fetchPicture(); // the service takes one answer to a captcha, also a wrong one
    return outcome;
}
