// SPDX-License-Identifier: MIT
#include "console/DeveloperApi.h"

#include "http/Fields.h"
#include "http/Refusal.h"

#include <errortable/ErrorTable.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <limits>

namespace {

const QString advanceKey = QStringLiteral("advanceSeconds");

// A form of a foreign page can send neither these methods with another type nor a header that says
// so, not without a question first that is not answered with a yes.
void requireJson(const Request &request)
{
    if (request.method != QLatin1String("POST") && request.method != QLatin1String("PATCH"))
        return;
    const QString type = request.headerValues(QStringLiteral("Content-Type")).value(0);
    if (type.section(QLatin1Char(';'), 0, 0)
            .trimmed()
            .compare(QLatin1String("application/json"), Qt::CaseInsensitive) != 0) {
        throw Refusal(415, QStringLiteral("the developer's calls take Content-Type:"
                                          " application/json, as curl --json sends it"));
    }
}

Answer openApi()
{
    QFile file(QStringLiteral(":/console/openapi.json"));
    file.open(QIODevice::ReadOnly);
    Answer answer;
    answer.body = file.readAll();
    return answer;
}

QJsonArray words()
{
    QJsonArray array;
    for (const ErrorEntry &entry : errorTable()) {
        if (entry.kind == ErrorEntry::Kind::Word) {
            array.append(QJsonObject{{QStringLiteral("word"), entry.name},
                                     {QStringLiteral("en"), entry.english},
                                     {QStringLiteral("zh"), entry.chinese}});
        }
    }
    return array;
}

} // namespace

DeveloperApi::DeveloperApi(Services &services, const Seed &seed, Faults &faults, RequestLog &log)
    : m_services(services)
    , m_seed(seed)
    , m_faults(faults)
    , m_log(log)
    , m_accounts(services)
    , m_router(QStringLiteral("/_dev/"))
{
    addAccountRoutes();
    addTrafficRoutes();
    addStateRoutes();
}

Answer DeveloperApi::answer(const Request &request)
{
    const Route &route = m_router.find(request);
    requireJson(request);
    return route.function(request);
}

void DeveloperApi::addAccountRoutes()
{
    m_router.add("GET", "accounts", [this](auto &) { return m_accounts.list(); });
    m_router.add("POST", "accounts", [this](auto &r) { return m_accounts.add(r); });
    m_router.add("GET", "accounts/", [this](auto &r) { return m_accounts.show(r); });
    m_router.add("PATCH", "accounts/", [this](auto &r) { return m_accounts.change(r); });
    m_router.add("DELETE", "accounts/", [this](auto &r) { return m_accounts.remove(r); });
    m_router.add("GET", "sessions", [this](auto &) { return m_accounts.listSessions(); });
    m_router.add("DELETE", "sessions", [this](auto &) { return m_accounts.endAllSessions(); });
    m_router.add("DELETE", "sessions/", [this](auto &r) { return m_accounts.endSession(r); });
}

void DeveloperApi::addTrafficRoutes()
{
    m_router.add("GET", "inbox", [this](auto &r) { return m_services.codes.inbox(r); });
    m_router.add("GET", "captchas", [this](auto &r) { return m_services.captchas.list(r); });
    m_router.add("GET", "captcha/", [this](auto &r) { return m_services.captchas.show(r); });
    m_router.add("GET", "requests", [this](auto &r) { return listRequests(r); });
    m_router.add("DELETE", "requests", [this](auto &) {
        m_log.clear();
        return okAnswer({});
    });
    m_router.add("GET", "faults", [this](auto &) { return okAnswer(m_faults.toJson()); });
    m_router.add("POST", "faults", [this](auto &r) { return okAnswer(m_faults.add(r.json())); });
    m_router.add("DELETE", "faults", [this](auto &) {
        m_faults.clear();
        return okAnswer({});
    });
    m_router.add("DELETE", "faults/", [this](auto &r) { return removeFault(r); });
}

