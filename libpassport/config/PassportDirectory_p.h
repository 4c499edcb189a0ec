// SPDX-License-Identifier: MIT
#pragma once

#include "config/ConfigInformation.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace VelqorPassPort {

/// Where things are in the passport directory, the directory that the host hands to
/// Passport::initial(). A value; the paths are put together as they are and nothing is checked.
class PassportDirectory
{
public:
    /// `path` has no trailing separator.
    explicit PassportDirectory(QString path) : m_path(std::move(path)) {}

    QString systemConfiguration() const { return m_path + QStringLiteral("/config/SystemCfg.cfg"); }
    QString passportConfiguration() const
    {
        return m_path + QStringLiteral("/config/PassPortCfg.cfg");
    }
    /// The remembered account.
    QString accountFile() const { return m_path + QStringLiteral("/config/account.json"); }
    QString hub() const { return m_path + QStringLiteral("/hub/passportHub.exe"); }
    /// A program of the web tool, by its path below the tool's directory.
    QString webTool(const QString &program) const
    {
        return m_path + QStringLiteral("/openweburl/") + program;
    }
    QString privacyPolicy(const QString &fileName) const
    {
        return m_path + QStringLiteral("/privacypolicy/") + fileName;
    }

    /// Reads the section about web pages and the reachability of the network; empty where the
    /// passport configuration or the section is missing.
    QJsonObject cloudSection() const
    {
        return cloudSection(g_getConfigInformation(passportConfiguration()));
    }
    /// The same section of a passport configuration that was read before.
    static QJsonObject cloudSection(const QJsonObject &configuration)
    {
        return configuration.value(QLatin1String("nubelo")).toObject();
    }

private:
    QString m_path;
};

} // namespace VelqorPassPort
