#include "Emulator.h"

#include "http/Loopback.h"
#include "http/Refusal.h"
#include "services/Denial.h"
#include "services/PrivacyPage.h"

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QStringList>
#include <QtCore/QTextStream>
#include <QtCore/QUrl>

#include <algorithm>

namespace {

// Any web page in the developer's browser can send requests here, and read the answers when its
// host name is made to resolve to the loopback address. These headers tell where a page is from.
void requireLocalCaller(const Request &request)
{
    const QStringList hosts = request.headerValues(QStringLiteral("Host"));
    if (!std::all_of(hosts.begin(), hosts.end(), isLoopbackAuthority))
        throw Refusal(403, QStringLiteral("the Host header does not name a loopback address"));
    const QStringList origins = request.headerValues(QStringLiteral("Origin"));
    for (const QString &origin : origins) {
        if (!isLoopbackAuthority(QUrl(origin).authority()))
            throw Refusal(403, QStringLiteral("the Origin header names a foreign web page"));
    }
}

void printLine(const QString &line)
{
    if (line.isEmpty())
        return;
    QTextStream out(stdout);
    out.setCodec("UTF-8");
    out << line << '\n';
}

} // namespace

Emulator::Emulator(Store &store, const Seed &seed)
    : m_store(store)
    , m_seed(seed)
    , m_settings(store.database())
    , m_challenges(store.database())
    , m_captchas(m_challenges)
    , m_codes(store, m_challenges, m_captchas, m_settings)
    , m_accounts(store, m_captchas, m_codes)
    , m_registrations(store, m_codes)
    , m_countries(m_settings)
    , m_pages(m_settings)
    , m_api(QStringLiteral("/v1"))
    , m_developer(QStringLiteral("/_dev/"))
    , m_web(QStringLiteral("/web/"))
{
    addApiRoutes();
    addDeveloperRoutes();
    m_web.add("GET", "", [this](auto &r) { return m_pages.answer(r); });
    m_faults.setRequestNames(m_api.names());
}

void Emulator::addApiRoutes()
{
    const auto get = [this](const char *name, const char *path, auto function) {
        m_api.add("GET", path, function, name);
    };
    const auto post = [this](const char *name, const char *path, auto function) {
        m_api.add("POST", path, function, name);
    };
    get("status", "/status", [this](auto &) { return status(); });
    post("userLogin", "/user/login", [this](auto &r) { return m_accounts.logIn(r); });
    post("getPassInfo", "/user/info", [this](auto &r) { return m_accounts.profile(r); });
    get("captcha", "/captcha/", [this](auto &r) { return m_captchas.draw(r); });
    post("userInfoValid", "/user/code", [this](auto &r) { return m_codes.send(r); });
    post("userCodeLogin", "/user/code-login",
         [this](auto &r) { return m_accounts.logInByCode(r); });
    post("userExistCheck", "/user/exists",
         [this](auto &r) { return m_accounts.checkExistence(r); });
    post("rbpwd", "/user/reset-password", [this](auto &r) { return m_accounts.resetPassword(r); });
    post("registerUser", "/user/register",
         [this](auto &r) { return m_registrations.registerUser(r); });
    post("supplyInfo", "/user/supply", [this](auto &r) { return m_registrations.supplyInfo(r); });
    get("fetchCountries", "/countries", [this](auto &) { return m_countries.list(); });
    get("ipCountry", "/ip-country", [this](auto &) { return m_countries.current(); });
    get("getOEMPrivacyColorInfoByType", "/privacy/", [](auto &r) { return privacyPage(r); });
}

void Emulator::addDeveloperRoutes()
{
    const auto forgetRequests = [this](auto &) {
        m_log.clear();
        return okAnswer({});
    };
    const auto clearFaults = [this](auto &) {
        m_faults.clear();
        return okAnswer({});
    };
    m_developer.add("GET", "requests", [this](auto &) { return okAnswer(m_log.toJson()); });
    m_developer.add("DELETE", "requests", forgetRequests);
    m_developer.add("GET", "faults", [this](auto &) { return okAnswer(m_faults.toJson()); });
    m_developer.add("POST", "faults", [this](auto &r) { return addFault(r); });
    m_developer.add("DELETE", "faults", clearFaults);
    m_developer.add("GET", "captcha/", [this](auto &r) { return m_captchas.show(r); });
    m_developer.add("GET", "inbox", [this](auto &r) { return m_codes.inbox(r); });
    m_developer.add("GET", "settings", [this](auto &) { return okAnswer(m_settings.toJson()); });
    m_developer.add("POST", "settings", [this](auto &r) { return changeSettings(r); });
    m_developer.add("POST", "ip-country", [this](auto &r) { return m_countries.setCurrent(r); });
    m_developer.add("POST", "reset", [this](auto &) { return reset(); });
}

Answer Emulator::answer(const Request &request)
{
    try {
        requireLocalCaller(request);
        Transaction transaction(m_store.database());
        Answer answer = answerByPath(request);
        transaction.commit();
        printLine(answer.consoleLine);
        return answer;
    } catch (const Refusal &refusal) {
        return failAnswer(refusal.text(), refusal.httpStatus());
    } catch (const StoreError &error) {
        return failAnswer(QString::fromUtf8(error.what()), 500);
    }
}

Answer Emulator::answerByPath(const Request &request)
{
    for (const Router *router : {&m_developer, &m_web}) {
        if (router->isFor(request))
            return router->find(request).function(request);
    }
    return answerApi(request);
}

Answer Emulator::answerByRules(const Route &route, const Request &request)
{
    try {
        return route.function(request);
    } catch (const Denial &denial) {
        return failAnswer(denial.word());
    }
}

Answer Emulator::answerApi(const Request &request)
{
    RequestLog::Entry &entry = m_log.add(request);
    const Route &route = m_api.find(request);
    entry.name = route.name;
    const std::optional<Fault> fault = m_faults.take(route.name);
    Answer answer = fault && fault->answer ? *fault->answer : answerByRules(route, request);
    if (fault)
        answer.delivery = fault->delivery;
    return answer;
}

Answer Emulator::status() const
{
    return okAnswer(QJsonObject{
        {QStringLiteral("service"), QStringLiteral("passport-emulator")},
        {QStringLiteral("version"), QStringLiteral(PASSPORT_VERSION)},
        {QStringLiteral("time"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)}});
}

Answer Emulator::reset()
{
    m_store.reset(m_seed.accounts());
    m_faults.clear();
    m_log.clear();
    return okAnswer({});
}

Answer Emulator::addFault(const Request &request)
{
    m_faults.add(request.json());
    return okAnswer({});
}

Answer Emulator::changeSettings(const Request &request)
{
    m_settings.change(request.json());
    return okAnswer(m_settings.toJson());
}
