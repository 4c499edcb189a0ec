// SPDX-License-Identifier: MIT
#include "SignInPage.h"

#include "CodeForm.h"
#include "CountryBox.h"
#include "Heading.h"
#include "PasswordField.h"
#include "Requests.h"
#include "WebLinks.h"
#include "Words.h"

#include <QtCore/QJsonObject>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTabBar>
#include <QtWidgets/QVBoxLayout>

using namespace VelqorPassPort;

SignInPage::SignInPage(Requests &requests, const HostSettings &settings, QWidget *parent)
    : QWidget(parent)
    , m_requests(requests)
    , m_account(new QLineEdit)
    , m_accountField(new Field(tr("&Account:"), m_account))
    , m_country(new CountryBox)
    , m_ways(new QTabBar)
    , m_password(new PasswordField)
    , m_code(new CodeForm(requests))
    , m_remember(new QCheckBox(tr("Re&member me on this computer")))
    , m_signIn(new QPushButton(tr("&Sign in")))
    , m_links(new WebLinks(requests, settings))
    , m_countries(settings)
{
    m_account->setObjectName(QStringLiteral("account"));
    m_account->setPlaceholderText(tr("User name, e-mail or phone number"));
    m_country->setObjectName(QStringLiteral("country"));
    m_ways->setObjectName(QStringLiteral("ways"));
    m_ways->addTab(tr("By &password"));
    m_ways->addTab(tr("By &verification code"));
    m_ways->setExpanding(true);
    m_ways->setElideMode(Qt::ElideNone);
    m_remember->setObjectName(QStringLiteral("remember"));
    m_signIn->setObjectName(QStringLiteral("signIn"));
    layOut();
    connectAll();
    showWay();
}

// The focus goes round in the order in which things are added here.
void SignInPage::layOut()
{
    QLabel *heading = newHeading();
    heading->setText(tr("Sign in"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacingOfFields(*this));
    layout->addWidget(heading);
    layout->addWidget(m_accountField);
    layout->addWidget(new Field(tr("&Calling code, for a phone number:"), m_country));
    layout->addWidget(m_ways);
    layout->addWidget(m_password);
    layout->addWidget(m_code);
    layout->addWidget(m_remember);
    layout->addWidget(m_signIn);
    layout->addWidget(m_links);
}

void SignInPage::connectAll()
{
    connect(m_signIn, &QPushButton::clicked, this, &SignInPage::signIn);
    connect(m_code, &CodeForm::pictureWanted, this, &SignInPage::fetchPicture);
    connect(m_code, &CodeForm::sendWanted, this, &SignInPage::sendCode);
    connect(m_code, &CodeForm::changed, this, &SignInPage::updateDefaultButton);
    connect(m_ways, &QTabBar::currentChanged, this, &SignInPage::showWay);
    connect(m_links, &WebLinks::accountBrought, this, &SignInPage::takeOver);
    connect(m_links, &WebLinks::failed, this, &SignInPage::failed);
}

void SignInPage::begin()
{
    const QJsonObject remembered = m_requests.passport().getAccountInfo();
    const QString name = remembered.value(QLatin1String("name")).toString();
    m_account->setText(name);
    m_password->setPassword(remembered.value(QLatin1String("password")).toString());
    m_remember->setChecked(!name.isEmpty());
    m_ways->setCurrentIndex(0);
    Field *const next = name.isEmpty() ? m_accountField : m_password;
    next->focusInput();
    if (!m_country->hasCountries())
        fetchCountries();
}

bool SignInPage::byCode() const
{
    return m_ways->currentIndex() == 1;
}

void SignInPage::showWay()
{
    m_password->setVisible(!byCode());
    m_code->setVisible(byCode());
    updateDefaultButton();
    if (byCode() && !m_code->hasPicture())
        fetchPicture();
}

// Nobody waits for them, and nobody is told when they do not come: the next begin() tries again.
void SignInPage::fetchCountries()
{
    m_countries.start([this](Passport &client) {
        QVariantList countries;
        QString id;
        QVariantMap here;
        if (client.reqCountries(countries).isError())
            return;
        client.reqCurrentCountry(id, here);
        const auto show = [this, countries, here] { m_country->setCountries(countries, here); };
        QMetaObject::invokeMethod(this, show, Qt::QueuedConnection);
    });
}

void SignInPage::fetchPicture()
{
    show(m_code->fetchPicture());
}

void SignInPage::sendCode()
{
    if (!hasAccount())
        return;
    const PassportCommunityError outcome =
        m_code->sendCode(m_account->text(), m_country->callingCode());
    if (outcome.isError())
        show(outcome);
    else
        Q_EMIT said(tr("The code is on its way to you."));
}

void SignInPage::signIn()
{
    if (!isComplete())
        return;
    QVariantMap profile;
    const QString tokenBefore = m_requests.passport().token();
    const PassportCommunityError outcome =
        m_requests.run([&](Passport &passport) { return requestSignIn(passport, profile); });
    // By a code the outcome is the profile's: the user may be signed in all the same.
    if (m_requests.passport().token() != tokenBefore) {
        m_password->setPassword(QString());
        Q_EMIT signedIn(profile);
    }
    show(outcome);
}

bool SignInPage::hasAccount()
{
    if (!m_account->text().trimmed().isEmpty())
        return true;
    m_accountField->setError(tr("Please type your user name, e-mail or phone number."));
    return false;
}

// What the service would refuse anyhow, told at once.
bool SignInPage::isComplete()
{
    if (!hasAccount())
        return false;
    if (!byCode() && m_password->password().isEmpty()) {
        m_password->setError(tr("Please type your password."));
        return false;
    }
    if (byCode() && m_code->code().isEmpty()) {
        m_code->field(QStringLiteral("code"))->setError(tr("Please type the code."));
        return false;
    }
    return true;
}

PassportCommunityError SignInPage::requestSignIn(Passport &passport, QVariantMap &profile) const
{
    const QString name = m_account->text();
    const QString area = m_country->callingCode();
    const bool remember = m_remember->isChecked();
    if (!byCode())
        return passport.logIn(name, m_password->password(), area, profile, remember);
    return passport.reqCodeLogIn(name, area, m_code->captcha(), m_code->code(), profile,
                                 QStringLiteral("product"), remember);
}

void SignInPage::takeOver(const QString &name, const QString &password, const QString &phoneArea)
{
    if (name.isEmpty())
        return;
    m_account->setText(name);
    m_country->setCallingCode(phoneArea);
    m_ways->setCurrentIndex(0);
    m_password->setPassword(password);
    m_signIn->setFocus();
    Q_EMIT said(tr("Your account is filled in: you can sign in now."));
}

void SignInPage::show(const PassportCommunityError &outcome)
{
    if (!outcome.isError())
        return;
    if (Field *field = fieldFor(inputAtFault(outcome)))
        field->setError(sentenceFor(outcome));
    else
        Q_EMIT failed(sentenceFor(outcome));
}

Field *SignInPage::fieldFor(const QString &input) const
{
    if (input == QLatin1String("username"))
        return m_accountField;
    if (byCode())
        return m_code->field(input);
    return input == QLatin1String("password") ? m_password : nullptr;
}

void SignInPage::updateDefaultButton()
{
    (byCode() && m_code->needsSending() ? m_code->sendButton() : m_signIn)->setDefault(true);
}
