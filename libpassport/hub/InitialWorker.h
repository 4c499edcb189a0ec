// SPDX-License-Identifier: MIT
#pragma once

#include "../common/Export.h"

#include <QtCore/QJsonObject>
#include <QtCore/QObject>
#include <QtCore/QProcess>

#include <mutex>

namespace VelqorPassPort {

/// Brings up the library's environment: reads the two configuration files of the passport
/// directory, starts the hub when the system configuration asks for it and creates the
/// configuration manager.
///
/// Works on the thread that calls it and blocks that thread: with a hub to start for a second at
/// least, and for each run of "ps". initialModule() may be called from several threads, which then
/// take turns; the other operations take no lock and belong to one thread at a time. The hub runs
/// detached and outlives the worker; only exitModule() ends it.
class PASSPORT_EXPORT InitialWorker : public QObject
{
    Q_OBJECT

public:
    InitialWorker();
    ~InitialWorker() override;

    /// True when the environment is up: also when a hub that was asked for did not start. False,
    /// with a critical log line, when a configuration file is missing or empty.
    ///
    /// Runs once until exitModule(): a call after one that failed returns true and does nothing.
    /// Documents that were read are kept for good, and a later run reads only what is missing.
    bool initialModule(QString passportDir);

    /// Creates the configuration manager anew; always true.
    bool initialTunnel();

    /// Ends the hub if the configuration makes the library start it, and lets initialModule() run
    /// again.
    void exitModule();

    /// The page reload timeout of the web flows in milliseconds; 5000 when none is configured.
    /// Callers know it by this spelling.
    int reloadTiemout();

Q_SIGNALS:
    /// For hosts to connect to; nothing in the library emits it.
    void hubConnect();

private:
    void setPaths(const QString &passportDir);
    void loadDocuments();
    QString configuredHubFilePath() const;
    bool startsHub() const;
    void killOldHub() const;
    void startHub();
    void waitForHub() const;

    QJsonObject m_sysCfgObj;
    QJsonObject m_cfgObj;
    QString m_hubFilePath;
    QString m_sysCfgFilePath;
    QString m_cfgFilePath;
    QString m_hubName;
    std::mutex m_mutex;
    bool m_initialized = false;
    QString m_passportDir;
    QProcess m_process;
};

} // namespace VelqorPassPort
