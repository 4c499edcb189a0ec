// SPDX-License-Identifier: MIT
#pragma once

#include "../common/Export.h"

#include <QtCore/QString>
#include <QtCore/QVariant>

/// One configuration file in memory: a JSON object of sections, each an object of keys and values.
///
/// Not loaded after construction and after any loadCfg() that fails; loaded after one that
/// succeeds. Changes are kept in memory until saveCfg(). Used through std::shared_ptr; nothing is
/// guarded, so one thread at a time, or several that only read.
class PASSPORT_EXPORT ConfigBase
{
public:
    ConfigBase() = default;
    virtual ~ConfigBase();
    Q_DISABLE_COPY(ConfigBase)

    /// Replaces the document by the file's. False, with an empty document, when the file is
    /// missing, cannot be opened (one critical log line) or does not hold a JSON object with a
    /// member.
    virtual bool loadCfg(const QString &path);

    /// Writes the document as indented JSON. False when it is not loaded or empty, when there is no
    /// file at the path (none is ever created), or when writing fails; the file then gets its old
    /// content back.
    virtual bool saveCfg(const QString &path);

    /// The document as indented JSON text, "{\n}\n" for an empty one.
    QString getCfgJson() const;

    /// The value of a section's key. The default when either name is empty or names nothing.
    QVariant value(const QString &section, const QString &key, const QVariant &defaultValue) const;

    /// Sets a section's key in memory, creating the section; a member that is not an object is
    /// replaced by one. False, changing nothing, when either name is empty or the value is null.
    /// A document that was never loaded stays unloaded and cannot be saved.
    bool setValue(const QString &section, const QString &key, const QVariant &value);

    /// The top-level member of that name, a section or not.
    QVariant rawValue(const QString &name, const QVariant &defaultValue) const;

private:
    bool m_loaded = false;
    QString m_path;
    QVariantMap m_document;
};
