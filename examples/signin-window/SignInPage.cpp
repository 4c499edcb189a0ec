#include "SignInPage.h"

#include "CodeFields.h"
#include "Requests.h"
#include "Words.h"

#include <QtCore/QJsonObject>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTabBar>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QVBoxLayout>

using namespace VelqorPassPort;

SignInPage::SignInPage(Requests &requests, QWidget *parent)
    : QWidget(parent)
    , m_requests(requests)
    , m_account(new QLineEdit)
    , m_country(new QComboBox)
    , m_ways(new QTabWidget)
    , m_password(new QLineEdit)
    , m_code(new CodeFields(requests))
    , m_remember(new QCheckBox(tr("Re&member me on this computer")))
    , m_signIn(new QPushButton(tr("&Sign in")))
{
    m_account->setObjectName(QStringLiteral("account"));
    m_account->setPlaceholderText(tr("User name, e-mail or phone number"));
    m_country->setObjectName(QStringLiteral("country"));
    m_country->addItem(tr("None"));
    m_password->setObjectName(QStringLiteral("password"));
    m_password->setEchoMode(QLineEdit::Password);
    m_remember->setObjectName(QStringLiteral("remember"));
    m_signIn->setObjectName(QStringLiteral("signIn"));
    layOut();

    m_requests.addStarter(m_signIn);
    m_requests.addStarter(m_ways->tabBar()); // another tab may need a captcha
    connect(m_signIn, &QPushButton::clicked, this, &SignInPage::signIn);
    connect(m_code->sendButton(), &QPushButton::clicked, this,
            [this] { m_code->sendCode(m_account->text(), phoneArea()); });
    connect(m_code, &CodeFields::codeChanged, this, &SignInPage::updateDefaultButton);
    connect(m_ways, &QTabWidget::currentChanged, this, [this] {
        updateDefaultButton();
        fetchMissing();
    });
    updateDefaultButton();
}

void SignInPage::layOut()
{
    auto *passwordFields = new QWidget;
    auto *passwordForm = new QFormLayout(passwordFields);
    passwordForm->addRow(tr("Pass&word:"), m_password);
    m_ways->addTab(passwordFields, tr("By &password"));
    m_ways->addTab(m_code, tr("By &verification code"));

    auto *accountForm = new QFormLayout;
    accountForm->addRow(tr("&Account:"), m_account);
    accountForm->addRow(tr("&Calling code:"), m_country);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(accountForm);
    layout->addWidget(m_ways);
    layout->addWidget(m_remember);
    layout->addWidget(m_signIn);
}

void SignInPage::begin()
{
    const QJsonObject remembered = m_requests.passport().getAccountInfo();
    const QString name = remembered.value(QLatin1String("name")).toString();
    m_account->setText(name);
    m_password->setText(remembered.value(QLatin1String("password")).toString());
    m_remember->setChecked(!name.isEmpty());
    m_ways->setCurrentIndex(0);
    m_hasCaptcha = false;
    QLineEdit *const next = name.isEmpty() ? m_account : m_password;
    next->setFocus();
    next->selectAll();
}

void SignInPage::fetchMissing()
{
    QString words;
    if (m_country->count() == 1)
        words = fetchCountries();
    if (byCode() && !m_hasCaptcha) {
        const QString captchaWords = m_code->renew();
        m_hasCaptcha = captchaWords.isEmpty();
        if (words.isEmpty())
            words = captchaWords;
    }
    m_requests.say(words);
}

QString SignInPage::fetchCountries()
{
    QVariantList countries;
    QString name;
    QVariantMap here;
    const PassportCommunityError outcome = m_requests.run([&] {
        PassportCommunityError record = m_requests.passport().reqCountries(countries);
        if (!record.isError())
            record = m_requests.passport().reqCurrentCountry(name, here);
        return record;
    });
    for (const QVariant &entry : qAsConst(countries)) {
        const QVariantMap country = entry.toMap();
        const QString area = country.value(QStringLiteral("phoneArea")).toString();
        m_country->addItem(
            tr("%1 (+%2)").arg(country.value(QStringLiteral("name")).toString(), area), area);
        if (country == here)
            m_country->setCurrentIndex(m_country->count() - 1);
    }
    return wordsFor(outcome);
}

void SignInPage::signIn()
{
    QVariantMap profile;
    const QString tokenBefore = m_requests.passport().token();
    const PassportCommunityError outcome = m_requests.run([&] { return requestSignIn(profile); });
    // By a code the outcome is the profile's: the user may be signed in all the same.
    if (m_requests.passport().token() != tokenBefore) {
        m_password->clear();
        Q_EMIT signedIn(profile);
    } else if (byCode()) {
        m_code->focusCode();
    } else {
        m_password->setFocus();
        m_password->selectAll();
    }
    m_requests.say(wordsFor(outcome));
}

PassportCommunityError SignInPage::requestSignIn(QVariantMap &profile)
{
    Passport &passport = m_requests.passport();
    if (byCode()) {
        return passport.reqCodeLogIn(m_account->text(), phoneArea(), m_code->captcha(),
                                     m_code->code(), profile, QStringLiteral("product"),
                                     m_remember->isChecked());
    }
    return passport.logIn(m_account->text(), m_password->text(), phoneArea(), profile,
                          m_remember->isChecked());
}

void SignInPage::updateDefaultButton()
{
    const bool needsCode = byCode() && m_code->code().isEmpty();
    (needsCode ? m_code->sendButton() : m_signIn)->setDefault(true);
}

bool SignInPage::byCode() const
{
    return m_ways->currentWidget() == m_code;
}

QString SignInPage::phoneArea() const
{
    return m_country->currentData().toString();
}
