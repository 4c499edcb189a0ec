// SPDX-License-Identifier: MIT
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
    int captchaLifetimeSeconds() const; ///< -1: what the client asks for
    int sessionLifetimeSeconds() const; ///< 0: without end
    int lockOutTries() const;     ///< wrong passwords in a row that lock an account out; 0: none do
    int lockOutSeconds() const;   ///< for how long
    QString countryCode() const;  ///< two letters: the country that callers are in
    QString fixedCode() const;    ///< in place of random digits; empty: they are random
    QString fixedCaptcha() const; ///< in place of random characters; empty: they are random

    QJsonObject toJson() const;
    /// Throws Refusal for an unknown setting or a value out of range.
    static void check(const QJsonObject &object);
    /// Changes the settings that the object names, after check().
    void change(const QJsonObject &object);

    qint64 clockAheadSeconds() const; ///< Clock's; not among the above
    void setClockAhead(qint64 seconds);

private:
    int number(const QString &name) const;
    QString value(const QString &name) const;
    void setValue(const QString &name, const QString &value);

    const Database &m_database;
};
