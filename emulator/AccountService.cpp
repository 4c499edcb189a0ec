#include "AccountService.h"

#include "Fields.h"
#include "Secrets.h"

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

} // namespace

AccountService::AccountService(Store &store)
    : m_store(store)
    , m_nobodysHash(hashPassword(newToken()))
{
}

Answer AccountService::logIn(const Request &request)
{
    const Fields body(request.json());
    const QString userName = body.text(QStringLiteral("username"));
    const QString password = body.text(QStringLiteral("password"));
    const QString phoneArea = body.text(QStringLiteral("phoneArea"));
    if (body.text(QStringLiteral("loginType")) != QLatin1String("VelqorPassPort"))
        throw Refusal(400, QStringLiteral("field \"loginType\" must be \"VelqorPassPort\""));
    const bool withPerms = request.queryFlag(QStringLiteral("withPerms"));
    const bool withDentals = request.queryFlag(QStringLiteral("withDentals"));

    std::optional<Account> account = authenticate(userName, phoneArea, password);
    if (!account)
        return failAnswer(QStringLiteral("pwdErr"));
    if (account->locked)
        return failAnswer(QStringLiteral("illegalErr"));
    const QString token = startSession(*account, request.remoteAddress);
    account = m_store.accountOfSession(hashToken(token));
    QJsonObject record = accountRecord(*account, token);
    if (!withPerms)
        record.remove(perms);
    if (!withDentals)
        record.remove(oems);
    return okAnswer(record);
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

QString AccountService::startSession(const Account &account, const QString &ip)
{
    const QString token = newToken();
    const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    m_store.addSession(hashToken(token), account.userId, now, ip);
    return token;
}

Answer AccountService::profile(const Request &request)
{
    const QString token = request.headerValues(QStringLiteral("X-Auth-Token")).value(0);
    const std::optional<Account> account = m_store.accountOfSession(hashToken(token));
    const QString userId = request.query.value(QStringLiteral("userID"));
    if (!account || userId != QString::number(account->userId))
        return failAnswer(QStringLiteral("authErr"));
    return okAnswer(accountRecord(*account, token));
}
