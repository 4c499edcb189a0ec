#include "storage/Challenges.h"

namespace {

constexpr int maximumCodes = 1000;

const QString selectCode = QStringLiteral(
    "SELECT id, owner, purpose, code, user_name, phone_area, language, captcha_id, captcha,"
    " sent_at, expires_at, wrong_tries, spent FROM code ");

VerificationCode readCode(const QSqlQuery &row)
{
    VerificationCode code;
    code.id = row.value(0).toLongLong();
    code.owner = row.value(1).toString();
    code.purpose = row.value(2).toString();
    code.code = row.value(3).toString();
    code.userName = row.value(4).toString();
    code.phoneArea = row.value(5).toString();
    code.language = row.value(6).toString();
    code.captchaId = row.value(7).toString();
    code.captcha = row.value(8).toString();
    code.sentAt = row.value(9).toLongLong();
    code.expiresAt = row.value(10).toLongLong();
    code.wrongTries = row.value(11).toInt();
    code.spent = row.value(12).toBool();
    return code;
}

} // namespace

QStringList Challenges::schema()
{
    return {QStringLiteral("CREATE TABLE captcha (id TEXT PRIMARY KEY, purpose TEXT NOT NULL,"
                           " answer TEXT NOT NULL, expires_at INTEGER NOT NULL,"
                           " uses INTEGER NOT NULL)"),
            QStringLiteral("CREATE TABLE code (id INTEGER PRIMARY KEY AUTOINCREMENT,"
                           " owner TEXT NOT NULL, purpose TEXT NOT NULL, code TEXT NOT NULL,"
                           " user_name TEXT NOT NULL, phone_area TEXT NOT NULL,"
                           " language TEXT NOT NULL, captcha_id TEXT NOT NULL,"
                           " captcha TEXT NOT NULL, sent_at INTEGER NOT NULL,"
                           " expires_at INTEGER NOT NULL, wrong_tries INTEGER NOT NULL DEFAULT 0,"
                           " spent INTEGER NOT NULL DEFAULT 0)"),
            QStringLiteral("CREATE INDEX code_owner ON code (owner, purpose)")};
}

void Challenges::put(const Captcha &captcha)
{
    m_database.run(QStringLiteral("INSERT OR REPLACE INTO captcha (id, purpose, answer, expires_at,"
                                  " uses) VALUES (?,?,?,?,?)"),
                   {captcha.id, captcha.purpose, captcha.answer, captcha.expiresAt, captcha.uses});
}

std::optional<Captcha> Challenges::captcha(const QString &id) const
{
    QSqlQuery row = m_database.run(
        QStringLiteral("SELECT id, purpose, answer, expires_at, uses FROM captcha WHERE id = ?"),
        {id});
    if (!row.next())
        return std::nullopt;
    return Captcha{row.value(0).toString(), row.value(1).toString(), row.value(2).toString(),
                   row.value(3).toLongLong(), row.value(4).toInt()};
}

void Challenges::removeCaptcha(const QString &id)
{
    m_database.run(QStringLiteral("DELETE FROM captcha WHERE id = ?"), {id});
}

void Challenges::removeCaptchasExpiredBefore(qint64 time)
{
    m_database.run(QStringLiteral("DELETE FROM captcha WHERE expires_at < ?"), {time});
}

void Challenges::add(const VerificationCode &code)
{
    QSqlQuery added = m_database.run(
        QStringLiteral("INSERT INTO code (owner, purpose, code, user_name, phone_area, language,"
                       " captcha_id, captcha, sent_at, expires_at) VALUES (?,?,?,?,?,?,?,?,?,?)"),
        {code.owner, code.purpose, code.code, code.userName, code.phoneArea, code.language,
         code.captchaId, code.captcha, code.sentAt, code.expiresAt});
    m_database.run(QStringLiteral("DELETE FROM code WHERE id <= ?"),
                   {added.lastInsertId().toLongLong() - maximumCodes});
}

std::optional<VerificationCode> Challenges::latestCode(const QString &owner,
                                                       const QString &purpose) const
{
    QSqlQuery row = m_database.run(selectCode + QStringLiteral("WHERE owner = ? AND purpose = ?"
                                                               " ORDER BY id DESC LIMIT 1"),
                                   {owner, purpose});
    if (!row.next())
        return std::nullopt;
    return readCode(row);
}

QVector<VerificationCode> Challenges::codesAfter(qint64 id) const
{
    QVector<VerificationCode> codes;
    QSqlQuery row = m_database.run(selectCode + QStringLiteral("WHERE id > ? ORDER BY id"), {id});
    while (row.next())
        codes.append(readCode(row));
    return codes;
}

void Challenges::setCodeState(qint64 id, int wrongTries, bool spent)
{
    m_database.run(QStringLiteral("UPDATE code SET wrong_tries = ?, spent = ? WHERE id = ?"),
                   {wrongTries, spent, id});
}
