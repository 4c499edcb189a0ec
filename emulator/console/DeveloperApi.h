// SPDX-License-Identifier: MIT
#pragma once

#include "console/DeveloperAccounts.h"
#include "http/Faults.h"
#include "http/RequestLog.h"
#include "http/Router.h"
#include "services/Services.h"
#include "storage/Seed.h"

/// The developer's calls, under /_dev/: what the emulator knows beyond what an account service
/// answers. openapi.json beside this file describes each.
///
/// Used from the store's thread.
class DeveloperApi
{
public:
    DeveloperApi(Services &services, const Seed &seed, Faults &faults, RequestLog &log);

    bool isFor(const Request &request) const { return m_router.isFor(request); }
    /// Throws Refusal.
    Answer answer(const Request &request);

private:
    void addAccountRoutes();
    void addTrafficRoutes();
    void addStateRoutes();
    Answer listRequests(const Request &request) const;
    Answer removeFault(const Request &request);
    Answer changeSettings(const Request &request);
    Answer showClock() const;
    Answer advanceClock(const Request &request);
    Answer exportSeed() const;
    Answer importSeed(const Request &request);
    Answer startAgain(const Store::Contents &contents);
    Answer catalogue();

    Services &m_services;
    const Seed &m_seed;
    Faults &m_faults;
    RequestLog &m_log;
    DeveloperAccounts m_accounts;
    Router m_router;
};
