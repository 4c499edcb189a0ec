// SPDX-License-Identifier: MIT
#include "config/ConfigMgr.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>

namespace {

std::shared_ptr<ConfigBase> loadedDocument(const QString &path)
{
    auto document = std::make_shared<ConfigBase>();
    return document->loadCfg(path) ? document : nullptr;
}

QString directoryOf(const QString &path)
{
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? QStringLiteral(".") : path.left(slash);
}

} // namespace

ConfigMgr::~ConfigMgr() = default;

bool ConfigMgr::init()
{
    const QString directory =
        QCoreApplication::applicationDirPath() + QStringLiteral("/passport/config");
    return load(directory + QStringLiteral("/SystemCfg.cfg"),
                directory + QStringLiteral("/PassPortCfg.cfg"));
}

bool ConfigMgr::init(QString path)
{
    // A path that exists only below the application directory is loaded as given all the same, that
    // is relative to the working directory: hosts rely on this order.
    if (!fileExists(path))
        return false;
    return load(path, directoryOf(path) + QStringLiteral("/PassPortCfg.cfg"));
}

bool ConfigMgr::fileExists(QString path) const
{
    return QFile::exists(path) ||
           QFile::exists(QCoreApplication::applicationDirPath() + QLatin1Char('/') + path);
}

std::shared_ptr<ConfigBase> ConfigMgr::systemConfig() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_systemConfig;
}

std::shared_ptr<ConfigBase> ConfigMgr::passportConfig() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_passportConfig;
}

bool ConfigMgr::load(const QString &systemPath, const QString &passportPath)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_initialized)
        return true;
    m_systemConfig = loadedDocument(systemPath);
    if (!m_systemConfig)
        return false;
    m_passportConfig = loadedDocument(passportPath);
    if (!m_passportConfig)
        return false;
    m_initialized = true;
    return true;
}