void DeveloperApi::addStateRoutes()
{
    m_router.add("GET", "settings",
                 [this](auto &) { return okAnswer(m_services.settings.toJson()); });
    m_router.add("POST", "settings", [this](auto &r) { return changeSettings(r); });
    m_router.add("POST", "ip-country",
                 [this](auto &r) { return m_services.countries.setCurrent(r); });
    m_router.add("GET", "clock", [this](auto &) { return showClock(); });
    m_router.add("POST", "clock", [this](auto &r) { return advanceClock(r); });
    m_router.add("DELETE", "clock", [this](auto &) {
        m_services.clock.setBack();
        // Who was locked out in a future would be so until it comes.
        m_services.store.endLockOutsAfter(m_services.clock.now() +
                                          m_services.settings.lockOutSeconds() * 1000LL);
        return showClock();
    });
    m_router.add("GET", "export", [this](auto &) { return exportSeed(); });
    m_router.add("POST", "import", [this](auto &r) { return importSeed(r); });
    m_router.add("POST", "reset", [this](auto &) { return startAgain(m_seed.contents()); });
    m_router.add("GET", "catalogue", [this](auto &) { return catalogue(); });
    m_router.add("GET", "openapi.json", [](auto &) { return openApi(); });
}

Answer DeveloperApi::listRequests(const Request &request) const
{
    constexpr int most = std::numeric_limits<int>::max();
    const QString after = QStringLiteral("after");
    RequestLog::Selection selection;
    if (request.query.contains(after))
        selection.after = request.queryNumber(after, 0, 0, most);
    selection.before = request.queryNumber(QStringLiteral("before"), most, 1, most);
    selection.limit =
        request.queryNumber(QStringLiteral("limit"), selection.limit, 1, selection.maximum);
    selection.name = request.query.value(QStringLiteral("name"));
    selection.outcome = request.queryChoice(QStringLiteral("outcome"), RequestLog::outcomes());
    return okAnswer(m_log.toJson(selection));
}

Answer DeveloperApi::removeFault(const Request &request)
{
    if (!m_faults.remove(request.numberAtEnd()))
        throw Refusal(404, QStringLiteral("there is no such fault, or no longer"));
    return okAnswer({});
}

Answer DeveloperApi::changeSettings(const Request &request)
{
    m_services.settings.change(request.json());
    return okAnswer(m_services.settings.toJson());
}

Answer DeveloperApi::showClock() const
{
    return okAnswer(QJsonObject{{QStringLiteral("now"), Clock::text(m_services.clock.now())},
                                {QStringLiteral("aheadSeconds"), m_services.clock.aheadSeconds()}});
}

Answer DeveloperApi::advanceClock(const Request &request)
{
    const Fields body(request.json());
    body.allowOnly({advanceKey});
    m_services.clock.advance(body.number(advanceKey, 1, 366 * 24 * 60 * 60));
    return showClock();
}

Answer DeveloperApi::exportSeed() const
{
    return okAnswer(Seed::of({m_services.store.accounts(), m_services.settings.toJson()}));
}

Answer DeveloperApi::importSeed(const Request &request)
{
    try {
        return startAgain(Seed(request.json()).contents());
    } catch (const SeedError &error) {
        throw Refusal(400, QString::fromUtf8(error.what()));
    }
}

Answer DeveloperApi::startAgain(const Store::Contents &contents)
{
    m_services.store.reset(contents);
    m_faults.clear();
    m_log.clear();
    return okAnswer({});
}

Answer DeveloperApi::catalogue()
{
    QJsonArray countries;
    for (const QJsonObject &country : m_services.countries.countries()) {
        countries.append(
            QJsonObject{{QStringLiteral("code"), country.value(QStringLiteral("code"))},
                        {QStringLiteral("name"), country.value(QStringLiteral("name"))}});
    }
    return okAnswer(QJsonObject{
        {QStringLiteral("requests"), QJsonArray::fromStringList(m_faults.requestNames())},
        {QStringLiteral("words"), words()},
        {QStringLiteral("faultKinds"), Faults::kindsToJson()},
        {QStringLiteral("countries"), countries}});
}
