// SPDX-License-Identifier: MIT
#include "Emulator.h"

#include "http/Loopback.h"
#include "http/Refusal.h"
#include "services/Denial.h"
#include "services/PrivacyPage.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonObject>
#include <QtCore/QTextStream>

#include <utility>

namespace {

const QString webPath = QStringLiteral("/web/");
const QString consolePath = QStringLiteral("/console/");

bool isForPages(const Request &request)
{
    return request.path == QLatin1String("/") || request.path.startsWith(webPath) ||
           request.path.startsWith(consolePath);
}

QString lineOf(const RequestLog::Entry &entry)
{
    const QString outcome =
        entry.isRefused() ? entry.answer.word : QString::number(entry.answer.httpStatus);
    return QStringLiteral("%1 %2 %3 %4 ms")
        .arg(entry.time, entry.name.isEmpty() ? entry.request.path : entry.name, outcome)
        .arg(entry.durationMs);
}

// Paths and names come from the caller: a line feed or an escape sequence in them stays in the
// line.
void printLine(QString line)
{
    if (line.isEmpty())
        return;
    for (QChar &character : line) {
        if (character.category() == QChar::Other_Control)
            character = QChar::ReplacementCharacter;
    }
    QTextStream out(stdout);
    out.setCodec("UTF-8");
    out << line << '\n';
}

} // namespace

Emulator::Emulator(Store &store, const Seed &seed)
    : m_services(store)
    , m_webPages(QStringLiteral("web"), m_services.settings)
    , m_consolePages(QStringLiteral("console"), m_services.settings)
    , m_api(QStringLiteral("/v1"))
    , m_developer(m_services, seed, m_faults, m_log)
{
    addApiRoutes();
    m_faults.setRequestNames(m_api.names());
    Transaction transaction(store.database());
    m_services.sessions.removeExpired();
    transaction.commit();
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
    post("userLogin", "/user/login", [this](auto &r) { return m_services.accounts.logIn(r); });
    post("getPassInfo", "/user/info", [this](auto &r) { return m_services.accounts.profile(r); });
    get("captcha", "/captcha/", [this](auto &r) { return m_services.captchas.draw(r); });
    post("userInfoValid", "/user/code", [this](auto &r) { return m_services.codes.send(r); });
    post("userCodeLogin", "/user/code-login",
         [this](auto &r) { return m_services.accounts.logInByCode(r); });
    post("userExistCheck", "/user/exists",
         [this](auto &r) { return m_services.accounts.checkExistence(r); });
    post("rbpwd", "/user/reset-password",
         [this](auto &r) { return m_services.accounts.resetPassword(r); });
    post("registerUser", "/user/register",
         [this](auto &r) { return m_services.registrations.registerUser(r); });
    post("supplyInfo", "/user/supply",
         [this](auto &r) { return m_services.registrations.supplyInfo(r); });
    get("fetchCountries", "/countries", [this](auto &) { return m_services.countries.list(); });
    get("ipCountry", "/ip-country", [this](auto &) { return m_services.countries.current(); });
    get("getOEMPrivacyColorInfoByType", "/privacy/", [](auto &r) { return privacyPage(r); });
}

// What the developer sees is of this moment, and is taken for nothing but what it is said to be.
Answer Emulator::answer(const Request &request)
{
    const bool forPages = isForPages(request);
    Answer answer = answerByPath(request, forPages);
    if (forPages || m_developer.isFor(request)) {
        answer.headers += QVector<QPair<QByteArray, QByteArray>>{
            {"Cache-Control", "no-store"}, {"X-Content-Type-Options", "nosniff"}};
    }
    return answer;
}

Answer Emulator::answerByPath(const Request &request, bool forPages)
{
    try {
        requireLocalCaller(request, forPages);
    } catch (const Refusal &refusal) {
        return failAnswer(refusal.text(), refusal.httpStatus());
    }
    if (m_developer.isFor(request))
        return answerByTransaction([&] { return m_developer.answer(request); });
    if (forPages)
        return answerByTransaction([&] { return answerPage(request); });
    return answerApi(request);
}

Answer Emulator::answerByTransaction(const std::function<Answer()> &function)
{
    try {
        Transaction transaction(m_services.store.database());
        Answer answer = function();
        transaction.commit();
        printLine(answer.consoleLine);
        return answer;
    } catch (const Refusal &refusal) {
        return failAnswer(refusal.text(), refusal.httpStatus());
    } catch (const StoreError &error) {
        return failAnswer(QString::fromUtf8(error.what()), 500);
    }
}

Answer Emulator::answerPage(const Request &request) const
{
    if (request.answeredMethod() != QLatin1String("GET"))
        throw Refusal(405, QStringLiteral("pages answer GET, not %1").arg(request.method));
    if (request.path.startsWith(webPath))
        return m_webPages.answer(request);
    Request named = request;
    if (request.path == QLatin1String("/"))
        named.path = consolePath + QStringLiteral("index");
    return m_consolePages.answer(named);
}

Answer Emulator::answerApi(const Request &request)
{
    QElapsedTimer timer;
    timer.start();
    RequestLog::Entry entry;
    entry.request = request;
    entry.answer = answerByTransaction([&] {
        entry.time = Clock::text(m_services.clock.now());
        return answerOrFault(request, entry);
    });
    Answer answer = entry.answer;
    entry.durationMs = timer.elapsed() + answer.delivery.delay.count();
    if (m_verbose)
        printLine(lineOf(entry));
    m_log.add(std::move(entry));
    return answer;
}

Answer Emulator::answerOrFault(const Request &request, RequestLog::Entry &entry)
{
    const Route &route = m_api.find(request);
    entry.name = route.name;
    const std::optional<Fault> fault = m_faults.take(route.name);
    if (!fault)
        return answerByRules(route, request);
    entry.fault = fault->kind();
    Answer answer = fault->answer ? *fault->answer : answerByRules(route, request);
    answer.delivery = fault->delivery;
    return answer;
}

Answer Emulator::answerByRules(const Route &route, const Request &request)
{
    try {
        return route.function(request);
    } catch (const Denial &denial) {
        return failAnswer(denial.word());
    }
}

Answer Emulator::status() const
{
    return okAnswer(QJsonObject{{QStringLiteral("service"), QStringLiteral("passport-emulator")},
                                {QStringLiteral("version"), QStringLiteral(PASSPORT_VERSION)},
                                {QStringLiteral("time"), Clock::text(m_services.clock.now())}});
}
