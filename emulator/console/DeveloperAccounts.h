// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Request.h"
#include "services/Services.h"

/// Shows and changes accounts and sessions for the developer.
///
/// Used from the store's thread. Each operation answers one of the developer's calls, or throws
/// Refusal. An account is shown as accountForm() gives it, with "user_id", "builtIn", "sessions"
/// (how many), "lastLogin", "lastIP", "lockedOutUntil" (null, or when a lock-out ends) and, for a
/// built-in account, the "password" until it gets another.
class DeveloperAccounts
{
public:
    explicit DeveloperAccounts(Services &services) : m_services(services) {}

    Answer list() const; ///< in the order in which they were created
    Answer show(const Request &request) const;
    /// The account form with "username" and "password" or "passwordHash".
    Answer add(const Request &request);
    /// Any members of the account form. Ends no session; "locked": false also ends a lock-out.
    Answer change(const Request &request);
    Answer remove(const Request &request); ///< with its sessions

    Answer listSessions() const; ///< the newest first, at most 1000
    Answer endSession(const Request &request);
    Answer endAllSessions();

private:
    Account accountOf(const Request &request) const;
    void requireOwnNames(const Account &account) const;

    Services &m_services;
};
