// SPDX-License-Identifier: MIT
#include "services/AccountService.h"

#include "http/Fields.h"
#include "http/Refusal.h"
#include "services/Denial.h"
#include "storage/Secrets.h"

#include <QtCore/QStringList>

namespace {

const QString perms = QStringLiteral("perms");
const QString oems = QStringLiteral("oems");

QJsonObject accountRecord(const Account &account, const QString &token)
{
    const QString userId = QString::number(account.userId);
    QJsonObject record = account.profile;
    record.insert(QStringLiteral("token"), token);
    record.insert(QStringLiteral("user_id"), userId);
    record.insert(QStringLiteral("userID"), userId);
    record.insert(QStringLiteral("email"), account.email);
    record.insert(QStringLiteral("phone"), account.phone);
    record.insert(QStringLiteral("phone_area"), account.phoneArea);
    record.insert(QStringLiteral("lastLogin"), account.previousLoginAt);
    record.insert(QStringLiteral("lastIP"), account.previousLoginIp);
    record.insert(QStringLiteral("source"), QStringLiteral("product"));
    record.insert(QStringLiteral("status"), !account.locked);
    return record;
}

void requireLoginType(const Fields &body)
{
    if (body.text(QStringLiteral("loginType")) != QLatin1String("VelqorPassPort"))
        throw Refusal(400, QStringLiteral("field \"loginType\" must be \"VelqorPassPort\""));
}

} // namespace

AccountService::AccountService(Store &store, Sessions &sessions, CaptchaService &captchas,
                               CodeService &codes, const Settings &settings, const Clock &clock)
    : m_store(store)
    , m_sessions(sessions)
    , m_captchas(captchas)
    , m_codes(codes)
    , m_settings(settings)
    , m_clock(clock)
    , m_nobodysHash(hashPassword(newToken()))
{
}

// An unknown user costs the same work and gets the same word as a wrong password, so that nobody
// learns from the answer which accounts exist.
Answer AccountService::logIn(const Request &request)
{
    const Fields body(request.json());
    const QString userName = body.text(QStringLiteral("username"));
    const QString password = body.text(QStringLiteral("password"));
    const QString phoneArea = body.text(QStringLiteral("phoneArea"));
    requireLoginType(body);
    std::optional<Account> account = m_store.find(userName, phoneArea);
    const bool right = matchesPassword(password, account ? account->passwordHash : m_nobodysHash);
    if (account && m_clock.now() < account->lockedOutUntil)
        throw Denial(Denial::illegalErr);
    if (account && !right)
        countWrongPassword(*account);
    if (!account || !right)
        throw Denial(Denial::pwdErr);
    if (account->locked)
        throw Denial(Denial::illegalErr);
    if (account->wrongPasswords > 0) {
        account->wrongPasswords = 0;
        m_store.update(*account);
    }
    return startSession(*account, request);
}

Answer AccountService::logInByCode(const Request &request)
{
    const Fields body(request.json());
    const QString userName = body.text(QStringLiteral("username"));
    const QString phoneArea = body.text(QStringLiteral("phoneArea"));
    requireLoginType(body);
    const Account account = findOpen(userName, phoneArea);
    m_codes.redeem(CodePurpose::signIn, request.json());
    return startSession(account, request);
}

Answer AccountService::checkExistence(const Request &request)
{
    const Fields body(request.json());
    const QString captcha = body.text(QStringLiteral("captcha"));
    const QString userName = body.text(QStringLiteral("username"));
    const QString phoneArea = body.text(QStringLiteral("phoneArea"));
    const CaptchaLink link = CaptchaLink::parse(body.text(QStringLiteral("uuid")));
    m_captchas.use(link, captcha, CaptchaUse::ExistenceCheck);
    if (!m_store.find(userName, phoneArea))
        throw Denial(Denial::notExistErr);
    return okAnswer(QJsonObject());
}

Answer AccountService::resetPassword(const Request &request)
{
    const Fields body(request.json());
    const QString userName = body.text(QStringLiteral("username"));
    const QString phoneArea = body.text(QStringLiteral("phoneArea"));
    const QString password = body.text(QStringLiteral("password"));
    Account account = findOpen(userName, phoneArea);
    if (password.size() < minimumPasswordLength)
        throw Denial(Denial::pwdTooShort); // the code can still be used
    m_codes.redeem(CodePurpose::newPassword, request.json());
    account.setPassword(password);
    m_store.update(account);
    m_sessions.endOf(account.userId);
    return okAnswer(QJsonObject());
}

void AccountService::countWrongPassword(Account &account)
{
    const int tries = m_settings.lockOutTries();
    if (tries == 0)
        return;
    if (++account.wrongPasswords >= tries) {
        account.wrongPasswords = 0;
        account.lockedOutUntil = m_clock.now() + m_settings.lockOutSeconds() * 1000LL;
    }
    m_store.update(account);
}

// The account of a request with a verification code. Unlike a sign-in with a password, it may say
// which accounts exist: a solved captcha, without which no code is sent, tells that too.
Account AccountService::findOpen(const QString &name, const QString &phoneArea) const
{
    const std::optional<Account> account = m_store.find(name, phoneArea);
    if (!account)
        throw Denial(Denial::notExistErr);
    if (account->isLockedAt(m_clock.now()))
        throw Denial(Denial::illegalErr);
    return *account;
}

Answer AccountService::startSession(const Account &account, const Request &request)
{
    const bool withPerms = request.queryFlag(QStringLiteral("withPerms"));
    const bool withDentals = request.queryFlag(QStringLiteral("withDentals"));
    const QString token = m_sessions.start(account.userId, request.remoteAddress);
    QJsonObject record = accountRecord(*m_store.account(account.userId), token);
    if (!withPerms)
        record.remove(perms);
    if (!withDentals)
        record.remove(oems);
    return okAnswer(record);
}

Answer AccountService::profile(const Request &request)
{
    const QString token = request.headerValues(QStringLiteral("X-Auth-Token")).value(0);
    const std::optional<Account> account = m_sessions.accountOf(token);
    const QString userId = request.query.value(QStringLiteral("userID"));
    if (!account || userId != QString::number(account->userId))
        throw Denial(Denial::authErr);
    return okAnswer(accountRecord(*account, token));
}
