#include "services/AccountService.h"

#include "http/Fields.h"
#include "http/Refusal.h"
#include "services/Denial.h"
#include "storage/Secrets.h"

#include <QtCore/QDateTime>
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

AccountService::AccountService(Store &store, CaptchaService &captchas, CodeService &codes)
    : m_store(store)
    , m_captchas(captchas)
    , m_codes(codes)
    , m_nobodysHash(hashPassword(newToken()))
{
}

Answer AccountService::logIn(const Request &request)
{
    const Fields body(request.json());
    const QString userName = body.text(QStringLiteral("username"));
    const QString password = body.text(QStringLiteral("password"));
    const QString phoneArea = body.text(QStringLiteral("phoneArea"));
    requireLoginType(body);
    const std::optional<Account> account = authenticate(userName, phoneArea, password);
    if (!account)
        throw Denial(Denial::pwdErr);
    if (account->locked)
        throw Denial(Denial::illegalErr);
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
    const Account account = findOpen(userName, phoneArea);
    if (password.size() < minimumPasswordLength)
        throw Denial(Denial::pwdTooShort); // the code can still be used
    m_codes.redeem(CodePurpose::newPassword, request.json());
    m_store.setPassword(account.userId, hashPassword(password));
    return okAnswer(QJsonObject());
}

// An unknown user costs the same work and gets the same word as a wrong password, so that nobody
// learns from the answer which accounts exist.
std::optional<Account> AccountService::authenticate(const QString &name, const QString &phoneArea,
                                                    const QString &password) const
{
    const std::optional<Account> account = m_store.find(name, phoneArea);
    const bool matches = matchesPassword(password, account ? account->passwordHash : m_nobodysHash);
    return matches ? account : std::nullopt;
}

// The account of a request with a verification code. Unlike a sign-in with a password, it may say
// which accounts exist: a solved captcha, without which no code is sent, tells that too.
Account AccountService::findOpen(const QString &name, const QString &phoneArea) const
{
    const std::optional<Account> account = m_store.find(name, phoneArea);
    if (!account)
        throw Denial(Denial::notExistErr);
    if (account->locked)
        throw Denial(Denial::illegalErr);
    return *account;
}

Answer AccountService::startSession(const Account &account, const Request &request)
{
    const bool withPerms = request.queryFlag(QStringLiteral("withPerms"));
    const bool withDentals = request.queryFlag(QStringLiteral("withDentals"));
    const QString token = newToken();
    const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    m_store.addSession(hashToken(token), account.userId, now, request.remoteAddress);
    QJsonObject record = accountRecord(*m_store.accountOfSession(hashToken(token)), token);
    if (!withPerms)
        record.remove(perms);
    if (!withDentals)
        record.remove(oems);
    return okAnswer(record);
}

Answer AccountService::profile(const Request &request)
{
    const QString token = request.headerValues(QStringLiteral("X-Auth-Token")).value(0);
    const std::optional<Account> account = m_store.accountOfSession(hashToken(token));
    const QString userId = request.query.value(QStringLiteral("userID"));
    if (!account || userId != QString::number(account->userId))
        throw Denial(Denial::authErr);
    return okAnswer(accountRecord(*account, token));
}
