#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

#include <functional>
#include <stdexcept>

/// The data file cannot be used; what() says in UTF-8 why.
class StoreError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// An SQLite file, held exclusively while the object lives, one object at a time.
///
/// Used from the thread that constructed it. What a Transaction commits is on the disk when
/// commit() returns: a process killed at any moment loses nothing of it. Every operation throws
/// StoreError when the file fails it.
class Database
{
public:
    /// Opens the file, or creates it by the statements of the schema and what fill() adds;
    /// ":memory:" is always new. A file that is not an intact data file of the emulator is refused
    /// and left as it is.
    Database(const QString &path, const QStringList &schema,
             const std::function<void(const Database &)> &fill);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    /// Executes one statement with values for its question marks; null texts are stored as empty.
    QSqlQuery run(const QString &sql, const QVariantList &values = {}) const;

private:
    void create(const QString &path, const QStringList &schema,
                const std::function<void(const Database &)> &fill);
    void open(const QString &path);
    void close();

    QSqlDatabase m_database;
};

/// The changes from its construction to commit(), of which without commit() none remains.
class Transaction
{
public:
    explicit Transaction(const Database &database);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    void commit();

private:
    const Database &m_database;
    bool m_done = false;
};
