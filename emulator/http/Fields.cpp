// SPDX-License-Identifier: MIT
#include "http/Fields.h"

#include "http/Refusal.h"

#include <QtCore/QJsonArray>

namespace {

[[noreturn]] void refuse(const QString &key, const QString &complaint)
{
    throw Refusal(400, QStringLiteral("field \"%1\" %2").arg(key, complaint));
}

} // namespace

QString Fields::text(const QString &key) const
{
    if (!has(key))
        refuse(key, QStringLiteral("is missing"));
    return text(key, QString());
}

QString Fields::text(const QString &key, const QString &fallback) const
{
    const QJsonValue value = m_object.value(key);
    if (!has(key))
        return fallback;
    if (!value.isString())
        refuse(key, QStringLiteral("must be a string"));
    return value.toString();
}

bool Fields::flag(const QString &key, bool fallback) const
{
    if (!has(key))
        return fallback;
    if (!m_object.value(key).isBool())
        refuse(key, QStringLiteral("must be true or false"));
    return m_object.value(key).toBool();
}

QStringList Fields::texts(const QString &key) const
{
    QStringList list;
    if (has(key) && !m_object.value(key).isArray())
        refuse(key, QStringLiteral("must be a list of strings"));
    const QJsonArray values = m_object.value(key).toArray();
    for (const QJsonValue &value : values) {
        if (!value.isString())
            refuse(key, QStringLiteral("must be a list of strings"));
        list.append(value.toString());
    }
    return list;
}

int Fields::number(const QString &key, int minimum, int maximum) const
{
    if (!has(key))
        refuse(key, QStringLiteral("is missing"));
    const double value = m_object.value(key).toDouble(-1.0);
    const bool inRange = value >= minimum && value <= maximum;
    if (!m_object.value(key).isDouble() || !inRange || static_cast<int>(value) != value) {
        refuse(key,
               QStringLiteral("must be a whole number from %1 to %2").arg(minimum).arg(maximum));
    }
    return static_cast<int>(value);
}

void Fields::allowOnly(const QStringList &known) const
{
    const QStringList keys = m_object.keys();
    for (const QString &key : keys) {
        if (!known.contains(key)) {
            refuse(key, QStringLiteral("is not known here; known are ") +
                            known.join(QStringLiteral(", ")));
        }
    }
}
