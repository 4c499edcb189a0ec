#include "Cloud.h"

#include "Prompt.h"

#include <QtCore/QJsonDocument>

using namespace VelqorPassPort;

namespace {

constexpr int defaultPort = 8787;

bool failed(const PassportCommunityError &record)
{
    return record.errorCode != CommunityErrorCode::NoError;
}

} // namespace

PassportCommunityError Cloud::configure()
{
    PassportCommunityError record;
    if (!m_options.configFile.isEmpty())
        record = m_client.setConfigPath(m_options.configFile);
    if (failed(record))
        return record;

    QString environment = m_options.environment;
    if (environment.isEmpty() && (m_options.configFile.isEmpty() || !m_options.address.isEmpty()))
        environment =
            m_options.address.isEmpty() ? QStringLiteral("local") : QStringLiteral("command-line");
    if (!environment.isEmpty())
        record = m_client.setConfigData(environment);
    if (failed(record) || m_options.address.isEmpty())
        return record;
    const QVariantMap sources{{QStringLiteral("cloud"), m_options.address}};
    return m_client.setConfigData(
        QVariantMap{{QStringLiteral("environments"), QVariantMap{{environment, sources}}}});
}

QString Cloud::address()
{
    const QVariantMap data = m_client.configData();
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

PassportCommunityError Cloud::requestStatus(QVariant &result)
{
    return m_client.requestNubelo(result, QStringLiteral("status"), Nubelo::Manager::Get,
                                  Nubelo::Manager::NoEncrypt, QVariantMap(), QVariantMap(),
                                  QVariantMap(), QStringLiteral("cloud"));
}

Exit Cloud::withAccount(const QString &user, const QString &phoneArea, const Authenticated &then)
{
    PassportCommunityError record = configure();
    if (failed(record))
        return m_output.failure(QStringLiteral("configuration"), record);
    const auto password = readSecret(QStringLiteral("Password for ") + user);
    if (!password)
        return m_output.failure(
            Exit::Usage, QStringLiteral("no password: type it, or give it on standard input"));
    QVariantMap profile;
    record = m_client.logIn(user, *password, phoneArea, profile, false);
    if (failed(record))
        return m_output.failure(QStringLiteral("sign-in"), record);
    return then(profile);
}

Exit Cloud::signIn(const QString &user, const QString &phoneArea, bool showToken)
{
    return withAccount(user, phoneArea, [&](const QVariantMap &profile) {
        const QString id = profile.value(QStringLiteral("userID")).toString();
        Output::Rows rows{{QStringLiteral("user"), user}, {QStringLiteral("userID"), id}};
        QJsonObject data{{QStringLiteral("user"), user}, {QStringLiteral("userID"), id}};
        if (showToken) {
            rows.append({QStringLiteral("token"), m_client.token()});
            data.insert(QStringLiteral("token"), m_client.token());
        }
        return m_output.success(QStringLiteral("Signed in at %1").arg(address()), rows, data);
    });
}

Exit Cloud::profile(const QString &user, const QString &phoneArea)
{
    return withAccount(user, phoneArea, [&](QVariantMap profile) {
        // The sign-in succeeds without the profile; whoever asks for the profile wants to know.
        const PassportCommunityError record = m_client.reqGetUserInfo(profile, QString());
        if (failed(record))
            return m_output.failure(QStringLiteral("profile"), record);
        profile.remove(QStringLiteral("token"));
        return m_output.success(
            QStringLiteral("Profile of %1").arg(user), Output::rowsOf(profile),
            {{QStringLiteral("profile"), QJsonObject::fromVariantMap(profile)}});
    });
}

Exit Cloud::status()
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

Exit Cloud::config()
{
    const PassportCommunityError record = configure();
    if (failed(record))
        return m_output.failure(QStringLiteral("configuration"), record);
    const QJsonObject data = QJsonObject::fromVariantMap(m_client.configData());
    const QString text = QString::fromUtf8(QJsonDocument(data).toJson()).trimmed();
    return m_output.success(text, {}, {{QStringLiteral("config"), data}});
}
