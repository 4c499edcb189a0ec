// SPDX-License-Identifier: MIT
#include "storage/Database.h"

#include "storage/DataFile.h"

#include <QtCore/QTemporaryFile>
#include <QtSql/QSqlError>

namespace {

constexpr int schemaVersion = 3;
const QString inMemory = QStringLiteral(":memory:");

// A null QString would be stored as NULL.
QVariant notNull(const QVariant &value)
{
    const bool nullText = value.type() == QVariant::String && value.toString().isNull();
    return nullText ? QVariant(QString(QLatin1String(""))) : value;
}

// Why a file cannot be opened, by SQLite's primary result code (sqlite.org/rescode.html).
QString complaint(const QSqlError &error)
{
    enum { Busy = 5, ReadOnly = 8, Corrupt = 11, NotADatabase = 26 };
    switch (error.nativeErrorCode().toInt() & 0xFF) {
    case Busy:
        return QStringLiteral("is in use by another process");
    case ReadOnly:
        return QStringLiteral("is read-only");
    case Corrupt:
    case NotADatabase:
        return QStringLiteral("is damaged: ") + error.databaseText();
    default:
        return QStringLiteral("cannot be opened: ") + error.databaseText();
    }
}

} // namespace

Database::Database(const QString &path, const QStringList &schema, const Fill &fill)
    : m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("store")))
{
    m_database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=200"));
    try {
        if (path == inMemory) {
            write(path, schema, fill);
            return;
        }
        const DataFile file = DataFile::examine(path);
        if (file.isNew)
            create(file, schema, fill);
        open(file.path);
    } catch (const StoreError &error) {
        close();
        throw StoreError(
            QStringLiteral("data file %1: %2").arg(path, QString::fromUtf8(error.what())));
    }
}

Database::~Database()
{
    close();
}

void Database::close()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(QStringLiteral("store"));
}

QSqlQuery Database::run(const QString &sql, const QVariantList &values) const
{
    QSqlQuery query(m_database);
    bool ok = query.prepare(sql);
    for (const QVariant &value : values)
        query.addBindValue(notNull(value));
    ok = ok && query.exec();
    if (!ok)
        throw StoreError(query.lastError().databaseText());
    return query;
}

// A new file is made under another name, so that a file under its own name is always whole, however
// early the process was killed.
void Database::create(const DataFile &file, const QStringList &schema, const Fill &fill)
{
    QTemporaryFile draft(file.path + QStringLiteral(".XXXXXX")); // for its owner alone
    if (!draft.open())
        throw StoreError(QStringLiteral("cannot be created: ") + draft.errorString());
    write(draft.fileName(), schema, fill);
    m_database.close();
    file.create(draft.fileName());
}

void Database::write(const QString &name, const QStringList &schema, const Fill &fill)
{
    m_database.setDatabaseName(name);
    if (!m_database.open())
        throw StoreError(complaint(m_database.lastError()));
    Transaction transaction(*this);
    run(QStringLiteral("PRAGMA application_id=%1").arg(applicationId));
    run(QStringLiteral("PRAGMA user_version=%1").arg(schemaVersion));
    for (const QString &statement : schema)
        run(statement);
    fill(*this);
    transaction.commit();
}

void Database::open(const QString &path)
{
    m_database.setDatabaseName(path);
    if (!m_database.open())
        throw StoreError(complaint(m_database.lastError()));
    run(QStringLiteral("PRAGMA locking_mode=EXCLUSIVE"));
    QSqlQuery check(m_database);
    if (!check.exec(QStringLiteral("PRAGMA quick_check(1)")) || !check.next())
        throw StoreError(complaint(check.lastError()));
    if (check.value(0).toString() != QLatin1String("ok"))
        throw StoreError(QStringLiteral("is damaged: ") + check.value(0).toString());
    check.finish();
    QSqlQuery version = run(QStringLiteral("PRAGMA user_version"));
    if (!version.next() || version.value(0).toInt() != schemaVersion)
        throw StoreError(QStringLiteral("was written by another version of passport-emulator"));
    version.finish();
    run(QStringLiteral("PRAGMA journal_mode=WAL"));
    run(QStringLiteral("PRAGMA synchronous=FULL"));
}

QString textOf(const QSqlQuery &row, const char *column)
{
    return row.value(QLatin1String(column)).toString();
}

Transaction::Transaction(const Database &database) : m_database(database)
{
    m_database.run(QStringLiteral("BEGIN"));
}

Transaction::~Transaction()
{
    if (m_done)
        return;
    try {
        m_database.run(QStringLiteral("ROLLBACK"));
    } catch (const StoreError &) { // SQLite has already rolled back what failed badly
    }
}

void Transaction::commit()
{
    m_database.run(QStringLiteral("COMMIT"));
    m_done = true;
}
