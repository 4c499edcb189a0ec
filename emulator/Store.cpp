#include "Store.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>
#include <QtCore/QVariant>
#include <QtSql/QSqlError>
#include <QtSql/QSqlQuery>

#include <cstdio>

namespace {

constexpr int applicationId = 0x4C504143; // tells our files from those of other programs
constexpr int schemaVersion = 1;
const QString inMemory = QStringLiteral(":memory:");

const QStringList schema = {
    QStringLiteral("PRAGMA application_id=%1").arg(applicationId),
    QStringLiteral("PRAGMA user_version=%1").arg(schemaVersion),
    QStringLiteral("CREATE TABLE account (user_id INTEGER PRIMARY KEY,"
                   " user_name TEXT NOT NULL, password TEXT NOT NULL, email TEXT NOT NULL,"
                   " phone TEXT NOT NULL, phone_area TEXT NOT NULL, locked INTEGER NOT NULL,"
                   " note TEXT NOT NULL, profile TEXT NOT NULL,"
                   " login_at TEXT NOT NULL DEFAULT '', login_ip TEXT NOT NULL DEFAULT '',"
                   " previous_login_at TEXT NOT NULL DEFAULT '',"
                   " previous_login_ip TEXT NOT NULL DEFAULT '')"),
    QStringLiteral("CREATE UNIQUE INDEX account_name ON account (user_name)"),
    QStringLiteral("CREATE INDEX account_email ON account (email)"),
    QStringLiteral("CREATE INDEX account_phone ON account (phone, phone_area)"),
    QStringLiteral("CREATE TABLE session (token_hash TEXT PRIMARY KEY, user_id INTEGER NOT NULL)")};

const QString selectAccount = QStringLiteral(
    "SELECT account.user_id, user_name, password, email, phone, phone_area, locked, note, profile,"
    " previous_login_at, previous_login_ip FROM account ");

[[noreturn]] void fail(const QString &message)
{
    throw StoreError(message.toStdString());
}

QSqlQuery run(const QSqlDatabase &database, const QString &sql, const QVariantList &values = {})
{
    QSqlQuery query(database);
    bool ok = query.prepare(sql);
    for (const QVariant &value : values)
        query.addBindValue(value);
    ok = ok && query.exec();
    if (!ok)
        fail(query.lastError().databaseText());
    return query;
}

// A null QString would be stored as NULL.
QString notNull(const QString &text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

class Transaction
{
public:
    explicit Transaction(const QSqlDatabase &database) : m_database(database)
    {
        run(m_database, QStringLiteral("BEGIN IMMEDIATE"));
    }
    ~Transaction()
    {
        if (!m_done)
            QSqlQuery(m_database).exec(QStringLiteral("ROLLBACK"));
    }
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    void commit()
    {
        run(m_database, QStringLiteral("COMMIT"));
        m_done = true;
    }

private:
    QSqlDatabase m_database;
    bool m_done = false;
};

Account readAccount(const QSqlQuery &row)
{
    Account account;
    account.userId = row.value(0).toLongLong();
    account.userName = row.value(1).toString();
    account.passwordHash = row.value(2).toString();
    account.email = row.value(3).toString();
    account.phone = row.value(4).toString();
    account.phoneArea = row.value(5).toString();
    account.locked = row.value(6).toBool();
    account.note = row.value(7).toString();
    account.profile = QJsonDocument::fromJson(row.value(8).toString().toUtf8()).object();
    account.previousLoginAt = row.value(9).toString();
    account.previousLoginIp = row.value(10).toString();
    return account;
}

std::optional<Account> readOne(QSqlQuery query)
{
    if (!query.next())
        return std::nullopt;
    return readAccount(query);
}

void insertAccounts(const QSqlDatabase &database, const Store::Accounts &accounts)
{
    qint64 userId = 10000;
    for (const Account &account : accounts) {
        const QByteArray profile = QJsonDocument(account.profile).toJson(QJsonDocument::Compact);
        run(database,
            QStringLiteral("INSERT INTO account (user_id, user_name, password, email, phone,"
                           " phone_area, locked, note, profile) VALUES (?,?,?,?,?,?,?,?,?)"),
            {++userId, notNull(account.userName), notNull(account.passwordHash),
             notNull(account.email), notNull(account.phone), notNull(account.phoneArea),
             account.locked, notNull(account.note), QString::fromUtf8(profile)});
    }
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

Store::Store(const QString &path, const std::function<Accounts()> &firstAccounts)
    : m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("store")))
{
    m_database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=200"));
    try {
        if (isNew(path))
            create(path, firstAccounts());
        else
            requireOurFile(path);
        if (path != inMemory)
            open(path);
    } catch (const StoreError &error) {
        close();
        fail(QStringLiteral("data file %1: %2").arg(path, QString::fromUtf8(error.what())));
    }
}

Store::~Store()
{
    close();
}

void Store::close()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(QStringLiteral("store"));
}

