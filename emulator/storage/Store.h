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
    QString note;                         ///< what the account is for; shown at the start
    QJsonObject profile = emptyProfile(); ///< further members of the account record, as answered
    QString previousLoginAt;
    QString previousLoginIp;
};

/// Accounts and sessions in the data file, which Challenges and Settings share. These three are the
/// only ones that know SQL.
///
/// Used from the thread that constructed it. A change lasts when the transaction around it is
/// committed. Every operation throws StoreError when the file fails it.
class Store
{
public:
    using Accounts = std::vector<Account>;

    /// Opens the file, or creates it with the accounts that firstAccounts gives; see Database.
    Store(const QString &path, const std::function<Accounts()> &firstAccounts);

    const Database &database() const { return m_database; }

    /// Forgets everything and starts again with these accounts.
    void reset(const Accounts &accounts);

    Accounts accounts() const; ///< in the order in which they were created
    /// The account with this user name or e-mail, or with this phone number in this phone area.
    std::optional<Account> find(const QString &name, const QString &phoneArea) const;
    std::optional<Account> accountOfSession(const QString &tokenHash) const;

    /// Adds an account, whose number is ignored; returns the one that it got.
    qint64 add(const Account &account);
    /// Replaces the e-mail, the phone and the profile of the account with this number.
    void update(const Account &account);
    /// Adds a session and notes the login. What was the latest login becomes the previous one.
    void addSession(const QString &tokenHash, qint64 userId, const QString &at, const QString &ip);
    /// Replaces the password and ends the sessions that the old one opened.
    void setPassword(qint64 userId, const QString &passwordHash);

private:
    Database m_database;
};
