// SPDX-License-Identifier: MIT
#include "Host.h"

#include "Prompt.h"

#include <config/ConfigInformation.h>
#include <config/PassportDirectory_p.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QUrl>

using namespace VelqorPassPort;

// The library itself says only in its log that a passport directory could not be used.
std::optional<Exit> Host::initialize(PassportDir need)
{
    const QString &dir = m_options.passportDir;
    if (dir.isEmpty()) {
        if (need == PassportDir::Optional)
            return std::nullopt;
        return m_output.failure(Exit::Usage,
                                QStringLiteral("name the passport directory with --passport-dir"));
    }
    const PassportDirectory directory(dir);
    for (const QString &path :
         {directory.systemConfiguration(), directory.passportConfiguration()}) {
        const QString problem = problemOfDocument(path);
        if (!problem.isEmpty())
            return m_output.failure(Exit::Configuration,
                                    QStringLiteral("%1: %2").arg(path, problem));
    }
    m_passport.initial(dir);
    return std::nullopt;
}

QString Host::problemOfDocument(const QString &path)
{
    QFile file(path);
    if (!file.exists())
        return QStringLiteral("there is no such file");
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError)
        return QStringLiteral("%1 at byte %2").arg(error.errorString()).arg(error.offset);
    if (document.object().isEmpty())
        return QStringLiteral("it is no JSON object with a member");
    return g_getConfigInformation(path).isEmpty()
               ? QStringLiteral("the library reads nothing from it: it begins with a byte-order "
                                "mark, or is not ASCII")
               : QString();
}

std::optional<Exit> Host::configure()
{
    const QString &address = m_options.address;
    const QString scheme = QUrl(address).scheme(); // in small letters
    if (!address.isEmpty() && scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        return m_output.failure(
            Exit::Usage,
            QStringLiteral("the address \"%1\" begins with neither http:// nor https://")
                .arg(address));
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

    const QVariantMap changes = overrides();
    return changes.isEmpty() ? record : m_passport.setConfigData(changes);
}

QVariantMap Host::overrides() const
{
    QString environment = m_options.environment;
    if (environment.isEmpty() && !m_options.address.isEmpty())
        environment = QStringLiteral("command-line");
    else if (environment.isEmpty() && m_options.configFile.isEmpty())
        environment = QStringLiteral("local");
    QVariantMap changes;
    if (!environment.isEmpty())
        changes.insert(QStringLiteral("cloudEnvironment"), environment);
    if (!m_options.address.isEmpty()) {
        const QVariantMap sources{{QStringLiteral("cloud"), m_options.address}};
        changes.insert(QStringLiteral("environments"), QVariantMap{{environment, sources}});
    }
    return changes;
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
    QString address = data.value(QStringLiteral("environments"))
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
