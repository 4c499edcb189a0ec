// SPDX-License-Identifier: MIT
#include "Report.h"

#include <QtCore/QUrlQuery>
#include <QtCore/QVector>

#include <algorithm>
#include <initializer_list>

namespace {

constexpr int maximumSize = 4096;

// Nothing that a page fills in may look like part of the frame around it, or like another report.
bool holdsMarker(const QString &value)
{
    const auto markers = {"openLoginURL_", "userLoadSuccess", "closeSignal", "supplyResult"};
    return std::any_of(markers.begin(), markers.end(),
                       [&](const char *marker) { return value.contains(QLatin1String(marker)); });
}

// Neither spaces nor controls, nor what stands for bytes that were no text.
bool isOneWord(const QString &value)
{
    const QVector<uint> characters = value.toUcs4();
    return std::all_of(characters.begin(), characters.end(), [](uint character) {
        return QChar::isPrint(character) && !QChar::isSpace(character) &&
               character != QChar::ReplacementCharacter;
    });
}

bool isAscii(const QString &value)
{
    return std::all_of(value.begin(), value.end(),
                       [](QChar character) { return character.unicode() < 0x80; });
}

bool fitsSignIn(const QString &value)
{
    return !value.isEmpty() && isOneWord(value) && isAscii(value) && !holdsMarker(value);
}

bool fitsAccount(const QString &value)
{
    return isOneWord(value) && !value.contains(QLatin1String("end")) && !holdsMarker(value);
}

QString signedIn(const QString &token, const QString &userId)
{
    if (!fitsSignIn(token) || !fitsSignIn(userId))
        return {};
    return QStringLiteral("openLoginURL_token_start") + token +
           QStringLiteral("openLoginURL_token_end") + QStringLiteral("openLoginURL_user_id_start") +
           userId + QStringLiteral("openLoginURL_user_id_end");
}

QString account(const QString &userName, const QString &password, const QString &phoneArea)
{
    if (userName.isEmpty() || password.isEmpty() || !fitsAccount(userName) ||
        !fitsAccount(password) || !fitsAccount(phoneArea)) {
        return {};
    }
    const QStringList fields{QStringLiteral("userLoadSuccess"),
                             QStringLiteral("start:"),
                             userName,
                             password,
                             phoneArea,
                             QStringLiteral("end")};
    return fields.join(QLatin1Char(' '));
}

QString textOf(const QUrl &report)
{
    // A page may write spaces as forms do.
    const QUrlQuery query(
        report.query(QUrl::FullyEncoded).replace(QLatin1Char('+'), QLatin1String("%20")));
    const auto value = [&](const char *key) {
        return query.queryItemValue(QString::fromLatin1(key), QUrl::FullyDecoded);
    };
    const QString name = report.path();
    if (name == QLatin1String("signed-in"))
        return signedIn(value("token"), value("userId"));
    if (name == QLatin1String("account"))
        return account(value("userName"), value("password"), value("phoneArea"));
    if (name == QLatin1String("supplied"))
        return QStringLiteral("supplyResult success!");
    if (name == QLatin1String("close"))
        return QStringLiteral("closeSignal");
    return {};
}

} // namespace

QByteArray reportText(const QUrl &report)
{
    const QByteArray text = textOf(report).toUtf8();
    return text.isEmpty() || text.size() >= maximumSize ? QByteArray() : text + '\n';
}
