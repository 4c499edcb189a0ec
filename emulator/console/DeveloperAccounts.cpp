// SPDX-License-Identifier: MIT
#include "console/DeveloperAccounts.h"

#include "http/Refusal.h"
#include "storage/AccountForm.h"

#include <QtCore/QJsonArray>

namespace {

QJsonValue timeOrNull(qint64 time)
{
    return time == 0 ? QJsonValue() : QJsonValue(Clock::text(time));
}

QJsonObject accountObject(const Account &account, int sessions, qint64 now)
{
    QJsonObject object = accountForm(account);
    object.insert(QStringLiteral("user_id"), account.userId);
    object.insert(QStringLiteral("builtIn"), account.builtIn);
    if (!account.publicPassword.isEmpty())
        object.insert(QStringLiteral("password"), account.publicPassword);
    object.insert(QStringLiteral("sessions"), sessions);
    object.insert(QStringLiteral("lastLogin"), account.loginAt);
    object.insert(QStringLiteral("lastIP"), account.loginIp);
    object.insert(QStringLiteral("lockedOutUntil"),
                  timeOrNull(now < account.lockedOutUntil ? account.lockedOutUntil : 0));
    return object;
}

QJsonObject sessionObject(const Session &session)
{
    return {{QStringLiteral("id"), session.id},
            {QStringLiteral("user_id"), session.userId},
            {QStringLiteral("username"), session.userName},
            {QStringLiteral("at"), Clock::text(session.startedAt)},
            {QStringLiteral("ip"), session.ip},
            {QStringLiteral("expires"), timeOrNull(session.expiresAt)}};
}

} // namespace

Answer DeveloperAccounts::list() const
{
    const QMap<qint64, int> counts = m_services.sessions.counts();
    const qint64 now = m_services.clock.now();
    QJsonArray list;
    for (const Account &account : m_services.store.accounts())
        list.append(accountObject(account, counts.value(account.userId), now));
    return okAnswer(list);
}

Answer DeveloperAccounts::show(const Request &request) const
{
    const Account account = accountOf(request);
    return okAnswer(accountObject(account, m_services.sessions.counts().value(account.userId),
                                  m_services.clock.now()));
}

Answer DeveloperAccounts::add(const Request &request)
{
    Account account = accountOfForm(request.json());
    requireOwnNames(account);
    account.userId = m_services.store.add(account);
    return okAnswer(accountObject(account, 0, m_services.clock.now()));
}

Answer DeveloperAccounts::change(const Request &request)
{
    Account account = accountOf(request);
    const QJsonObject form = request.json();
    applyAccountForm(form, account);
    requireOwnNames(account);
    if (form.contains(QStringLiteral("locked")) && !account.locked) {
        account.lockedOutUntil = 0;
        account.wrongPasswords = 0;
    }
    m_services.store.update(account);
    return show(request);
}

Answer DeveloperAccounts::remove(const Request &request)
{
    m_services.store.remove(accountOf(request).userId);
    return okAnswer({});
}

Answer DeveloperAccounts::listSessions() const
{
    QJsonArray list;
    const QVector<Session> sessions = m_services.sessions.list();
    for (const Session &session : sessions)
        list.append(sessionObject(session));
    return okAnswer(list);
}

Answer DeveloperAccounts::endSession(const Request &request)
{
    if (!m_services.sessions.end(request.numberAtEnd()))
        throw Refusal(404, QStringLiteral("there is no such session, or no longer"));
    return okAnswer({});
}

Answer DeveloperAccounts::endAllSessions()
{
    m_services.sessions.endAll();
    return okAnswer({});
}

Account DeveloperAccounts::accountOf(const Request &request) const
{
    const std::optional<Account> account = m_services.store.account(request.numberAtEnd());
    if (!account)
        throw Refusal(404, QStringLiteral("there is no such account, or no longer"));
    return *account;
}

void DeveloperAccounts::requireOwnNames(const Account &account) const
{
    const QString shared = m_services.store.sharedName(account);
    if (!shared.isEmpty())
        throw Refusal(409, QStringLiteral("\"%1\" also belongs to another account").arg(shared));
}
