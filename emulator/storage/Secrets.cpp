// SPDX-License-Identifier: MIT
#include "storage/Secrets.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QRandomGenerator>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>
#include <QtNetwork/QPasswordDigestor>

namespace {

// About 10 ms: dear enough for a file that may get into wrong hands, cheap enough for a tool that
// hashes its seed at every start and reset.
constexpr int iterationsOfNewHashes = 4000;
constexpr int hashBytes = 32;

template <int words>
QByteArray randomBytes()
{
    quint32 buffer[words];
    QRandomGenerator::system()->fillRange(buffer);
    return QByteArray(reinterpret_cast<const char *>(buffer), sizeof buffer);
}

QByteArray derive(const QString &password, const QByteArray &salt, int iterations)
{
    return QPasswordDigestor::deriveKeyPbkdf2(QCryptographicHash::Sha256, password.toUtf8(), salt,
                                              iterations, hashBytes);
}

} // namespace

QString newToken()
{
    return QString::fromLatin1(randomBytes<8>().toHex());
}

QString hashToken(const QString &token)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(token.toUtf8(), QCryptographicHash::Sha256).toHex());
}

QString hashPassword(const QString &password)
{
    const QByteArray salt = randomBytes<4>();
    return QStringLiteral("pbkdf2-sha256$%1$%2$%3")
        .arg(QString::number(iterationsOfNewHashes), QString::fromLatin1(salt.toBase64()),
             QString::fromLatin1(derive(password, salt, iterationsOfNewHashes).toBase64()));
}

bool isPasswordHash(const QString &text)
{
    static const QRegularExpression form(QStringLiteral(
        "^pbkdf2-sha256\\$[1-9][0-9]{0,5}\\$[A-Za-z0-9+/]{2,}={0,2}\\$[A-Za-z0-9+/]{43}=\\z"));
    return form.match(text).hasMatch();
}

bool matchesPassword(const QString &password, const QString &hash)
{
    const QStringList parts = hash.split(QLatin1Char('$'));
    if (parts.size() != 4)
        return false;
    const QByteArray salt = QByteArray::fromBase64(parts.at(2).toLatin1());
    const QByteArray expected = QByteArray::fromBase64(parts.at(3).toLatin1());
    const QByteArray actual = derive(password, salt, parts.at(1).toInt());
    if (expected.size() != hashBytes || actual.size() != hashBytes)
        return false;
    int difference = 0;
    for (int i = 0; i < hashBytes; ++i)
        difference |= actual.at(i) ^ expected.at(i);
    return difference == 0;
}
