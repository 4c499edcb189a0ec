#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtSql/QSqlDatabase>

#include <functional>
#include <optional>
#include <stdexcept>
#include <vector>

/// An account as it is kept. Times are ISO 8601 in UTC; an empty text means that there is none.
struct Account
{
    qint64 userId = 0; ///< given by the store
    QString userName;
    QString passwordHash; ///< see Secrets.h
    QString email;
    QString phone;
    QString phoneArea;
    bool locked = false;
    QString note;        ///< what the account is for; shown at the start
    QJsonObject profile; ///< further members of the account record, as they are answered
    QString previousLoginAt;
    QString previousLoginIp;
};

/// The data file cannot be used; what() says in UTF-8 why.
class StoreError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Accounts and sessions in an SQLite file, the one place that knows SQL.
///
/// Used from the thread that constructed it. Every change is one transaction, which is on the disk
/// when the operation returns: a process killed at any moment loses nothing it has acknowledged.
/// The file is held exclusively while the object lives. Every operation throws StoreError when the
/// file fails it.
class Store
{
public:
    using Accounts = std::vector<Account>;

    /// Opens the file, or creates it with the accounts that firstAccounts gives; ":memory:" is
    /// always new. A file that is not an intact data file of the emulator is refused and left as it
    /// is.
    Store(const QString &path, const std::function<Accounts()> &firstAccounts);
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    /// Forgets everything and starts again with these accounts.
    void reset(const Accounts &accounts);

    Accounts accounts() const; ///< in the order in which they were created
    /// The account with this user name or e-mail, or with this phone number in this phone area.
    std::optional<Account> find(const QString &name, const QString &phoneArea) const;
    std::optional<Account> accountOfSession(const QString &tokenHash) const;

    /// Adds a session and notes the login. What was the latest login becomes the previous one.
    void addSession(const QString &tokenHash, qint64 userId, const QString &at, const QString &ip);

private:
    void create(const QString &path, const Accounts &accounts);
    void open(const QString &path);
    void close();

    QSqlDatabase m_database;
};
