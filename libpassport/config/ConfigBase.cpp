// SPDX-License-Identifier: MIT
#include "config/ConfigBase.h"

#include "common/Log.h"
#include "config/FileRewrite_p.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace {

QByteArray indentedJson(const QVariantMap &document)
{
    return QJsonDocument(QJsonObject::fromVariantMap(document)).toJson(QJsonDocument::Indented);
}

} // namespace

ConfigBase::~ConfigBase() = default;

bool ConfigBase::loadCfg(const QString &path)
{
    m_loaded = false;
    m_document.clear();
    if (!QFile::exists(path))
        return false;

    QFile file(path);
    if (!openUnlessPipe(file, QIODevice::ReadOnly)) {
        qCCritical(log_lp) << "open file failed";
        return false;
    }
    m_document = QJsonDocument::fromJson(file.readAll()).object().toVariantMap();
    if (m_document.isEmpty())
        return false;

    m_path = path;
    m_loaded = true;
    return true;
}

bool ConfigBase::saveCfg(const QString &path)
{
    if (!m_loaded || m_document.isEmpty() || !QFile::exists(path))
        return false;
    const QByteArray text = indentedJson(m_document);
    return !text.isEmpty() && rewriteFile(path, QIODevice::WriteOnly, text) == Rewrite::Written;
}

QString ConfigBase::getCfgJson() const
{
    return QString::fromUtf8(indentedJson(m_document));
}

QVariant ConfigBase::value(const QString &section, const QString &key,
                           const QVariant &defaultValue) const
{
    if (section.isEmpty() || key.isEmpty())
        return defaultValue;
    return m_document.value(section).toMap().value(key, defaultValue);
}

bool ConfigBase::setValue(const QString &section, const QString &key, const QVariant &value)
{
    if (section.isEmpty() || key.isEmpty() || value.isNull())
        return false;
    QVariantMap values = m_document.value(section).toMap();
    values.insert(key, value);
    m_document.insert(section, values);
    return true;
}

QVariant ConfigBase::rawValue(const QString &name, const QVariant &defaultValue) const
{
    return m_document.value(name, defaultValue);
}
