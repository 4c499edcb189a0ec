#include "Host.h"

#include "Prompt.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

using namespace VelqorPassPort;

// The library itself says only in its log that a passport directory could not be used.
std::optional<Exit> Host::initialize(PassportDir need)
{
    const QString &dir = m_options.passportDir;
    if (dir.isEmpty()) {
        if (need == PassportDir::Optional)
            return std::nullopt;
        return m_output.failure(Exit::Configuration, QStringLiteral("this needs --passport-dir"));
    }
    for (const char *name : {"/config/SystemCfg.cfg", "/config/PassPortCfg.cfg"}) {
        QFile file(dir + QLatin1String(name));
        if (!file.open(QIODevice::ReadOnly) ||
            !QJsonDocument::fromJson(file.readAll()).isObject()) {
            return m_output.failure(
                Exit::Configuration,
                QStringLiteral("%1: no file with a JSON object").arg(file.fileName()));
        }
    }
    m_passport.initial(dir);
    return std::nullopt;
}

std::optional<Exit> Host::configure()
{
    const PassportCommunityError record = applyOptions();
    if (record.isError())
        return m_output.failure(QStringLiteral("configuration"), record);
    return std::nullopt;
}

PassportCommunityError Host::applyOptions()
{
    PassportCommunityError record;
    if (!m_options.configFile.isEmpty())
        record = m_passport.setConfigPath(m_options.configFile);
    if (record.isError())
        return record;

    QString environment = m_options.environment;
    if (environment.isEmpty() && !m_options.address.isEmpty())
        environment = QStringLiteral("command-line");
    else if (environment.isEmpty() && m_options.configFile.isEmpty())
        environment = QStringLiteral("local");
    if (!environment.isEmpty())
        record = m_passport.setConfigData(environment);
    if (record.isError() || m_options.address.isEmpty())
        return record;
    const QVariantMap sources{{QStringLiteral("cloud"), m_options.address}};
    return m_passport.setConfigData(
        QVariantMap{{QStringLiteral("environments"), QVariantMap{{environment, sources}}}});
}

std::optional<Exit> Host::prepare(PassportDir need)
{
    const auto end = initialize(need);
    return end ? end : configure();
}

std::optional<Exit> Host::signIn(const Account &account, bool remember, QVariantMap &profile)
{
    const auto password = readSecret(QStringLiteral("Password for ") + account.user);
    if (!password)
        return m_output.failure(
            Exit::Usage, QStringLiteral("no password: type it, or give it on standard input"));
    const PassportCommunityError record =
        m_passport.logIn(account.user, *password, account.phoneArea, profile, remember);
    if (record.isError())
        return m_output.failure(QStringLiteral("sign-in"), record);
    return std::nullopt;
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
        return QStringLiteral("http://127.0.0.1:8787/v1");
    return address;
}

PassportCommunityError Host::requestStatus(QVariant &result)
{
    return client().requestNubelo(result, QStringLiteral("status"), Nubelo::Manager::Get,
                                  Nubelo::Manager::NoEncrypt, QVariantMap(), QVariantMap(),
                                  QVariantMap(), QStringLiteral("cloud"));
}
