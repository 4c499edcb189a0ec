#pragma once

#include "AccountService.h"
#include "CaptchaService.h"
#include "Challenges.h"
#include "CodeService.h"
#include "CountryService.h"
#include "Faults.h"
#include "Message.h"
#include "RegistrationService.h"
#include "RequestLog.h"
#include "Seed.h"
#include "Settings.h"
#include "Store.h"
#include "WebPages.h"

#include <functional>
#include <vector>

/// The account cloud: finds the function that answers a request, under /v1 for the account API,
/// under /web/ for its pages and under /_dev/ for the developer who watches and disturbs the API.
///
/// Used from the store's thread. Every request gets an answer, a bad one an HTTP code of 400 or
/// above and a sentence. What a request changes is one transaction, on the disk before the answer.
class Emulator
{
public:
    Emulator(Store &store, const Seed &seed);

    Answer answer(const Request &request);

private:
    struct Route
    {
        QString name; ///< the client library's name of the request
        QString method;
        QString path; ///< ending in "/": everything below it
        std::function<Answer(const Request &)> function;
    };

    std::vector<Route> apiRoutes();
    std::vector<Route> developerRoutes();
    std::vector<Route> webRoutes();
    Answer answerByPath(const Request &request);
    Answer answerApi(const Request &request);
    static Answer answerByRules(const Route &route, const Request &request);
    Answer status() const;
    Answer reset();
    Answer addFault(const Request &request);
    Answer changeSettings(const Request &request);

    Store &m_store;
    const Seed &m_seed;
    Settings m_settings;
    Challenges m_challenges;
    CaptchaService m_captchas;
    CodeService m_codes;
    AccountService m_accounts;
    RegistrationService m_registrations;
    CountryService m_countries;
    WebPages m_pages;
    Faults m_faults;
    RequestLog m_log;
    std::vector<Route> m_apiRoutes;
    std::vector<Route> m_developerRoutes;
    std::vector<Route> m_webRoutes;
};
