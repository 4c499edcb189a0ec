#include "Host.h"

#include "Prompt.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QUrl>

using namespace VelqorPassPort;

namespace {

constexpr int defaultPort = 8787;

bool failed(const PassportCommunityError &record)
{
    return record.errorCode != CommunityErrorCode::NoError;
}

} // namespace

// The library itself says only in its log that a passport directory could not be used.
QString Host::initialize(bool needsPassportDir)
{
    const QString &dir = m_options.passportDir;
    if (dir.isEmpty())
        return needsPassportDir ? QStringLiteral("this needs --passport-dir") : QString();
    for (const char *name : {"/config/SystemCfg.cfg", "/config/PassPortCfg.cfg"}) {
        QFile file(dir + QLatin1String(name));
        if (!file.open(QIODevice::ReadOnly) || !QJsonDocument::fromJson(file.readAll()).isObject())
            return QStringLiteral("%1: no file with a JSON object").arg(file.fileName());
    }
    m_passport.initial(dir);
    return {};
}

PassportCommunityError Host::configure()
{
    PassportCommunityError record;
    if (!m_options.configFile.isEmpty())
        record = m_passport.setConfigPath(m_options.configFile);
    if (failed(record))
        return record;

    QString environment = m_options.environment;
    if (environment.isEmpty() && !m_options.address.isEmpty())
        environment = QStringLiteral("command-line");
    else if (environment.isEmpty() && m_options.configFile.isEmpty())
        environment = QStringLiteral("local");
    if (!environment.isEmpty())
        record = m_passport.setConfigData(environment);
    if (failed(record) || m_options.address.isEmpty())
        return record;
    const QVariantMap sources{{QStringLiteral("cloud"), m_options.address}};
    return m_passport.setConfigData(
        QVariantMap{{QStringLiteral("environments"), QVariantMap{{environment, sources}}}});
}

QString Host::address()
{
    QVariantMap data;
    m_passport.configData(data);
    const QString environment = data.value(QStringLiteral("cloudEnvironment")).toString();
    const QString address = data.value(QStringLiteral("environments"))
                                .toMap()
                                .value(environment)
                                .toMap()
                                .value(QStringLiteral("cloud"))
                                .toString();
    if (address.isEmpty() && environment == QLatin1String("local"))
        return QStringLiteral("http://127.0.0.1:%1/v1").arg(defaultPort);
    return address;
}

PassportNubelo &Host::client()
{
    if (!m_client) {
        QVariantMap data;
        m_passport.configData(data);
        m_client = std::make_unique<PassportNubelo>();
        m_client->setConfigData(data);
    }
    return *m_client;
}

PassportCommunityError Host::requestStatus(QVariant &result)
{
    return client().requestNubelo(result, QStringLiteral("status"), Nubelo::Manager::Get,
                                  Nubelo::Manager::NoEncrypt, QVariantMap(), QVariantMap(),
                                  QVariantMap(), QStringLiteral("cloud"));
}

QJsonValue Host::askEmulator(const QString &call, const QVariantMap &body)
{
    QVariant result;
    const QString url = QUrl(address()).resolved(QUrl(QStringLiteral("/_dev/") + call)).toString();
    client().requestNubelo(result, url, Nubelo::Manager::Get, body);
    const QJsonObject answer = QJsonDocument::fromJson(result.toString().toUtf8()).object();
    return answer.isEmpty() ? QJsonValue(QJsonValue::Undefined)
                            : answer.value(QStringLiteral("result"));
}

std::optional<Exit> Host::prepare(bool needsPassportDir)
{
    const QString problem = initialize(needsPassportDir);
    if (!problem.isEmpty())
        return m_output.failure(Exit::Configuration, problem);
    const PassportCommunityError record = configure();
    if (failed(record))
        return m_output.failure(QStringLiteral("configuration"), record);
    return std::nullopt;
}

Exit Host::withAccount(const QString &user, const QString &phoneArea, bool remember,
                       const Authenticated &then)
{
    if (const auto end = prepare(remember))
        return *end;
    const auto password = readSecret(QStringLiteral("Password for ") + user);
    if (!password)
        return m_output.failure(
            Exit::Usage, QStringLiteral("no password: type it, or give it on standard input"));
    QVariantMap profile;
    const PassportCommunityError record =
        m_passport.logIn(user, *password, phoneArea, profile, remember);
    if (failed(record))
        return m_output.failure(QStringLiteral("sign-in"), record);
    return then(profile);
}

