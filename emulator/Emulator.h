#pragma once

#include "http/Faults.h"
#include "http/RequestLog.h"
#include "http/Router.h"
#include "services/AccountService.h"
#include "services/CaptchaService.h"
#include "services/CodeService.h"
#include "services/CountryService.h"
#include "services/RegistrationService.h"
#include "storage/Challenges.h"
#include "storage/Seed.h"
#include "storage/Settings.h"
#include "storage/Store.h"
#include "web/WebPages.h"

/// The account cloud: finds the function that answers a request, under /v1 for the account API,
/// under /web/ for its pages and under /_dev/ for the developer's calls.
///
/// Used from the store's thread. Every request gets an answer, a bad one an HTTP status of 400 or
/// above and a sentence. What a request changes is one transaction, on the disk before the answer.
class Emulator
{
public:
    Emulator(Store &store, const Seed &seed);

    Answer answer(const Request &request);

private:
    void addApiRoutes();
    void addDeveloperRoutes();
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
    Router m_api;
    Router m_developer;
    Router m_web;
};
