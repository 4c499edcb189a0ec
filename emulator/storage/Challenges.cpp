// SPDX-License-Identifier: MIT
#include "storage/Challenges.h"

namespace {

constexpr int maximumCodes = 1000;
constexpr int maximumCaptchas = 1000;

const QString selectCode =
    QStringLiteral("SELECT *, EXISTS (SELECT 1 FROM code AS later WHERE later.owner = code.owner"
                   " AND later.purpose = code.purpose AND later.id > code.id) AS replaced"
                   " FROM code ");

VerificationCode readCode(const QSqlQuery &row)
{
    VerificationCode read;
    read.id = row.value(QStringLiteral("id")).toLongLong();
    read.owner = textOf(row, "owner");
    read.purpose = textOf(row, "purpose");
    read.digits = textOf(row, "code");
    read.userName = textOf(row, "user_name");
    read.phoneArea = textOf(row, "phone_area");
    read.language = textOf(row, "language");
    read.captchaId = textOf(row, "captcha_id");
    read.captcha = textOf(row, "captcha");
    read.sentAt = row.value(QStringLiteral("sent_at")).toLongLong();
    read.expiresAt = row.value(QStringLiteral("expires_at")).toLongLong();
    read.wrongTries = row.value(QStringLiteral("wrong_tries")).toInt();
    read.spent = row.value(QStringLiteral("spent")).toBool();
    read.replaced = row.value(QStringLiteral("replaced")).toBool();
    return read;
}

Captcha readCaptcha(const QSqlQuery &row)
{
    Captcha captcha;
    captcha.id = textOf(row, "id");
    captcha.purpose = textOf(row, "purpose");
    captcha.answer = textOf(row, "answer");
    captcha.expiresAt = row.value(QStringLiteral("expires_at")).toLongLong();
    captcha.uses = row.value(QStringLiteral("uses")).toInt();
    captcha.drawnAt = row.value(QStringLiteral("drawn_at")).toLongLong();
    captcha.picture = textOf(row, "picture");
    return captcha;
}

} // namespace

QStringList Challenges::schema()
{
    return {QStringLiteral("CREATE TABLE captcha (number INTEGER PRIMARY KEY AUTOINCREMENT,"
                           " id TEXT NOT NULL UNIQUE, purpose TEXT NOT NULL,"
                           " answer TEXT NOT NULL, expires_at INTEGER NOT NULL,"
                           " uses INTEGER NOT NULL, drawn_at INTEGER NOT NULL,"
                           " picture TEXT NOT NULL)"),
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
    QSqlQuery added = m_database.run(
        QStringLiteral("INSERT OR REPLACE INTO captcha (id, purpose, answer, expires_at, uses,"
                       " drawn_at, picture) VALUES (?,?,?,?,?,?,?)"),
        {captcha.id, captcha.purpose, captcha.answer, captcha.expiresAt, captcha.uses,
         captcha.drawnAt, captcha.picture});
    m_database.run(QStringLiteral("DELETE FROM captcha WHERE number <= ?"),
                   {added.lastInsertId().toLongLong() - maximumCaptchas});
}

void Challenges::setCaptchaUses(const QString &id, int uses)
{
    m_database.run(QStringLiteral("UPDATE captcha SET uses = ? WHERE id = ?"), {uses, id});
}

std::optional<Captcha> Challenges::captcha(const QString &id) const
{
    QSqlQuery row = m_database.run(QStringLiteral("SELECT * FROM captcha WHERE id = ?"), {id});
    if (!row.next())
        return std::nullopt;
    return readCaptcha(row);
}

QVector<Captcha> Challenges::captchas(int limit) const
{
    QVector<Captcha> captchas;
    QSqlQuery row = m_database.run(
        QStringLiteral("SELECT * FROM captcha ORDER BY number DESC LIMIT ?"), {limit});
    while (row.next())
        captchas.append(readCaptcha(row));
    return captchas;
}

void Challenges::removeCaptcha(const QString &id)
{
    m_database.run(QStringLiteral("DELETE FROM captcha WHERE id = ?"), {id});
}

void Challenges::removeCaptchasExpiredBefore(qint64 time)
{
    m_database.run(QStringLiteral("DELETE FROM captcha WHERE expires_at < ?"), {time});
}

void Challenges::add(const VerificationCode &sent)
{
    QSqlQuery added = m_database.run(
        QStringLiteral("INSERT INTO code (owner, purpose, code, user_name, phone_area, language,"
                       " captcha_id, captcha, sent_at, expires_at) VALUES (?,?,?,?,?,?,?,?,?,?)"),
        {sent.owner, sent.purpose, sent.digits, sent.userName, sent.phoneArea, sent.language,
         sent.captchaId, sent.captcha, sent.sentAt, sent.expiresAt});
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