Exit Host::signIn(const QString &user, const QString &phoneArea, bool showToken, bool remember)
{
    return withAccount(user, phoneArea, remember, [&](const QVariantMap &profile) {
        const QString id = profile.value(QStringLiteral("userID")).toString();
        Output::Rows rows{{QStringLiteral("user"), user}, {QStringLiteral("userID"), id}};
        QJsonObject data{{QStringLiteral("user"), user}, {QStringLiteral("userID"), id}};
        if (showToken) {
            rows.append({QStringLiteral("token"), m_passport.token()});
            data.insert(QStringLiteral("token"), m_passport.token());
        }
        // The library does not report a file that it could not write.
        if (remember) {
            const bool kept =
                m_passport.getAccountInfo().value(QStringLiteral("name")).toString() == user;
            rows.append({QStringLiteral("remembered"),
                         kept ? QStringLiteral("yes") : QStringLiteral("no")});
            data.insert(QStringLiteral("remembered"), kept);
        }
        return m_output.success(QStringLiteral("Signed in at %1").arg(address()), rows, data);
    });
}

Exit Host::profile(const QString &user, const QString &phoneArea)
{
    return withAccount(user, phoneArea, false, [&](QVariantMap profile) {
        // The sign-in succeeds without the profile; whoever asks for the profile wants to know.
        const PassportCommunityError record = m_passport.reqGetUserInfo(profile, QString());
        if (failed(record))
            return m_output.failure(QStringLiteral("profile"), record);
        profile.remove(QStringLiteral("token"));
        return m_output.success(
            QStringLiteral("Profile of %1").arg(user), Output::rowsOf(profile),
            {{QStringLiteral("profile"), QJsonObject::fromVariantMap(profile)}});
    });
}

Exit Host::account(bool forget)
{
    const QString problem = initialize(true);
    if (!problem.isEmpty())
        return m_output.failure(Exit::Configuration, problem);
    const QString path = m_options.passportDir + QStringLiteral("/config/account.json");
    if (forget && QFile::exists(path) && !QFile::remove(path))
        return m_output.failure(Exit::Configuration, path + QStringLiteral(": cannot be removed"));

    const QJsonObject account = m_passport.getAccountInfo();
    const QString name = account.value(QStringLiteral("name")).toString();
    const bool hasPassword = account.contains(QStringLiteral("password"));
    if (name.isEmpty())
        return m_output.success(QStringLiteral("No account is remembered"), {},
                                {{QStringLiteral("remembered"), false}});
    return m_output.success(
        QStringLiteral("Remembered account"),
        {{QStringLiteral("name"), name},
         {QStringLiteral("password"), hasPassword ? QStringLiteral("remembered, not shown")
                                                  : QStringLiteral("not remembered")}},
        {{QStringLiteral("remembered"), true},
         {QStringLiteral("name"), name},
         {QStringLiteral("hasPassword"), hasPassword}});
}

Exit Host::status()
{
    PassportCommunityError record = configure();
    if (failed(record))
        return m_output.failure(QStringLiteral("configuration"), record);
    QVariant result;
    record = requestStatus(result);
    if (failed(record))
        return m_output.failure(QStringLiteral("status of ") + address(), record);
    return m_output.success(QStringLiteral("%1 answers").arg(address()),
                            Output::rowsOf(result.toMap()),
                            {{QStringLiteral("address"), address()},
                             {QStringLiteral("status"), QJsonValue::fromVariant(result)}});
}

Exit Host::config()
{
    const PassportCommunityError record = configure();
    if (failed(record))
        return m_output.failure(QStringLiteral("configuration"), record);
    QVariantMap map;
    m_passport.configData(map);
    const QJsonObject data = QJsonObject::fromVariantMap(map);
    const QString text = QString::fromUtf8(QJsonDocument(data).toJson()).trimmed();
    return m_output.success(text, {}, {{QStringLiteral("config"), data}});
}
