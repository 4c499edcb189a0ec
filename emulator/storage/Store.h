// SPDX-License-Identifier: MIT
#pragma once

#include "storage/Database.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>

#include <functional>
#include <optional>
#include <vector>

/// The further members that every account record has: empty texts and lists, and false.
QJsonObject emptyProfile();

/// An account as it is kept. Times are ISO 8601 in UTC; an empty text means that there is none.
struct Account
{
    qint64 userId = 0; ///< given by the store
    QString userName;
    QString passwordHash; ///< see Secrets.h
    QString email;
    QString phone;
    QString phoneArea;
    bool locked = false;
    bool builtIn = false;                 ///< from the emulator's own seed
    QString publicPassword;               ///< of a built-in account, until it gets another
    QString note;                         ///< what the account is for; shown at the start
    QJsonObject profile = emptyProfile(); ///< further members of the account record, as answered
    QString loginAt;
    QString loginIp;
    QString previousLoginAt;
    QString previousLoginIp;
    int wrongPasswords = 0;    ///< in a row
    qint64 lockedOutUntil = 0; ///< milliseconds since 1970

    bool isLockedAt(qint64 time) const { return locked || time < lockedOutUntil; }
    void setPassword(const QString &password);
};

/// The accounts in the data file, which Sessions, Challenges and Settings share. These four are the
/// only ones that know SQL.
///
/// Used from the thread that constructed it. A change lasts when the transaction around it is
/// committed. Every operation throws StoreError when the file fails it.
class Store
{
public:
    using Accounts = std::vector<Account>;

    /// What a store starts with; the settings are good.
    struct Contents
    {
        Accounts accounts;
        QJsonObject settings;
    };

    /// Opens the file, or creates it with these contents; see Database.
    Store(const QString &path, const std::function<Contents()> &firstContents);

    const Database &database() const { return m_database; }

    /// Forgets everything and starts again with these contents.
    void reset(const Contents &contents);

    Accounts accounts() const; ///< in the order in which they were created
    std::optional<Account> account(qint64 userId) const;
    /// The account with this user name or e-mail, or with this phone number in this phone area.
    std::optional<Account> find(const QString &name, const QString &phoneArea) const;
    /// One of this account's names that leads to another account too; empty if none does.
    QString sharedName(const Account &account) const;

    /// Adds an account, whose number is ignored; returns the one that it got, which none has had.
    qint64 add(const Account &account);
    /// Replaces all of the account with this number but its logins.
    void update(const Account &account);
    /// What was the latest login becomes the previous one.
    void noteLogin(qint64 userId, const QString &at, const QString &ip);
    /// Of all accounts, those that go on after `time`, in milliseconds since 1970.
    void endLockOutsAfter(qint64 time);
    /// With its sessions.
    void remove(qint64 userId);

private:
    Database m_database;
};
