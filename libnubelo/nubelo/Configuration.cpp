// SPDX-License-Identifier: MIT
#include "nubelo/Configuration_p.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QUrl>

#include <algorithm>

namespace Nubelo {

namespace {

constexpr int maximumDeadlineMs = 24 * 60 * 60 * 1000;
constexpr int maximumAnswerBytes = 1024 * 1024 * 1024;

// Every request name of the account client, so that an environment and an address are enough. The
// one environment known beforehand is the account emulator on its default port.
const char defaults[] = R"({
    "cloudEnvironment": "",
    "environments": { "local": { "cloud": "http://127.0.0.1:8787/v1" } },
    "requests": {
        "userLogin": { "path": "/user/login", "method": "POST" },
        "getPassInfo": { "path": "/user/info", "method": "POST" },
        "userInfoValid": { "path": "/user/code", "method": "POST" },
        "userCodeLogin": { "path": "/user/code-login", "method": "POST" },
        "userExistCheck": { "path": "/user/exists", "method": "POST" },
        "rbpwd": { "path": "/user/reset-password", "method": "POST" },
        "captcha": { "path": "/captcha", "method": "GET" },
        "fetchCountries": { "path": "/countries", "method": "GET" },
        "ipCountry": { "path": "/ip-country", "method": "GET" },
        "getOEMPrivacyColorInfoByType": { "path": "/privacy", "method": "GET" },
        "status": { "path": "/status", "method": "GET" }
    },
    "timeouts": { "connectMs": 10000, "totalMs": 30000 },
    "limits": { "answerBytes": 1048576 },
    "tls": { "caFile": "", "minimumVersion": "1.2" },
    "proxy": "system"
})";

/// Reads members of nested objects and notes those of a wrong form.
class Reader
{
public:
    explicit Reader(QVector<WrongMember> &wrong) : m_wrong(wrong) {}

    /// Once for a member: what stands in one that is no object is not looked for.
    void fail(const QString &where, const QString &expected)
    {
        const bool isNoted =
            std::any_of(m_wrong.cbegin(), m_wrong.cend(), [&](const WrongMember &member) {
                return (where + QLatin1Char('.')).startsWith(member.path + QLatin1Char('.'));
            });
        if (!isNoted)
            m_wrong.append({where, QStringLiteral("must be ") + expected});
    }

    QVariantMap object(const QVariant &value, const QString &where)
    {
        if (value.isValid() && value.type() != QVariant::Map)
            fail(where, QStringLiteral("an object"));
        return value.toMap();
    }

    QString text(const QVariant &value, const QString &where)
    {
        if (value.type() != QVariant::String)
            fail(where, QStringLiteral("a text"));
        return value.toString();
    }

    QString oneOf(const QVariant &value, const QString &where, const QStringList &allowed)
    {
        QString found = value.toString();
        if (value.type() != QVariant::String || !allowed.contains(found))
            fail(where, QStringLiteral("one of ") + allowed.join(QStringLiteral(", ")));
        return found;
    }

    int number(const QVariant &value, const QString &where, int maximum)
    {
        const double found = value.toDouble();
        const bool isNumber = value.type() != QVariant::String && value.type() != QVariant::Bool;
        if (!isNumber || !(found >= 1 && found <= maximum))
            fail(where, QStringLiteral("a number from 1 to %1").arg(maximum));
        return value.toInt();
    }

    QString address(const QVariant &value, const QString &where, const QStringList &schemes)
    {
        QString found = text(value, where);
        const QUrl url(found, QUrl::StrictMode);
        if (!url.isValid() || url.host().isEmpty() || !schemes.contains(url.scheme()))
            fail(where, QStringLiteral("an address with the scheme ") +
                            schemes.join(QStringLiteral(" or ")));
        while (found.endsWith(QLatin1Char('/')))
            found.chop(1);
        return found;
    }

private:
    QVector<WrongMember> &m_wrong;
};

void readEnvironments(Reader &reader, const QVariantMap &all, Configuration &configuration)
{
    const QString chosen = reader.text(all.value(QStringLiteral("cloudEnvironment")),
                                       QStringLiteral("cloudEnvironment"));
    const QVariantMap environments =
        reader.object(all.value(QStringLiteral("environments")), QStringLiteral("environments"));
    for (auto environment = environments.begin(); environment != environments.end();
         ++environment) {
        const QString where = QStringLiteral("environments.") + environment.key();
        const QVariantMap sources = reader.object(environment.value(), where);
        for (auto source = sources.begin(); source != sources.end(); ++source) {
            const QString address =
                reader.address(source.value(), where + QLatin1Char('.') + source.key(),
                               {QStringLiteral("http"), QStringLiteral("https")});
            if (environment.key() == chosen)
                configuration.addresses.insert(source.key(), address);
        }
    }
}

