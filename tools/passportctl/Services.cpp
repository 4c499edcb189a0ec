// SPDX-License-Identifier: MIT
#include "Command.h"

#include <QtCore/QJsonArray>

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

QString joined(const QVariant &array)
{
    const QVariant texts = array.toJsonArray().toVariantList();
    return texts.toStringList().join(QStringLiteral(", "));
}

class Countries : public Command
{
public:
    void declare(CLI::App &app) override
    {
        addText(app, "filter", m_filter, "Part of a name, code or calling code");
    }
    Exit run(Host &host) override;

private:
    QString m_filter;
};

Exit Countries::run(Host &host)
{
    if (const auto end = host.prepare())
        return *end;
    QVariantList countries;
    const PassportCommunityError record = host.passport().reqCountries(countries);
    if (record.isError())
        return host.output().failure(QStringLiteral("countries"), record);

    Output::Rows rows;
    QJsonArray found;
    for (const QVariant &country : qAsConst(countries)) {
        const QString name = field(country, "name");
        const QString code = field(country, "code");
        const QString calling = callingCode(country);
        if (!QStringList({name, code, calling}).filter(m_filter, Qt::CaseInsensitive).isEmpty()) {
            rows.append({name, QStringLiteral("%1  %2").arg(code, -2).arg(calling)});
            found.append(QJsonValue::fromVariant(country));
        }
    }
    return host.output().success(
        QStringLiteral("%1 of %2 countries").arg(rows.size()).arg(countries.size()), rows,
        {{QStringLiteral("countries"), found}});
}

class Country : public Command
{
public:
    void declare(CLI::App &) override {}
    Exit run(Host &host) override;
};

Exit Country::run(Host &host)
{
    if (const auto end = host.prepare())
        return *end;
    QString name;
    QVariantMap country;
    const PassportCommunityError record = host.passport().reqCurrentCountry(name, country);
    if (record.isError())
        return host.output().failure(QStringLiteral("country"), record);
    return host.output().success(
        name,
        {{QStringLiteral("calling code"), callingCode(country)},
         {QStringLiteral("languages"), joined(country.value(QStringLiteral("languages")))},
         {QStringLiteral("time zones"), joined(country.value(QStringLiteral("timezones")))}},
        {{QStringLiteral("name"), name},
         {QStringLiteral("country"), QJsonObject::fromVariantMap(country)}});
}

/// The library leaves a copy of the policy in the passport directory.
class Privacy : public Command
{
public:
    void declare(CLI::App &app) override
    {
        addText(app, "--language", m_language, "Such as en-us or zh-cn");
        addText(app, "--oem", m_oem, "Whose policy");
    }
    Exit run(Host &host) override;

private:
    QString m_language = QStringLiteral("en-us");
    QString m_oem = QStringLiteral("velqor");
};

Exit Privacy::run(Host &host)
{
    if (const auto end = host.prepare(PassportDir::Needed))
        return *end;
    // A null text tells "not fetched": the operation has no other result.
    QString privacy;
    host.passport().reqGetPrivacy(privacy, m_language, host.passportDir(), false, m_oem, QString(),
                                  QString());
    if (!privacy.isNull())
        return host.output().success(privacy.trimmed(), {}, {{QStringLiteral("privacy"), privacy}});
    QVariant ignored;
    const PassportCommunityError record = host.requestStatus(ignored);
    if (record.isError())
        return host.output().failure(QStringLiteral("privacy policy"), record);
    return host.output().failure(Exit::Refused,
                                 QStringLiteral("the service has no privacy policy for this"));
}

class Reachability : public Command
{
public:
    void declare(CLI::App &) override {}
    Exit run(Host &host) override;
};

Exit Reachability::run(Host &host)
{
    if (const auto end = host.prepare(PassportDir::Needed))
        return *end;
    const bool net = host.passport().hasNet();
    const bool service = host.passport().hasVelqorNet();
    const QJsonObject data{{QStringLiteral("network"), net}, {QStringLiteral("service"), service}};
    const auto word = [](bool yes) { return yes ? QStringLiteral("yes") : QStringLiteral("no"); };
    if (!net || !service)
        return host.output().failure(
            Exit::Unreachable,
            QStringLiteral("network %1, account service %2").arg(word(net), word(service)), data);
    return host.output().success(QStringLiteral("Network and account service can be reached"), {},
                                 data);
}

} // namespace

void addServiceCommands(Commands commands)
{
    commands.add<Countries>("countries", "List countries with their calling codes",
                            "countries +49");
    commands.add<Country>("country", "Show the country of this machine's address", "country");
    commands.add<Privacy>("privacy", "Print the privacy policy",
                          "privacy --passport-dir passport-dir --language zh-cn");
    commands.add<Reachability>("net", "Ask whether network and service can be reached",
                               "net --passport-dir passport-dir");
}
