#include "storage/Store.h"

#include "storage/Challenges.h"
#include "storage/Settings.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

namespace {

QStringList schema()
{
    return QStringList{
               QStringLiteral(
                   "CREATE TABLE account (user_id INTEGER PRIMARY KEY,"
                   " user_name TEXT NOT NULL, password TEXT NOT NULL, email TEXT NOT NULL,"
                   " phone TEXT NOT NULL, phone_area TEXT NOT NULL, locked INTEGER NOT NULL,"
                   " note TEXT NOT NULL, profile TEXT NOT NULL,"
                   " login_at TEXT NOT NULL DEFAULT '', login_ip TEXT NOT NULL DEFAULT '',"
                   " previous_login_at TEXT NOT NULL DEFAULT '',"
                   " previous_login_ip TEXT NOT NULL DEFAULT '')"),
               QStringLiteral("CREATE UNIQUE INDEX account_name ON account (user_name)"),
               QStringLiteral("CREATE INDEX account_email ON account (email)"),
               QStringLiteral("CREATE INDEX account_phone ON account (phone, phone_area)"),
               QStringLiteral("CREATE TABLE session (token_hash TEXT PRIMARY KEY,"
                              " user_id INTEGER NOT NULL)"),
               QStringLiteral("CREATE INDEX session_user ON session (user_id)")} +
           Challenges::schema() + Settings::schema();
}

const QString selectAccount = QStringLiteral("SELECT account.* FROM account ");

Account readAccount(const QSqlQuery &row)
{
    Account account;
    account.userId = row.value(QStringLiteral("user_id")).toLongLong();
    account.userName = textOf(row, "user_name");
    account.passwordHash = textOf(row, "password");
    account.email = textOf(row, "email");
    account.phone = textOf(row, "phone");
    account.phoneArea = textOf(row, "phone_area");
    account.locked = row.value(QStringLiteral("locked")).toBool();
    account.note = textOf(row, "note");
    account.profile = QJsonDocument::fromJson(textOf(row, "profile").toUtf8()).object();
    account.previousLoginAt = textOf(row, "previous_login_at");
    account.previousLoginIp = textOf(row, "previous_login_ip");
    return account;
}

std::optional<Account> readOne(QSqlQuery query)
{
    if (!query.next())
        return std::nullopt;
    return readAccount(query);
}

QString profileText(const Account &account)
{
    return QString::fromUtf8(QJsonDocument(account.profile).toJson(QJsonDocument::Compact));
}

qint64 insertAccount(const Database &database, const Account &account)
{
    QSqlQuery added = database.run(
        QStringLiteral("INSERT INTO account (user_id, user_name, password, email, phone,"
                       " phone_area, locked, note, profile)"
                       " VALUES ((SELECT COALESCE(MAX(user_id), 10000) + 1 FROM account),"
                       "?,?,?,?,?,?,?,?)"),
        {account.userName, account.passwordHash, account.email, account.phone, account.phoneArea,
         account.locked, account.note, profileText(account)});
    return added.lastInsertId().toLongLong();
}

void insertAccounts(const Database &database, const Store::Accounts &accounts)
{
    for (const Account &account : accounts)
        insertAccount(database, account);
}

} // namespace

QJsonObject emptyProfile()
{
    QJsonObject profile{{QStringLiteral("defaultDentalOrderReceive"), false},
                        {QStringLiteral("oems"), QJsonArray()},
                        {QStringLiteral("perms"), QJsonArray()}};
    for (const char *key : {"country", "factory_objs", "nick_name"})
        profile.insert(QLatin1String(key), QLatin1String(""));
    return profile;
}

Store::Store(const QString &path, const std::function<Accounts()> &firstAccounts)
    : m_database(path, schema(),
                 [&](const Database &created) { insertAccounts(created, firstAccounts()); })
{
}

void Store::reset(const Accounts &accounts)
{
    QStringList tables;
    QSqlQuery names = m_database.run(QStringLiteral(
        "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%'"));
    while (names.next())
        tables.append(textOf(names, "name"));
    for (const QString &table : qAsConst(tables))
        m_database.run(QStringLiteral("DELETE FROM ") + table);
    insertAccounts(m_database, accounts);
}

Store::Accounts Store::accounts() const
{
    Accounts accounts;
    QSqlQuery query = m_database.run(selectAccount + QStringLiteral("ORDER BY user_id"));
    while (query.next())
        accounts.push_back(readAccount(query));
    return accounts;
}

std::optional<Account> Store::find(const QString &name, const QString &phoneArea) const
{
    return name.isEmpty() // accounts without e-mail or phone keep an empty text there
               ? std::nullopt
               : readOne(m_database.run(selectAccount +
                                            QStringLiteral("WHERE user_name = ? OR email = ?"
                                                           " OR (phone = ? AND phone_area = ?)"),
                                        {name, name, name, phoneArea}));
}

std::optional<Account> Store::accountOfSession(const QString &tokenHash) const
{
    return readOne(m_database.run(
        selectAccount + QStringLiteral("JOIN session ON session.user_id = account.user_id"
                                       " WHERE token_hash = ?"),
        {tokenHash}));
}

qint64 Store::add(const Account &account)
{
    return insertAccount(m_database, account);
}

void Store::update(const Account &account)
{
    m_database.run(
        QStringLiteral("UPDATE account SET email = ?, phone = ?, phone_area = ?,"
                       " profile = ? WHERE user_id = ?"),
        {account.email, account.phone, account.phoneArea, profileText(account), account.userId});
}

void Store::addSession(const QString &tokenHash, qint64 userId, const QString &at,
                       const QString &ip)
{
    m_database.run(QStringLiteral("INSERT INTO session (token_hash, user_id) VALUES (?,?)"),
                   {tokenHash, userId});
    m_database.run(
        QStringLiteral(
            "UPDATE account SET previous_login_at = login_at,"
            " previous_login_ip = login_ip, login_at = ?, login_ip = ? WHERE user_id = ?"),
        {at, ip, userId});
}

void Store::setPassword(qint64 userId, const QString &passwordHash)
{
    m_database.run(QStringLiteral("UPDATE account SET password = ? WHERE user_id = ?"),
                   {passwordHash, userId});
    m_database.run(QStringLiteral("DELETE FROM session WHERE user_id = ?"), {userId});
}
