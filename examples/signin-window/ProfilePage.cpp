// SPDX-License-Identifier: MIT
#include "ProfilePage.h"

#include "Field.h"
#include "Heading.h"
#include "Requests.h"
#include "Words.h"

#include <QtCore/QDateTime>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

using namespace VelqorPassPort;

namespace {

QString phoneText(const QVariantMap &profile)
{
    const QString phone = profile.value(QStringLiteral("phone")).toString();
    const QString area = profile.value(QStringLiteral("phoneArea")).toString();
    return phone.isEmpty() || area.isEmpty() ? phone
                                             : QLatin1Char('+') + area + QLatin1Char(' ') + phone;
}

QString timeText(const QString &isoTime)
{
    const QDateTime time = QDateTime::fromString(isoTime, Qt::ISODateWithMs).toLocalTime();
    return spokenLocale().toString(time, QLocale::ShortFormat);
}

} // namespace

ProfilePage::ProfilePage(Requests &requests, QWidget *parent)
    : QWidget(parent)
    , m_requests(requests)
    , m_title(newHeading())
    , m_rows(new QFormLayout)
    , m_refresh(new QPushButton(tr("&Refresh")))
{
    auto *signOut = new QPushButton(tr("Sign &out"));
    signOut->setObjectName(QStringLiteral("signOut"));
    // Neither is the default: the second of two quick Enters must not sign out again.
    m_refresh->setAutoDefault(false);
    signOut->setAutoDefault(false);
    m_title->setObjectName(QStringLiteral("title"));
    setFocusProxy(m_refresh);
    // The style of macOS would keep them at their least width, and cut long values.
    m_rows->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_refresh);
    buttons->addWidget(signOut);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacingOfFields(*this));
    layout->addWidget(m_title);
    layout->addLayout(m_rows);
    layout->addLayout(buttons);

    connect(m_refresh, &QPushButton::clicked, this, &ProfilePage::refresh);
    connect(signOut, &QPushButton::clicked, this, [this] {
        m_requests.passport().logOut();
        Q_EMIT signedOut();
    });
}

void ProfilePage::setProfile(const QVariantMap &profile)
{
    while (m_rows->rowCount() > 0)
        m_rows->removeRow(0);
    const auto text = [&](const char *key) { return profile.value(QLatin1String(key)).toString(); };
    const QString name = text("nickName");
    m_title->setText(name.isEmpty() ? tr("Welcome") : tr("Welcome, %1").arg(name));
    const auto addRow = [this](const QString &label, const QString &value) {
        if (value.isEmpty())
            return;
        auto *field = new QLabel(value);
        field->setTextFormat(Qt::PlainText);
        field->setWordWrap(true);
        m_rows->addRow(label, field);
    };
    addRow(tr("E-mail:"), text("email"));
    addRow(tr("Phone:"), phoneText(profile));
    addRow(tr("Company:"), text("companyName"));
    addRow(tr("Last sign-in:"), timeText(text("lastLogin")));
}

void ProfilePage::refresh()
{
    QVariantMap profile;
    const PassportCommunityError outcome = m_requests.run([&](Passport &passport) {
        return passport.reqGetUserInfo(profile, QStringLiteral("product"));
    });
    if (outcome.isError())
        Q_EMIT failed(sentenceFor(outcome));
    else
        setProfile(profile);
}
