// SPDX-License-Identifier: MIT
#include "storage/Store.h"

#include "storage/Challenges.h"
#include "storage/Secrets.h"
#include "storage/Sessions.h"
#include "storage/Settings.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

namespace {

// Numbers begin with 10001, and that of a removed account does not come back: codes may still name
// it.
const QString firstNumber = QStringLiteral("UPDATE sqlite_sequence SET seq = 10000"
                                           " WHERE name = 'account'");

QStringList schema()
{
    return QStringList{
               QStringLiteral(
                   "CREATE TABLE account (user_id INTEGER PRIMARY KEY AUTOINCREMENT,"
                   " user_name TEXT NOT NULL, password TEXT NOT NULL, email TEXT NOT NULL,"
                   " phone TEXT NOT NULL, phone_area TEXT NOT NULL, locked INTEGER NOT NULL,"
                   " built_in INTEGER NOT NULL, public_password TEXT NOT NULL,"
                   " note TEXT NOT NULL, profile TEXT NOT NULL,"
                   " wrong_passwords INTEGER NOT NULL, locked_out_until INTEGER NOT NULL,"
                   " login_at TEXT NOT NULL DEFAULT '', login_ip TEXT NOT NULL DEFAULT '',"
                   " previous_login_at TEXT NOT NULL DEFAULT '',"
                   " previous_login_ip TEXT NOT NULL DEFAULT '')"),
               QStringLiteral("INSERT INTO sqlite_sequence (name, seq) VALUES ('account', 10000)"),
               QStringLiteral("CREATE UNIQUE INDEX account_name ON account (user_name)"),
               QStringLiteral("CREATE INDEX account_email ON account (email)"),
               QStringLiteral("CREATE INDEX account_phone ON account (phone, phone_area)")} +
           Sessions::schema() + Challenges::schema() + Settings::schema();
}

const QString selectAccount = QStringLiteral("SELECT * FROM account ");

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
    account.builtIn = row.value(QStringLiteral("built_in")).toBool();
    account.publicPassword = textOf(row, "public_password");
    account.note = textOf(row, "note");
    account.profile = QJsonDocument::fromJson(textOf(row, "profile").toUtf8()).object();
    account.wrongPasswords = row.value(QStringLiteral("wrong_passwords")).toInt();
    account.lockedOutUntil = row.value(QStringLiteral("locked_out_until")).toLongLong();
    account.loginAt = textOf(row, "login_at");
    account.loginIp = textOf(row, "login_ip");
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

// In the order of the columns in the statements below.
QVariantList valuesOf(const Account &account)
{
    return {account.userName,     account.passwordHash,   account.email,
            account.phone,        account.phoneArea,      account.locked,
            account.builtIn,      account.publicPassword, account.note,
            profileText(account), account.wrongPasswords, account.lockedOutUntil};
}

qint64 insertAccount(const Database &database, const Account &account)
{
    return database
        .run(QStringLiteral("INSERT INTO account (user_name, password, email, phone, phone_area,"
                            " locked, built_in, public_password, note, profile, wrong_passwords,"
                            " locked_out_until) VALUES (?,?,?,?,?,?,?,?,?,?,?,?)"),
             valuesOf(account))
        .lastInsertId()
        .toLongLong();
}

void fill(const Database &database, const Store::Contents &contents)
{
    for (const Account &account : contents.accounts)
        insertAccount(database, account);
    Settings(database).change(contents.settings);
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

void Account::setPassword(const QString &password)
{
    passwordHash = hashPassword(password);
    publicPassword.clear();
}

Store::Store(const QString &path, const std::function<Contents()> &firstContents)
    : m_database(path, schema(), [&](const Database &created) { fill(created, firstContents()); })
{
}

void Store::reset(const Contents &contents)
{
    QStringList tables;
    QSqlQuery names = m_database.run(QStringLiteral(
        "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%'"));
    while (names.next())
        tables.append(textOf(names, "name"));
    for (const QString &table : qAsConst(tables))
        m_database.run(QStringLiteral("DELETE FROM ") + table);
    m_database.run(firstNumber);
    fill(m_database, contents);
}

Store::Accounts Store::accounts() const
{
    Accounts accounts;
    QSqlQuery query = m_database.run(selectAccount + QStringLiteral("ORDER BY user_id"));
    while (query.next())
        accounts.push_back(readAccount(query));
    return accounts;
}

std::optional<Account> Store::account(qint64 userId) const
{
    return readOne(m_database.run(selectAccount + QStringLiteral("WHERE user_id = ?"), {userId}));
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

QString Store::sharedName(const Account &account) const
{
    for (const QString &name : {account.userName, account.email, account.phone}) {
        QSqlQuery other = m_database.run(
            selectAccount + QStringLiteral("WHERE user_id <> ? AND (user_name = ? OR email = ?"
                                           " OR (phone = ? AND phone_area = ?))"),
            {account.userId, name, name, name, account.phoneArea});
        if (!name.isEmpty() && other.next())
            return name;
    }
    return {};
}

qint64 Store::add(const Account &account)
{
    return insertAccount(m_database, account);
}

void Store::update(const Account &account)
{
    m_database.run(QStringLiteral("UPDATE account SET user_name = ?, password = ?, email = ?,"
                                  " phone = ?, phone_area = ?, locked = ?, built_in = ?,"
                                  " public_password = ?, note = ?, profile = ?,"
                                  " wrong_passwords = ?, locked_out_until = ? WHERE user_id = ?"),
                   valuesOf(account) << account.userId);
}

void Store::endLockOutsAfter(qint64 time)
{
    m_database.run(
        QStringLiteral("UPDATE account SET locked_out_until = 0 WHERE locked_out_until > ?"),
        {time});
}

void Store::noteLogin(qint64 userId, const QString &at, const QString &ip)
{
    m_database.run(
        QStringLiteral(
            "UPDATE account SET previous_login_at = login_at,"
            " previous_login_ip = login_ip, login_at = ?, login_ip = ? WHERE user_id = ?"),
        {at, ip, userId});
}

void Store::remove(qint64 userId)
{
    m_database.run(QStringLiteral("DELETE FROM session WHERE user_id = ?"), {userId});
    m_database.run(QStringLiteral("DELETE FROM account WHERE user_id = ?"), {userId});
}
