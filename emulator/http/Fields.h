// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

/// Reads the members of a JSON object that somebody else wrote.
///
/// Every reader throws Refusal(400) with a sentence that names the field when it is missing or of
/// the wrong type; the readers that take a fallback return it for a missing field.
class Fields
{
public:
    explicit Fields(const QJsonObject &object) : m_object(object) {}

    QString text(const QString &key) const;
    QString text(const QString &key, const QString &fallback) const;
    bool flag(const QString &key, bool fallback) const;
    QStringList texts(const QString &key) const; ///< empty when missing
    /// A whole number from minimum to maximum.
    int number(const QString &key, int minimum, int maximum) const;

    bool has(const QString &key) const { return m_object.contains(key); }
    /// Refuses a field that is not in `known`, so that a typing error does not pass in silence.
    void allowOnly(const QStringList &known) const;

private:
    QJsonObject m_object;
};
