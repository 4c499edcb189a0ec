#include "storage/Settings.h"

#include "http/Fields.h"

namespace {

const QString lifetime = QStringLiteral("codeLifetimeSeconds");
const QString interval = QStringLiteral("codeIntervalSeconds");
const QString countryKey = QStringLiteral("country");
constexpr int oneDay = 24 * 60 * 60;

} // namespace

QStringList Settings::schema()
{
    return {QStringLiteral("CREATE TABLE setting (name TEXT PRIMARY KEY, value TEXT NOT NULL)")};
}

int Settings::codeLifetimeSeconds() const
{
    return value(lifetime, QStringLiteral("300")).toInt();
}

int Settings::codeIntervalSeconds() const
{
    return value(interval, QStringLiteral("60")).toInt();
}

QString Settings::countryCode() const
{
    return value(countryKey, QStringLiteral("CN"));
}

QJsonObject Settings::toJson() const
{
    return {{lifetime, codeLifetimeSeconds()}, {interval, codeIntervalSeconds()}};
}

void Settings::change(const QJsonObject &object)
{
    const QStringList names = {lifetime, interval};
    const Fields fields(object);
    fields.allowOnly(names);
    for (const QString &name : names) {
        if (fields.has(name))
            setValue(name, QString::number(fields.number(name, 0, oneDay)));
    }
}

void Settings::setCountry(const QString &countryCode)
{
    setValue(countryKey, countryCode);
}

QString Settings::value(const QString &name, const QString &fallback) const
{
    QSqlQuery query =
        m_database.run(QStringLiteral("SELECT value FROM setting WHERE name = ?"), {name});
    return query.next() ? textOf(query, "value") : fallback;
}

void Settings::setValue(const QString &name, const QString &value)
{
    m_database.run(QStringLiteral("INSERT OR REPLACE INTO setting (name, value) VALUES (?,?)"),
                   {name, value});
}