// A new file is made under another name and then renamed, so that a file under its own name is
// always whole, however early the process was killed.
void Store::create(const QString &path, const Accounts &accounts)
{
    const QString draft = path == inMemory ? path : path + QStringLiteral(".new");
    QFile::remove(draft);
    m_database.setDatabaseName(draft);
    if (!m_database.open())
        fail(QStringLiteral("cannot be created: ") + m_database.lastError().databaseText());
    Transaction transaction(m_database);
    for (const QString &statement : schema)
        run(m_database, statement);
    insertAccounts(m_database, accounts);
    transaction.commit();
    if (path == inMemory)
        return;
    m_database.close();
    if (std::rename(QFile::encodeName(draft).constData(), QFile::encodeName(path).constData()) != 0)
        fail(QStringLiteral("cannot be created: ") + draft + QStringLiteral(" cannot be renamed"));
}

void Store::open(const QString &path)
{
    m_database.setDatabaseName(path);
    if (!m_database.open())
        fail(QStringLiteral("cannot be opened: ") + m_database.lastError().databaseText());
    run(m_database, QStringLiteral("PRAGMA locking_mode=EXCLUSIVE"));
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
    QSqlQuery version = run(m_database, QStringLiteral("PRAGMA user_version"));
    if (!version.next() || version.value(0).toInt() != schemaVersion)
        fail(QStringLiteral("was written by another version of passport-emulator"));
    version.finish();
    run(m_database, QStringLiteral("PRAGMA journal_mode=WAL"));
    run(m_database, QStringLiteral("PRAGMA synchronous=FULL"));
}

void Store::reset(const Accounts &accounts)
{
    Transaction transaction(m_database);
    run(m_database, QStringLiteral("DELETE FROM session"));
    run(m_database, QStringLiteral("DELETE FROM account"));
    insertAccounts(m_database, accounts);
    transaction.commit();
}

Store::Accounts Store::accounts() const
{
    Accounts accounts;
    QSqlQuery query = run(m_database, selectAccount + QStringLiteral("ORDER BY user_id"));
    while (query.next())
        accounts.push_back(readAccount(query));
    return accounts;
}

std::optional<Account> Store::find(const QString &name, const QString &phoneArea) const
{
    return name.isEmpty() // accounts without e-mail or phone keep an empty text there
               ? std::nullopt
               : readOne(run(m_database,
                             selectAccount + QStringLiteral("WHERE user_name = ? OR email = ?"
                                                            " OR (phone = ? AND phone_area = ?)"),
                             {name, name, name, notNull(phoneArea)}));
}

std::optional<Account> Store::accountOfSession(const QString &tokenHash) const
{
    return readOne(
        run(m_database,
            selectAccount + QStringLiteral("JOIN session ON session.user_id = account.user_id"
                                           " WHERE token_hash = ?"),
            {tokenHash}));
}

void Store::addSession(const QString &tokenHash, qint64 userId, const QString &at,
                       const QString &ip)
{
    Transaction transaction(m_database);
    run(m_database, QStringLiteral("INSERT INTO session (token_hash, user_id) VALUES (?,?)"),
        {tokenHash, userId});
    run(m_database,
        QStringLiteral(
            "UPDATE account SET previous_login_at = login_at,"
            " previous_login_ip = login_ip, login_at = ?, login_ip = ? WHERE user_id = ?"),
        {at, ip, userId});
    transaction.commit();
}
