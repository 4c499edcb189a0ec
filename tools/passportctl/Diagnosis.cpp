// SPDX-License-Identifier: MIT
#include "Command.h"
#include "doctor/Checks.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QSysInfo>

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
    Findings findings;
    QString text;
    QJsonObject data;
    if (checkConfiguration(host, findings)) {
        QVariantMap map;
        host.passport().configData(map);
        const QJsonObject configuration = QJsonObject::fromVariantMap(map);
        text = QString::fromUtf8(QJsonDocument(configuration).toJson()).trimmed();
        data.insert(QStringLiteral("config"), configuration);
    }
    return findings.print(host.output(), text,
                          QStringLiteral("There is no configuration to be used"), data);
}

class Doctor : public Command
{
public:
    void declare(CLI::App &app) override
    {
        addDirectory(app, "--application-dir", m_applicationDir,
                     "Directory of the host's program, below which the hub's lies");
    }
    Exit run(Host &host) override;

private:
    static void addVersions(Findings &findings);

    QString m_applicationDir;
};

void Doctor::addVersions(Findings &findings)
{
    findings.addFact("libpassport", QStringLiteral("libpassport"),
                     QStringLiteral(PASSPORT_VERSION));
    findings.addFact("qt", QStringLiteral("Qt"),
                     QStringLiteral("%1, built with %2")
                         .arg(QLatin1String(qVersion()), QLatin1String(QT_VERSION_STR)));
    findings.addFact("system", QStringLiteral("system"),
                     QStringLiteral("%1, %2").arg(QSysInfo::prettyProductName(),
                                                  QSysInfo::currentCpuArchitecture()));
    addRequestLibrary(findings);
}

Exit Doctor::run(Host &host)
{
    Findings findings;
    addVersions(findings);
    checkDirectory(host.passportDir(), m_applicationDir, findings);
    checkCloud(host, findings);
    return findings.print(host.output(), QStringLiteral("Everything a sign-in needs is there"),
                          QStringLiteral("Not everything a sign-in needs is there"));
}

} // namespace

void addDiagnosisCommands(Commands commands)
{
    commands.add<Status>("status", "Ask the account service whether it is there",
                         "status --cloud https://account.example.com/v1");
    commands.add<Config>("config", "Check and print the cloud configuration",
                         "config --config cloud.json");
    commands.add<Doctor>("doctor", "Look at everything that a sign-in needs",
                         "doctor --config cloud.json --passport-dir passport-dir");
}
