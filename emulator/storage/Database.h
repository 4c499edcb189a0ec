// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

#include <functional>
#include <stdexcept>

struct DataFile;

/// The data file cannot be used; what() says in UTF-8 why.
class StoreError : public std::runtime_error
{
public:
    explicit StoreError(const QString &message) : std::runtime_error(message.toStdString()) {}
};

/// An SQLite file, held exclusively while the object lives, one object at a time.
///
/// Used from the thread that constructed it. What a Transaction commits is on the disk when
/// commit() returns: a process killed at any moment loses nothing of it. Every operation throws
/// StoreError when the file fails it.
class Database
{
public:
    using Fill = std::function<void(const Database &)>;

    /// In the header of every file that the emulator writes; tells it from those of others.
    static constexpr quint32 applicationId = 0x4C504143;

    /// Opens the file, or creates it by the statements of the schema and what fill() adds;
    /// ":memory:" is always new. Whatever else than an intact data file of the emulator is at the
    /// path, is refused and left as it is; a link is followed to a file, but not to nothing.
    Database(const QString &path, const QStringList &schema, const Fill &fill);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    /// Executes one statement with values for its question marks; null texts are stored as empty.
    QSqlQuery run(const QString &sql, const QVariantList &values = {}) const;

private:
    void create(const DataFile &file, const QStringList &schema, const Fill &fill);
    void write(const QString &name, const QStringList &schema, const Fill &fill);
    void open(const QString &path);
    void close();

    QSqlDatabase m_database;
};

/// The text in a column of a query's row.
QString textOf(const QSqlQuery &row, const char *column);

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
