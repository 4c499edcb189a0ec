#include "Database.h"

#include <QtCore/QFile>
#include <QtSql/QSqlError>

#include <cstdio>

namespace {

constexpr int applicationId = 0x4C504143; // tells our files from those of other programs
constexpr int schemaVersion = 2;
const QString inMemory = QStringLiteral(":memory:");

[[noreturn]] void fail(const QString &message)
{
    throw StoreError(message.toStdString());
}

// A null QString would be stored as NULL.
QVariant notNull(const QVariant &value)
{
    const bool nullText = value.type() == QVariant::String && value.toString().isNull();
    return nullText ? QVariant(QString(QLatin1String(""))) : value;
}

bool isNew(const QString &path)
{
    return path == inMemory || !QFile::exists(path) || QFile(path).size() == 0;
}

// Looks at the file's first bytes without SQLite, which might already repair or lock it.
void requireOurFile(const QString &path)
{
    constexpr int headerBytes = 100;
    constexpr int applicationIdOffset = 68; // "Database File Format", sqlite.org/fileformat2.html
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("cannot be read: ") + file.errorString());
    const QByteArray header = file.read(headerBytes);
    QByteArray id;
    for (int shift = 24; shift >= 0; shift -= 8)
        id.append(static_cast<char>((applicationId >> shift) & 0xFF));
    if (!header.startsWith(QByteArrayLiteral("SQLite format 3\0")) ||
        header.mid(applicationIdOffset, 4) != id) {
        fail(QStringLiteral("is not a data file of passport-emulator"));
    }
}

} // namespace

Database::Database(const QString &path, const QStringList &schema,
                   const std::function<void(const Database &)> &fill)
    : m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("store")))
{
    m_database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=200"));
    try {
        if (isNew(path))
            create(path, schema, fill);
        else
            requireOurFile(path);
        if (path != inMemory)
            open(path);
    } catch (const StoreError &error) {
        close();
        fail(QStringLiteral("data file %1: %2").arg(path, QString::fromUtf8(error.what())));
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
        fail(query.lastError().databaseText());
    return query;
}

// A new file is made under another name and then renamed, so that a file under its own name is
// always whole, however early the process was killed.
void Database::create(const QString &path, const QStringList &schema,
                      const std::function<void(const Database &)> &fill)
{
    const QString draft = path == inMemory ? path : path + QStringLiteral(".new");
    QFile::remove(draft);
    m_database.setDatabaseName(draft);
    if (!m_database.open())
        fail(QStringLiteral("cannot be created: ") + m_database.lastError().databaseText());
    Transaction transaction(*this);
    run(QStringLiteral("PRAGMA application_id=%1").arg(applicationId));
    run(QStringLiteral("PRAGMA user_version=%1").arg(schemaVersion));
    for (const QString &statement : schema)
        run(statement);
    fill(*this);
    transaction.commit();
    if (path == inMemory)
        return;
    m_database.close();
    QFile::setPermissions(draft, QFile::ReadOwner | QFile::WriteOwner);
    // SQLite would take the write-ahead log of a file that somebody deleted for ours.
    QFile::remove(path + QStringLiteral("-wal"));
    if (std::rename(QFile::encodeName(draft).constData(), QFile::encodeName(path).constData()) != 0)
        fail(QStringLiteral("cannot be created: ") + draft + QStringLiteral(" cannot be renamed"));
}

void Database::open(const QString &path)
{
    m_database.setDatabaseName(path);
    if (!m_database.open())
        fail(QStringLiteral("cannot be opened: ") + m_database.lastError().databaseText());
    run(QStringLiteral("PRAGMA locking_mode=EXCLUSIVE"));
    QSqlQuery check(m_database);
    if (!check.exec(QStringLiteral("PRAGMA quick_check(1)")) || !check.next()) {
        const QString reason = check.lastError().databaseText();
        const bool locked = reason.contains(QLatin1String("locked"));
        fail(locked ? QStringLiteral("is in use by another process")
                    : QStringLiteral("is damaged: ") + reason);
    }
    if (check.value(0).toString() != QLatin1String("ok"))
        fail(QStringLiteral("is damaged: ") + check.value(0).toString());
    check.finish();
    QSqlQuery version = run(QStringLiteral("PRAGMA user_version"));
    if (!version.next() || version.value(0).toInt() != schemaVersion)
        fail(QStringLiteral("was written by another version of passport-emulator"));
    version.finish();
    run(QStringLiteral("PRAGMA journal_mode=WAL"));
    run(QStringLiteral("PRAGMA synchronous=FULL"));
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
