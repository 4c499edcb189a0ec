// SPDX-License-Identifier: MIT
#pragma once

#include "console/DeveloperApi.h"
#include "http/Faults.h"
#include "http/RequestLog.h"
#include "http/Router.h"
#include "services/Services.h"
#include "storage/Seed.h"
#include "web/WebPages.h"

#include <functional>

/// The account cloud: finds the function that answers a request, under /v1 for the account API,
/// under /web/ for its pages, under /_dev/ for the developer's calls and at / for their page.
///
/// Used from the store's thread. Every request gets an answer, a bad one an HTTP status of 400 or
/// above and a sentence. What a request changes is one transaction, on the disk before the answer.
class Emulator
{
public:
    Emulator(Store &store, const Seed &seed);

    Answer answer(const Request &request);

    /// Whether each API request is printed in a line: time, name, outcome, milliseconds.
    void setVerbose(bool verbose) { m_verbose = verbose; }

private:
    void addApiRoutes();
    Answer answerByPath(const Request &request, bool forPages);
    Answer answerByTransaction(const std::function<Answer()> &function);
    Answer answerPage(const Request &request) const;
    Answer answerApi(const Request &request);
    Answer answerOrFault(const Request &request, RequestLog::Entry &entry);
    static Answer answerByRules(const Route &route, const Request &request);
    Answer status() const;

    Services m_services;
    WebPages m_webPages;
    WebPages m_consolePages;
    Faults m_faults;
    RequestLog m_log;
    Router m_api;
    DeveloperApi m_developer;
    bool m_verbose = false;
};
