// SPDX-License-Identifier: MIT
#include "http/Faults.h"

#include "http/Fields.h"
#include "http/Refusal.h"

#include <QtCore/QMap>

#include <algorithm>
#include <limits>

namespace {

const QString any = QStringLiteral("*");

struct Parameter
{
    enum class Type { Text, Number };

    QString name;
    Type type;
    bool optional = false;
    int minimum = 0; ///< of a number
    int maximum = 0;
};

struct Kind
{
    QVector<Parameter> parameters; ///< besides what every fault has
    void (*apply)(const QJsonObject &values, Fault &fault);
};

QString textIn(const QJsonObject &values, const char *name)
{
    return values.value(QLatin1String(name)).toString();
}

int numberIn(const QJsonObject &values, const char *name, int fallback = 0)
{
    return values.value(QLatin1String(name)).toInt(fallback);
}

void applyWord(const QJsonObject &values, Fault &fault)
{
    fault.answer = failAnswer(textIn(values, "word"));
}

void applyHttpStatus(const QJsonObject &values, Fault &fault)
{
    const int httpStatus = numberIn(values, "code");
    fault.answer = failAnswer(QStringLiteral("HTTP %1, as asked for").arg(httpStatus), httpStatus);
    if (values.contains(QStringLiteral("body"))) {
        fault.answer->body = textIn(values, "body").toUtf8();
        fault.answer->word.clear();
    }
}

void applyDelay(const QJsonObject &values, Fault &fault)
{
    fault.delivery.delay = std::chrono::milliseconds(numberIn(values, "ms"));
}

void applyDrop(const QJsonObject &, Fault &fault)
{
    fault.delivery.manner = Delivery::Manner::Drop;
}

void applyHalfBody(const QJsonObject &, Fault &fault)
{
    fault.delivery.manner = Delivery::Manner::HalfBody;
}

void applyDrip(const QJsonObject &values, Fault &fault)
{
    fault.delivery.manner = Delivery::Manner::Drip;
    fault.delivery.bytesPerSecond = numberIn(values, "bytesPerSecond");
}

void applyMalformed(const QJsonObject &, Fault &fault)
{
    fault.answer = Answer();
    fault.answer->body = QByteArrayLiteral("{\"status\":\"ok\",\"result\":");
}

void applyNotObject(const QJsonObject &, Fault &fault)
{
    fault.answer = Answer();
    fault.answer->body = QByteArrayLiteral("[\"ok\"]");
}

void applyRedirect(const QJsonObject &values, Fault &fault)
{
    const QByteArray location = textIn(values, "location").toUtf8();
    const bool oneLine = std::all_of(location.begin(), location.end(),
                                     [](char c) { return static_cast<unsigned char>(c) >= ' '; });
    if (!oneLine)
        throw Refusal(400, QStringLiteral("field \"location\" must not hold control characters"));
    const int httpStatus = numberIn(values, "code", 302);
    if (httpStatus > 303 && httpStatus < 307)
        throw Refusal(400, QStringLiteral("field \"code\" must be 301, 302, 303, 307 or 308"));
    fault.answer = failAnswer(QStringLiteral("the answer is elsewhere"), httpStatus);
    fault.answer->headers.append({QByteArrayLiteral("Location"), location});
}

const QMap<QString, Kind> &kinds()
{
    constexpr auto text = Parameter::Type::Text;
    constexpr auto number = Parameter::Type::Number;
    constexpr int oneDayMs = 24 * 60 * 60 * 1000;
    static const QMap<QString, Kind> table = {
        {QStringLiteral("word"), {{{QStringLiteral("word"), text}}, applyWord}},
        {QStringLiteral("httpStatus"),
         {{{QStringLiteral("code"), number, false, 400, 599}, {QStringLiteral("body"), text, true}},
          applyHttpStatus}},
        {QStringLiteral("delay"),
         {{{QStringLiteral("ms"), number, false, 0, oneDayMs}}, applyDelay}},
        {QStringLiteral("drop"), {{}, applyDrop}},
        {QStringLiteral("halfBody"), {{}, applyHalfBody}},
        {QStringLiteral("drip"),
         {{{QStringLiteral("bytesPerSecond"), number, false, 1, 1000000}}, applyDrip}},
        {QStringLiteral("malformed"), {{}, applyMalformed}},
        {QStringLiteral("notObject"), {{}, applyNotObject}},
        {QStringLiteral("redirect"),
         {{{QStringLiteral("location"), text}, {QStringLiteral("code"), number, true, 301, 308}},
          applyRedirect}},
    };
    return table;
}

void check(const QVector<Parameter> &parameters, const Fields &fields)
{
    QStringList known = {QStringLiteral("request"), QStringLiteral("kind"),
                         QStringLiteral("times")};
    for (const Parameter &parameter : parameters)
        known.append(parameter.name);
    fields.allowOnly(known);
    for (const Parameter &parameter : parameters) {
        if (parameter.optional && !fields.has(parameter.name))
            continue;
        if (parameter.type == Parameter::Type::Number)
            fields.number(parameter.name, parameter.minimum, parameter.maximum);
        else
            fields.text(parameter.name);
    }
}

[[noreturn]] void refuseUnknown(const QString &what, const QString &value, const QStringList &known)
{
    throw Refusal(400, QStringLiteral("%1 \"%2\" is not known; known are %3")
                           .arg(what, value, known.join(QStringLiteral(", "))));
}

QJsonObject faultObject(const Fault &fault)
{
    QJsonObject object = fault.description;
    object.insert(QStringLiteral("id"), fault.id);
    if (fault.timesLeft > 0)
        object.insert(QStringLiteral("times"), fault.timesLeft);
    return object;
}

QJsonObject parameterObject(const Parameter &parameter)
{
    const bool isNumber = parameter.type == Parameter::Type::Number;
    QJsonObject object{
        {QStringLiteral("name"), parameter.name},
        {QStringLiteral("type"), isNumber ? QStringLiteral("number") : QStringLiteral("text")},
        {QStringLiteral("optional"), parameter.optional}};
    if (isNumber) {
        object.insert(QStringLiteral("minimum"), parameter.minimum);
        object.insert(QStringLiteral("maximum"), parameter.maximum);
    }
    return object;
}

} // namespace

QJsonObject Faults::add(const QJsonObject &description)
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
    check(kind->parameters, fields);
    if (fields.has(times))
        fault.timesLeft = fields.number(times, 1, std::numeric_limits<int>::max());
    kind->apply(description, fault);
    fault.id = ++m_lastId;
    m_faults.push_back(fault);
    return faultObject(fault);
}

bool Faults::remove(qint64 id)
{
    const auto found = std::find_if(m_faults.begin(), m_faults.end(),
                                    [id](const Fault &fault) { return fault.id == id; });
    if (found == m_faults.end())
        return false;
    m_faults.erase(found);
    return true;
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
    for (const Fault &fault : m_faults)
        array.append(faultObject(fault));
    return array;
}

QJsonArray Faults::kindsToJson()
{
    QJsonArray array;
    for (auto kind = kinds().begin(); kind != kinds().end(); ++kind) {
        QJsonArray fields;
        for (const Parameter &parameter : kind->parameters)
            fields.append(parameterObject(parameter));
        array.append(
            QJsonObject{{QStringLiteral("kind"), kind.key()}, {QStringLiteral("fields"), fields}});
    }
    return array;
}
