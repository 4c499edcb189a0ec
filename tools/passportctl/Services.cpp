#include "Services.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace VelqorPassPort;

namespace {

QString field(const QVariant &country, const char *name)
{
    return country.toMap().value(QLatin1String(name)).toString();
}

QString callingCode(const QVariant &country)
{
    const QString code = field(country, "phoneArea");
    return code.isEmpty() ? code : QLatin1Char('+') + code;
}

bool failed(const PassportCommunityError &record)
{
    return record.errorCode != CommunityErrorCode::NoError;
}

QString joined(const QVariant &array)
{
    QStringList texts;
    const QJsonArray values = array.toJsonArray();
    for (const QJsonValue &value : values)
        texts.append(value.toString());
    return texts.join(QStringLiteral(", "));
}

} // namespace

Exit listCountries(Host &host, const QString &filter)
{
    if (const auto end = host.prepare(false))
        return *end;
    QVariantList countries;
    const PassportCommunityError record = host.passport().reqCountries(countries);
    if (failed(record))
        return host.output().failure(QStringLiteral("countries"), record);

    Output::Rows rows;
    QJsonArray found;
    for (const QVariant &country : qAsConst(countries)) {
        const QString name = field(country, "name");
        const QString code = field(country, "code");
        const QString calling = callingCode(country);
        const auto fits = [&](const QString &text) {
            return text.contains(filter, Qt::CaseInsensitive);
        };
        if (!fits(name) && !fits(code) && !fits(calling))
            continue;
        rows.append({name, QStringLiteral("%1  %2").arg(code, -2).arg(calling)});
        found.append(QJsonValue::fromVariant(country));
    }
    return host.output().success(
        QStringLiteral("%1 of %2 countries").arg(rows.size()).arg(countries.size()), rows,
        {{QStringLiteral("countries"), found}});
}

Exit showCountry(Host &host)
{
    if (const auto end = host.prepare(false))
        return *end;
    QString name;
    QVariantMap country;
    const PassportCommunityError record = host.passport().reqCurrentCountry(name, country);
    if (failed(record))
        return host.output().failure(QStringLiteral("country"), record);
    return host.output().success(
        name,
        {{QStringLiteral("calling code"), callingCode(country)},
         {QStringLiteral("languages"), joined(country.value(QStringLiteral("languages")))},
         {QStringLiteral("time zones"), joined(country.value(QStringLiteral("timezones")))}},
        {{QStringLiteral("name"), name},
         {QStringLiteral("country"), QJsonObject::fromVariantMap(country)}});
}

Exit showPrivacy(Host &host, const QString &language, const QString &oem,
                 const QString &passportDir)
{
    if (const auto end = host.prepare(true))
        return *end;
    // A null text tells "not fetched": the operation has no other result.
    QString privacy;
    host.passport().reqGetPrivacy(privacy, language, passportDir, false, oem, QString(), QString());
    if (privacy.isNull()) {
        PassportCommunityError record;
        QVariant ignored;
        record = host.requestStatus(ignored);
        if (failed(record))
            return host.output().failure(QStringLiteral("privacy policy"), record);
        return host.output().failure(Exit::Refused,
                                     QStringLiteral("the service has no privacy policy for this"));
    }
    return host.output().success(privacy.trimmed(), {}, {{QStringLiteral("privacy"), privacy}});
}

Exit showReachability(Host &host)
{
    if (const auto end = host.prepare(true))
        return *end;
    const bool net = host.passport().hasNet();
    const bool service = host.passport().hasVelqorNet();
    const auto word = [](bool yes) { return yes ? QStringLiteral("yes") : QStringLiteral("no"); };
    if (!net || !service)
        return host.output().failure(
            Exit::Unreachable,
            QStringLiteral("network %1, account service %2").arg(word(net), word(service)));
    return host.output().success(
        QStringLiteral("Network and account service can be reached"), {},
        {{QStringLiteral("network"), net}, {QStringLiteral("service"), service}});
}

Exit showInbox(Host &host, bool wait)
{
    if (const auto end = host.prepare(false))
        return *end;
    QJsonValue answer = host.askEmulator(QStringLiteral("inbox"));
    const int last = answer.toArray().last().toObject().value(QStringLiteral("id")).toInt();
    // In slices shorter than a request's deadline.
    constexpr int sliceMs = 20000;
    while (wait && answer.isArray()) {
        answer = host.askEmulator(QStringLiteral("inbox?after=%1&wait=%2").arg(last).arg(sliceMs));
        wait = answer.toArray().isEmpty();
    }
    if (!answer.isArray())
        return host.output().failure(
            Exit::Unreachable,
            QStringLiteral("no passport-emulator answers at %1").arg(host.address()));
    Output::Rows rows;
    const QJsonArray messages = answer.toArray();
    for (const QJsonValue &value : messages) {
        const QJsonObject message = value.toObject();
        const auto text = [&](const char *name) {
            return message.value(QLatin1String(name)).toString();
        };
        rows.append(
            {text("time"),
             QStringLiteral("%1  %2  %3").arg(text("code"), text("purpose"), text("username"))});
    }
    return host.output().success(QStringLiteral("%1 codes").arg(rows.size()), rows,
                                 {{QStringLiteral("inbox"), messages}});
}

Exit addFault(Host &host, const QString &fault)
{
    const QJsonObject object = QJsonDocument::fromJson(fault.toUtf8()).object();
    if (object.isEmpty())
        return host.output().failure(Exit::Usage, QStringLiteral("a fault is a JSON object"));
    if (const auto end = host.prepare(false))
        return *end;
    const QJsonValue answer = host.askEmulator(QStringLiteral("faults"), object.toVariantMap());
    if (answer.isUndefined())
        return host.output().failure(
            Exit::Refused,
            QStringLiteral("no passport-emulator took it: see the faults in its manual"));
    return host.output().success(QStringLiteral("In force"), {},
                                 {{QStringLiteral("fault"), object}});
}
