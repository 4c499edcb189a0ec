// SPDX-License-Identifier: MIT
#include "storage/Sessions.h"

#include "storage/Secrets.h"

namespace {

// Takes the time; 0 stands for never.
const QString goesOn = QStringLiteral(" (expires_at = 0 OR expires_at > ?)");

} // namespace

Sessions::Sessions(Store &store, const Settings &settings, const Clock &clock)
    : m_store(store)
    , m_settings(settings)
    , m_clock(clock)
{
}

QStringList Sessions::schema()
{
    return {QStringLiteral("CREATE TABLE session (id INTEGER PRIMARY KEY AUTOINCREMENT,"
                           " token_hash TEXT NOT NULL UNIQUE, user_id INTEGER NOT NULL,"
                           " started_at INTEGER NOT NULL, ip TEXT NOT NULL,"
                           " expires_at INTEGER NOT NULL)"),
            QStringLiteral("CREATE INDEX session_user ON session (user_id)")};
}

QString Sessions::start(qint64 userId, const QString &ip)
{
    QString token = newToken();
    const qint64 now = m_clock.now();
    const qint64 lifetimeMs = m_settings.sessionLifetimeSeconds() * 1000LL;
    m_store.database().run(
        QStringLiteral("INSERT INTO session (token_hash, user_id, started_at, ip, expires_at)"
                       " VALUES (?,?,?,?,?)"),
        {hashToken(token), userId, now, ip, lifetimeMs == 0 ? 0 : now + lifetimeMs});
    m_store.noteLogin(userId, Clock::text(now), ip);
    return token;
}

std::optional<Account> Sessions::accountOf(const QString &token)
{
    QSqlQuery row = m_store.database().run(
        QStringLiteral("SELECT user_id, expires_at FROM session WHERE token_hash = ?"),
        {hashToken(token)});
    if (!row.next())
        return std::nullopt;
    const qint64 expiresAt = row.value(1).toLongLong();
    if (expiresAt == 0 || expiresAt > m_clock.now())
        return m_store.account(row.value(0).toLongLong());
    removeExpired();
    return std::nullopt;
}

QVector<Session> Sessions::list() const
{
    QVector<Session> sessions;
    QSqlQuery row = m_store.database().run(
        QStringLiteral("SELECT session.*, user_name FROM session JOIN account USING (user_id)"
                       " WHERE") +
            goesOn + QStringLiteral(" ORDER BY id DESC LIMIT 1000"),
        {m_clock.now()});
    while (row.next()) {
        sessions.append({row.value(QStringLiteral("id")).toLongLong(),
                         row.value(QStringLiteral("user_id")).toLongLong(),
                         textOf(row, "user_name"),
                         row.value(QStringLiteral("started_at")).toLongLong(), textOf(row, "ip"),
                         row.value(QStringLiteral("expires_at")).toLongLong()});
    }
    return sessions;
}

QMap<qint64, int> Sessions::counts() const
{
    QMap<qint64, int> counts;
    QSqlQuery row =
        m_store.database().run(QStringLiteral("SELECT user_id, COUNT(*) FROM session WHERE") +
                                   goesOn + QStringLiteral(" GROUP BY user_id"),
                               {m_clock.now()});
    while (row.next())
        counts.insert(row.value(0).toLongLong(), row.value(1).toInt());
    return counts;
}

bool Sessions::end(qint64 id)
{
    return m_store.database()
               .run(QStringLiteral("DELETE FROM session WHERE id = ?"), {id})
               .numRowsAffected() > 0;
}

void Sessions::endAll()
{
    m_store.database().run(QStringLiteral("DELETE FROM session"));
}

void Sessions::endOf(qint64 userId)
{
    m_store.database().run(QStringLiteral("DELETE FROM session WHERE user_id = ?"), {userId});
}

void Sessions::removeExpired()
{
    m_store.database().run(QStringLiteral("DELETE FROM session WHERE NOT") + goesOn,
                           {m_clock.now()});
}
