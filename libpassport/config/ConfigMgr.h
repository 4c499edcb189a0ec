// SPDX-License-Identifier: MIT
#pragma once

#include "ConfigBase.h"

#include <memory>
#include <mutex>

/// Finds and loads the library's two configuration documents, which lie side by side: the system
/// configuration "SystemCfg.cfg" and the passport configuration "PassPortCfg.cfg".
///
/// The first init() that succeeds loads them for good: later calls return true and reload nothing.
/// A failed one may be tried again. The two init() operations and the accessors may be called from
/// any thread; the documents themselves are not guarded.
class PASSPORT_EXPORT ConfigMgr : public ConfigBase
{
public:
    ConfigMgr() = default;
    ~ConfigMgr() override;

    /// Loads both documents from "passport/config" in the application directory. When only the
    /// second cannot be loaded, the first stays.
    bool init();

    /// Loads the system configuration from the path and the passport configuration from the same
    /// directory. False when fileExists() denies the path, also after an earlier success.
    bool init(QString path);

    /// True if a file exists at the path as given or below the application directory.
    bool fileExists(QString path) const;

    /// The document of the system; an empty pointer until it is loaded.
    std::shared_ptr<ConfigBase> systemConfig() const;
    /// The document of the passport; an empty pointer until it is loaded.
    std::shared_ptr<ConfigBase> passportConfig() const;

private:
    bool load(const QString &systemPath, const QString &passportPath);

    std::shared_ptr<ConfigBase> m_systemConfig;
    std::shared_ptr<ConfigBase> m_passportConfig;
    bool m_initialized = false;
    mutable std::mutex m_mutex;
};
