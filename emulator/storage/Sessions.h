// SPDX-License-Identifier: MIT
#pragma once

#include "storage/Clock.h"
#include "storage/Store.h"

#include <QtCore/QMap>
#include <QtCore/QVector>

/// A sign-in that goes on. Times are milliseconds since 1970.
struct Session
{
    qint64 id = 0;
    qint64 userId = 0;
    QString userName;
    qint64 startedAt = 0;
    QString ip;
    qint64 expiresAt = 0; ///< 0: never
};

/// The sessions in the data file, of which it keeps the tokens as hashes.
///
/// One that has expired is removed at the latest when somebody comes with its token, and stays so
/// when the clock is set back.
///
/// Used from the store's thread; changes belong to the caller's transaction. Every operation throws
/// StoreError when the file fails it.
class Sessions
{
public:
    Sessions(Store &store, const Settings &settings, const Clock &clock);

    static QStringList schema();

    /// Starts one for the account and notes its login; returns the token.
    QString start(qint64 userId, const QString &ip);
    std::optional<Account> accountOf(const QString &token);

    QVector<Session> list() const;    ///< the newest first, at most 1000
    QMap<qint64, int> counts() const; ///< by the account's number
    bool end(qint64 id);              ///< false if there is none
    void endAll();
    void endOf(qint64 userId);
    void removeExpired();

private:
    Store &m_store;
    const Settings &m_settings;
    const Clock &m_clock;
};