void readRequests(Reader &reader, const QVariantMap &all, Configuration &configuration)
{
    const QVariantMap requests =
        reader.object(all.value(QStringLiteral("requests")), QStringLiteral("requests"));
    for (auto request = requests.begin(); request != requests.end(); ++request) {
        const QString where = QStringLiteral("requests.") + request.key();
        const QVariantMap fields = reader.object(request.value(), where);
        const QString path =
            reader.text(fields.value(QStringLiteral("path")), where + QStringLiteral(".path"));
        const QVariant method = fields.value(QStringLiteral("method"), QStringLiteral("POST"));
        const QString verb = reader.oneOf(method, where + QStringLiteral(".method"),
                                          {QStringLiteral("POST"), QStringLiteral("GET"),
                                           QStringLiteral("PUT"), QStringLiteral("DELETE"),
                                           QStringLiteral("PATCH"), QStringLiteral("HEAD")});
        configuration.requests.insert(request.key(), {path, verb.toLatin1()});
    }
}

void readRules(Reader &reader, const QVariantMap &all, TransferRules &rules)
{
    const auto part = [&](const QString &name) { return reader.object(all.value(name), name); };
    const QVariantMap timeouts = part(QStringLiteral("timeouts"));
    rules.connectDeadline = std::chrono::milliseconds(
        reader.number(timeouts.value(QStringLiteral("connectMs")),
                      QStringLiteral("timeouts.connectMs"), maximumDeadlineMs));
    rules.totalDeadline = std::chrono::milliseconds(
        reader.number(timeouts.value(QStringLiteral("totalMs")), QStringLiteral("timeouts.totalMs"),
                      maximumDeadlineMs));
    rules.answerLimit =
        reader.number(part(QStringLiteral("limits")).value(QStringLiteral("answerBytes")),
                      QStringLiteral("limits.answerBytes"), maximumAnswerBytes);

    const QVariantMap tls = part(QStringLiteral("tls"));
    rules.caFile = QFile::encodeName(
        reader.text(tls.value(QStringLiteral("caFile")), QStringLiteral("tls.caFile")));
    rules.minimumTls = reader
                           .oneOf(tls.value(QStringLiteral("minimumVersion")),
                                  QStringLiteral("tls.minimumVersion"),
                                  {QStringLiteral("1.2"), QStringLiteral("1.3")})
                           .toLatin1();

    const QVariant proxy = all.value(QStringLiteral("proxy"));
    if (proxy == QStringLiteral("system") || proxy == QStringLiteral("none"))
        rules.proxy = proxy.toString().toLatin1();
    else
        rules.proxy = reader
                          .address(proxy, QStringLiteral("proxy"),
                                   {QStringLiteral("http"), QStringLiteral("https"),
                                    QStringLiteral("socks5"), QStringLiteral("socks5h")})
                          .toUtf8();
}

} // namespace

const QVariantMap &Configuration::builtIn()
{
    static const QVariantMap map =
        QJsonDocument::fromJson(QByteArray(defaults)).object().toVariantMap();
    return map;
}

Configuration Configuration::parse(const QVariantMap &data, QVector<WrongMember> &wrong)
{
    Configuration configuration;
    configuration.data = data;
    const QVariantMap all = merged(builtIn(), data);
    Reader reader(wrong);
    readEnvironments(reader, all, configuration);
    readRequests(reader, all, configuration);
    readRules(reader, all, configuration.rules);
    return configuration;
}

Error::ErrorCode Configuration::readFile(const QString &path, QVariantMap &data, QString &problem)
{
    if (!QFile::exists(path)) {
        problem = QStringLiteral("there is no such file");
        return Error::FileNotExist;
    }
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly)) {
        problem = QStringLiteral("it cannot be opened");
        return Error::FileNotOpen;
    }
    QByteArray text = file.readAll();
    if (text.startsWith("\xEF\xBB\xBF"))
        text.remove(0, 3);
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (!document.isObject()) {
        problem = error.error == QJsonParseError::NoError
                      ? QStringLiteral("it does not hold a JSON object")
                      : QStringLiteral("%1 at byte %2").arg(error.errorString()).arg(error.offset);
        return Error::ConfigDataError;
    }
    data = document.object().toVariantMap();
    return Error::NoError;
}

QVariantMap Configuration::merged(QVariantMap base, const QVariantMap &changes)
{
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        QVariant &member = base[change.key()];
        if (member.type() == QVariant::Map && change.value().type() == QVariant::Map)
            member = merged(member.toMap(), change.value().toMap());
        else
            member = change.value();
    }
    return base;
}

} // namespace Nubelo
