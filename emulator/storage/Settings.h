#pragma once

#include "storage/Database.h"

#include <QtCore/QJsonObject>

/// What a developer may set while the emulator runs; kept in the data file.
///
/// Used from the database's thread; changes belong to the caller's transaction.
class Settings
{
public:
    explicit Settings(const Database &database) : m_database(database) {}

    static QStringList schema();

    int codeLifetimeSeconds() const; ///< of a verification code; 0: it is expired when it is sent
    int codeIntervalSeconds() const; ///< between two codes for the same user and purpose
    QString countryCode() const;     ///< two letters: the country that callers are in

    QJsonObject toJson() const;
    /// Changes the settings that the object names. Throws Refusal for an unknown one or a value out
    /// of range.
    void change(const QJsonObject &object);
    void setCountry(const QString &countryCode);

private:
    QString value(const QString &name, const QString &fallback) const;
    void setValue(const QString &name, const QString &value);

    const Database &m_database;
};
