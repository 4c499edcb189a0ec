#include "Emulator.h"

#include "Loopback.h"
#include "PrivacyPage.h"

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QStringList>
#include <QtCore/QTextStream>
#include <QtCore/QUrl>

#include <algorithm>

namespace {

const QString get = QStringLiteral("GET");
const QString post = QStringLiteral("POST");
const QString del = QStringLiteral("DELETE");

// A web page in the developer's browser can send requests here, and by a name that it lets resolve
// to the loopback address it could even read the answers. Browsers give such pages away in these
// headers.
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

bool matches(const QString &routePath, const QString &path)
{
    return routePath.endsWith(QLatin1Char('/')) ? path.startsWith(routePath) : path == routePath;
}

// The route of a request; throws the refusal if there is none.
template <typename Routes>
const typename Routes::value_type &findRoute(const Routes &routes, const Request &request)
{
    QStringList methods;
    for (const auto &route : routes) {
        if (matches(route.path, request.path)) {
            if (route.method == request.method)
                return route;
            methods.append(route.method);
        }
    }
    if (methods.isEmpty())
        throw Refusal(404, QStringLiteral("there is nothing at %1").arg(request.path));
    throw Refusal(405, QStringLiteral("%1 answers %2, not %3")
                           .arg(request.path, methods.join(QStringLiteral(", ")), request.method));
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
    , m_apiRoutes(apiRoutes())
    , m_developerRoutes(developerRoutes())
    , m_webRoutes(webRoutes())
{
    QStringList names;
    for (const Route &route : m_apiRoutes)
        names.append(route.name);
    m_faults.setRequestNames(names);
}

std::vector<Emulator::Route> Emulator::apiRoutes()
{
    const auto route = [](const char *name, const QString &method, const char *path,
                          auto function) {
        return Route{QString::fromLatin1(name), method, QLatin1String("/v1") + QLatin1String(path),
                     std::move(function)};
    };
    return {
        route("status", get, "/status", [this](auto &) { return status(); }),
        route("userLogin", post, "/user/login", [this](auto &r) { return m_accounts.logIn(r); }),
        route("getPassInfo", post, "/user/info", [this](auto &r) { return m_accounts.profile(r); }),
        route("captcha", get, "/captcha/", [this](auto &r) { return m_captchas.draw(r); }),
        route("userInfoValid", post, "/user/code", [this](auto &r) { return m_codes.send(r); }),
        route("userCodeLogin", post, "/user/code-login",
              [this](auto &r) { return m_accounts.logInByCode(r); }),
        route("userExistCheck", post, "/user/exists",
              [this](auto &r) { return m_accounts.checkExistence(r); }),
        route("rbpwd", post, "/user/reset-password",
              [this](auto &r) { return m_accounts.resetPassword(r); }),
        route("registerUser", post, "/user/register",
              [this](auto &r) { return m_registrations.registerUser(r); }),
        route("supplyInfo", post, "/user/supply",
              [this](auto &r) { return m_registrations.supplyInfo(r); }),
        route("fetchCountries", get, "/countries", [this](auto &) { return m_countries.list(); }),
        route("ipCountry", get, "/ip-country", [this](auto &) { return m_countries.current(); }),
        route("getOEMPrivacyColorInfoByType", get, "/privacy/",
              [](auto &r) { return privacyPage(r); }),
    };
}

std::vector<Emulator::Route> Emulator::developerRoutes()
{
    const auto route = [](const QString &method, const char *path, auto function) {
        return Route{{}, method, QLatin1String("/_dev") + QLatin1String(path), std::move(function)};
    };
    const auto forget = [this](auto &) {
        m_log.clear();
        return okAnswer({});
    };
    const auto clearFaults = [this](auto &) {
        m_faults.clear();
        return okAnswer({});
    };
    return {
        route(get, "/requests", [this](auto &) { return okAnswer(m_log.toJson()); }),
        route(del, "/requests", forget),
        route(get, "/faults", [this](auto &) { return okAnswer(m_faults.toJson()); }),
        route(post, "/faults", [this](auto &r) { return addFault(r); }),
        route(del, "/faults", clearFaults),
        route(get, "/captcha/", [this](auto &r) { return m_captchas.show(r); }),
        route(get, "/inbox", [this](auto &r) { return m_codes.inbox(r); }),
        route(get, "/settings", [this](auto &) { return okAnswer(m_settings.toJson()); }),
        route(post, "/settings", [this](auto &r) { return changeSettings(r); }),
        route(post, "/ip-country", [this](auto &r) { return m_countries.setCurrent(r); }),
        route(post, "/reset", [this](auto &) { return reset(); }),
    };
}

std::vector<Emulator::Route> Emulator::webRoutes()
{
    return {Route{{}, get, QStringLiteral("/web/"), [this](auto &r) { return m_pages.answer(r); }}};
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
        return failAnswer(refusal.text(), refusal.code());
    } catch (const StoreError &error) {
        return failAnswer(QString::fromUtf8(error.what()), 500);
    }
}

Answer Emulator::answerByPath(const Request &request)
{
    if (request.path.startsWith(QLatin1String("/_dev/")))
        return findRoute(m_developerRoutes, request).function(request);
    if (request.path.startsWith(QLatin1String("/web/")))
        return findRoute(m_webRoutes, request).function(request);
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
    const Route &route = findRoute(m_apiRoutes, request);
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
