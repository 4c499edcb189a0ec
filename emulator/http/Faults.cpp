#include "http/Faults.h"

#include "http/Fields.h"
#include "http/Refusal.h"

#include <QtCore/QMap>

#include <algorithm>
#include <limits>

namespace {

const QString any = QStringLiteral("*");

struct Kind
{
    QStringList fields; ///< its own, besides those that every fault has
    void (*read)(const Fields &fields, Fault &fault);
};

void readWord(const Fields &fields, Fault &fault)
{
    fault.answer = failAnswer(fields.text(QStringLiteral("word")));
}

void readHttpStatus(const Fields &fields, Fault &fault)
{
    const int httpStatus = fields.number(QStringLiteral("code"), 400, 599);
    fault.answer = failAnswer(QStringLiteral("HTTP %1, as asked for").arg(httpStatus), httpStatus);
    if (fields.has(QStringLiteral("body")))
        fault.answer->body = fields.text(QStringLiteral("body")).toUtf8();
}

void readDelay(const Fields &fields, Fault &fault)
{
    constexpr int oneDay = 24 * 60 * 60 * 1000;
    fault.delivery.delay =
        std::chrono::milliseconds(fields.number(QStringLiteral("ms"), 0, oneDay));
}

void readDrop(const Fields &, Fault &fault)
{
    fault.delivery.manner = Delivery::Manner::Drop;
}

void readHalfBody(const Fields &, Fault &fault)
{
    fault.delivery.manner = Delivery::Manner::HalfBody;
}

void readDrip(const Fields &fields, Fault &fault)
{
    fault.delivery.manner = Delivery::Manner::Drip;
    fault.delivery.bytesPerSecond = fields.number(QStringLiteral("bytesPerSecond"), 1, 1000000);
}

void readMalformed(const Fields &, Fault &fault)
{
    fault.answer = Answer();
    fault.answer->body = QByteArrayLiteral("{\"status\":\"ok\",\"result\":");
}

void readNotObject(const Fields &, Fault &fault)
{
    fault.answer = Answer();
    fault.answer->body = QByteArrayLiteral("[\"ok\"]");
}

void readRedirect(const Fields &fields, Fault &fault)
{
    const QString statusField = QStringLiteral("code");
    const QByteArray location = fields.text(QStringLiteral("location")).toUtf8();
    const bool oneLine = std::all_of(location.begin(), location.end(),
                                     [](char c) { return static_cast<unsigned char>(c) >= ' '; });
    if (!oneLine)
        throw Refusal(400, QStringLiteral("field \"location\" must not hold control characters"));
    fault.answer = failAnswer(QStringLiteral("the answer is elsewhere"));
    const int httpStatus = fields.has(statusField) ? fields.number(statusField, 301, 308) : 302;
    if (httpStatus > 303 && httpStatus < 307)
        throw Refusal(400, QStringLiteral("field \"code\" must be 301, 302, 303, 307 or 308"));
    fault.answer->httpStatus = httpStatus;
    fault.answer->headers.append({QByteArrayLiteral("Location"), location});
}

const QMap<QString, Kind> &kinds()
{
    static const QMap<QString, Kind> table = {
        {QStringLiteral("word"), {{QStringLiteral("word")}, readWord}},
        {QStringLiteral("httpStatus"),
         {{QStringLiteral("code"), QStringLiteral("body")}, readHttpStatus}},
        {QStringLiteral("delay"), {{QStringLiteral("ms")}, readDelay}},
        {QStringLiteral("drop"), {{}, readDrop}},
        {QStringLiteral("halfBody"), {{}, readHalfBody}},
        {QStringLiteral("drip"), {{QStringLiteral("bytesPerSecond")}, readDrip}},
        {QStringLiteral("malformed"), {{}, readMalformed}},
        {QStringLiteral("notObject"), {{}, readNotObject}},
        {QStringLiteral("redirect"),
         {{QStringLiteral("location"), QStringLiteral("code")}, readRedirect}},
    };
    return table;
}

[[noreturn]] void refuseUnknown(const QString &what, const QString &value, const QStringList &known)
{
    throw Refusal(400, QStringLiteral("%1 \"%2\" is not known; known are %3")
                           .arg(what, value, known.join(QStringLiteral(", "))));
}

} // namespace

void Faults::add(const QJsonObject &description)
{
    const QString times = QStringLiteral("times");
    const Fields fields(description);
    Fault fault;
    fault.description = description;
    fault.request = fields.text(QStringLiteral("request"));
    if (fault.request != any && !m_requestNames.contains(fault.request))
        refuseUnknown(QStringLiteral("request"), fault.request, m_requestNames + QStringList{any});
    const QString kindName = fields.text(QStringLiteral("kind"));
    const auto kind = kinds().find(kindName);
    if (kind == kinds().end())
        refuseUnknown(QStringLiteral("kind"), kindName, kinds().keys());
    fields.allowOnly(kind->fields +
                     QStringList{QStringLiteral("request"), QStringLiteral("kind"), times});
    if (fields.has(times))
        fault.timesLeft = fields.number(times, 1, std::numeric_limits<int>::max());
    kind->read(fields, fault);
    m_faults.push_back(fault);
}

std::optional<Fault> Faults::take(const QString &requestName)
{
    const auto found = std::find_if(m_faults.begin(), m_faults.end(), [&](const Fault &fault) {
        return fault.request == any || fault.request == requestName;
    });
    if (found == m_faults.end())
        return std::nullopt;
    Fault fault = *found;
    if (found->timesLeft > 0 && --found->timesLeft == 0)
        m_faults.erase(found);
    return fault;
}

QJsonArray Faults::toJson() const
{
    QJsonArray array;
    for (const Fault &fault : m_faults) {
        QJsonObject object = fault.description;
        if (fault.timesLeft > 0)
            object.insert(QStringLiteral("times"), fault.timesLeft);
        array.append(object);
    }
    return array;
}
