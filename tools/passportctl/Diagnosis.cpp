#include "Command.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonDocument>
#include <QtCore/QSysInfo>

#include <algorithm>
#include <vector>

#if defined(PASSPORT_BUNDLED_NUBELO)
#include <curl/curl.h>
#endif

using namespace VelqorPassPort;

namespace {

class Status : public Command
{
public:
    void declare(CLI::App &) override {}
    Exit run(Host &host) override;
};

Exit Status::run(Host &host)
{
    if (const auto end = host.configure())
        return *end;
    QVariant result;
    const PassportCommunityError record = host.requestStatus(result);
    if (record.isError())
        return host.output().failure(QStringLiteral("status of ") + host.address(), record);
    return host.output().success(QStringLiteral("%1 answers").arg(host.address()),
                                 Output::rowsOf(result.toMap()),
                                 {{QStringLiteral("address"), host.address()},
                                  {QStringLiteral("status"), QJsonValue::fromVariant(result)}});
}

class Config : public Command
{
public:
    void declare(CLI::App &) override {}
    Exit run(Host &host) override;
};

Exit Config::run(Host &host)
{
    if (const auto end = host.configure())
        return *end;
    QVariantMap map;
    host.passport().configData(map);
    const QJsonObject data = QJsonObject::fromVariantMap(map);
    const QString text = QString::fromUtf8(QJsonDocument(data).toJson()).trimmed();
    return host.output().success(text, {}, {{QStringLiteral("config"), data}});
}

void addRequestLibrary(Output::Rows &rows)
{
#if defined(PASSPORT_BUNDLED_NUBELO)
    const curl_version_info_data *info = curl_version_info(CURLVERSION_NOW);
    rows.append({QStringLiteral("request library"),
                 QStringLiteral("bundled, libcurl %1").arg(QLatin1String(info->version))});
    rows.append({QStringLiteral("TLS"), QString::fromLatin1(info->ssl_version)});
#if LIBCURL_VERSION_NUM >= 0x075400
    const QString file = QString::fromLocal8Bit(info->cainfo);
    const QString directory = QString::fromLocal8Bit(info->capath);
    rows.append({QStringLiteral("certificates"), file.isEmpty() ? directory : file});
#endif
#else
    rows.append({QStringLiteral("request library"), QStringLiteral("not the bundled one")});
#endif
}

void addProxies(Output::Rows &rows)
{
    // A proxy's address may hold a name and a password before the "@": they are not printed.
    for (const char *name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy"}) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty())
            rows.append({QString::fromLatin1(name), value.section(QLatin1Char('@'), -1)});
    }
}

QString median(std::vector<double> milliseconds)
{
    std::sort(milliseconds.begin(), milliseconds.end());
    return QString::number(milliseconds[milliseconds.size() / 2], 'f', 1) + QStringLiteral(" ms");
}

/// The first request pays for the connection; the rest show what a request costs afterwards.
PassportCommunityError addTimes(Host &host, Output::Rows &rows)
{
    constexpr int times = 6;
    std::vector<double> milliseconds;
    for (int i = 0; i < times; ++i) {
        QElapsedTimer clock;
        clock.start();
        QVariant result;
        const PassportCommunityError record = host.requestStatus(result);
        if (record.isError())
            return record;
        milliseconds.push_back(static_cast<double>(clock.nsecsElapsed()) / 1e6);
        if (i == 0)
            rows.append({QStringLiteral("service"),
                         result.toMap()
                             .value(QStringLiteral("service"), QStringLiteral("answers"))
                             .toString()});
    }
    rows.append({QStringLiteral("first answer"), median({milliseconds.front()})});
    milliseconds.erase(milliseconds.begin());
    rows.append({QStringLiteral("next answers"), median(milliseconds)});
    return {};
}

class Doctor : public Command
{
public:
    void declare(CLI::App &) override {}
    Exit run(Host &host) override;
};

Exit Doctor::run(Host &host)
{
    Output::Rows rows{
        {QStringLiteral("libpassport"), QStringLiteral(PASSPORT_VERSION)},
        {QStringLiteral("Qt"), QStringLiteral("%1, built with %2")
                                   .arg(QLatin1String(qVersion()), QLatin1String(QT_VERSION_STR))},
        {QStringLiteral("system"),
         QStringLiteral("%1, %2").arg(QSysInfo::prettyProductName(),
                                      QSysInfo::currentCpuArchitecture())}};
    addRequestLibrary(rows);
    addProxies(rows);

    PassportCommunityError record = host.applyOptions();
    if (!record.isError()) {
        rows.append({QStringLiteral("address"), host.address()});
        record = addTimes(host, rows);
    }
    QJsonObject data;
    for (const auto &[name, value] : qAsConst(rows))
        data.insert(name, value);
    if (!record.isError()) {
        return host.output().success(QStringLiteral("Everything a sign-in needs is there"), rows,
                                     data);
    }
    host.output().report(QStringLiteral("Not everything a sign-in needs is there"), rows);
    return host.output().failure(QStringLiteral("doctor"), record);
}

} // namespace

void addDiagnosisCommands(Commands commands)
{
    commands.add<Status>("status", "Ask the account service whether it is there");
    commands.add<Config>("config", "Check and print the cloud configuration");
    commands.add<Doctor>("doctor", "Look at everything that a sign-in needs");
}
