// SPDX-License-Identifier: MIT
#include "storage/Settings.h"

#include "http/Fields.h"
#include "http/Refusal.h"

#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QRegularExpression>

namespace {

const QString codeLifetime = QStringLiteral("codeLifetimeSeconds");
const QString codeInterval = QStringLiteral("codeIntervalSeconds");
const QString captchaLifetime = QStringLiteral("captchaLifetimeSeconds");
const QString sessionLifetime = QStringLiteral("sessionLifetimeSeconds");
const QString tries = QStringLiteral("lockOutTries");
const QString lockOut = QStringLiteral("lockOutSeconds");
const QString country = QStringLiteral("country");
const QString code = QStringLiteral("fixedCode");
const QString captcha = QStringLiteral("fixedCaptcha");
const QString clockAhead = QStringLiteral("clockAheadSeconds");

constexpr int oneDay = 24 * 60 * 60;

struct Number
{
    int minimum;
    int maximum;
    int atFirst;
};

const QMap<QString, Number> &numbers()
{
    static const QMap<QString, Number> table = {{codeLifetime, {0, oneDay, 300}},
                                                {codeInterval, {0, oneDay, 60}},
                                                {captchaLifetime, {-1, oneDay, -1}},
                                                {sessionLifetime, {0, 366 * oneDay, 0}},
                                                {tries, {0, 1000, 0}},
                                                {lockOut, {1, oneDay, 300}}};
    return table;
}

struct Text
{
    bool (*isGood)(const QString &text);
    QString form; ///< of good ones
    QString atFirst;
};

bool matches(const QString &text, const QString &pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

// The file has one territory in each line, its two letters first.
bool isCountry(const QString &text)
{
    QFile file(QStringLiteral(":/services/calling-codes.tsv"));
    file.open(QIODevice::ReadOnly);
    return matches(text, QStringLiteral("[A-Z]{2}")) &&
           file.readAll().contains('\n' + text.toLatin1() + '\t');
}

const QMap<QString, Text> &texts()
{
    static const QMap<QString, Text> table = {
        {country,
         {isCountry, QStringLiteral("the code of a country, two capital letters like DE"),
          QStringLiteral("CN")}},
        {code,
         {[](const QString &text) { return matches(text, QStringLiteral("([0-9]{6})?")); },
          QStringLiteral("6 digits or empty"),
          {}}},
        {captcha,
         {[](const QString &text) { return matches(text, QStringLiteral("[A-Za-z0-9]{0,8}")); },
          QStringLiteral("1 to 8 letters and digits or empty"),
          {}}}};
    return table;
}

} // namespace

QStringList Settings::schema()
{
    return {QStringLiteral("CREATE TABLE setting (name TEXT PRIMARY KEY, value TEXT NOT NULL)")};
}

int Settings::codeLifetimeSeconds() const
{
    return number(codeLifetime);
}

int Settings::codeIntervalSeconds() const
{
    return number(codeInterval);
}

int Settings::captchaLifetimeSeconds() const
{
    return number(captchaLifetime);
}

int Settings::sessionLifetimeSeconds() const
{
    return number(sessionLifetime);
}

int Settings::lockOutTries() const
{
    return number(tries);
}

int Settings::lockOutSeconds() const
{
    return number(lockOut);
}

QString Settings::countryCode() const
{
    return value(country);
}

QString Settings::fixedCode() const
{
    return value(code);
}

QString Settings::fixedCaptcha() const
{
    return value(captcha);
}

QJsonObject Settings::toJson() const
{
    QJsonObject object;
    for (auto it = numbers().begin(); it != numbers().end(); ++it)
        object.insert(it.key(), number(it.key()));
    for (auto it = texts().begin(); it != texts().end(); ++it)
        object.insert(it.key(), value(it.key()));
    return object;
}

void Settings::check(const QJsonObject &object)
{
    const Fields fields(object);
    fields.allowOnly(numbers().keys() + texts().keys());
    for (auto it = numbers().begin(); it != numbers().end(); ++it) {
        if (fields.has(it.key()))
            fields.number(it.key(), it->minimum, it->maximum);
    }
    for (auto it = texts().begin(); it != texts().end(); ++it) {
        if (fields.has(it.key()) && !it->isGood(fields.text(it.key())))
            throw Refusal(400, QStringLiteral("field \"%1\" must be %2").arg(it.key(), it->form));
    }
}

void Settings::change(const QJsonObject &object)
{
    check(object);
    for (auto it = object.begin(); it != object.end(); ++it)
        setValue(it.key(), it->isString() ? it->toString() : QString::number(it->toInt()));
}

qint64 Settings::clockAheadSeconds() const
{
    return value(clockAhead).toLongLong();
}

void Settings::setClockAhead(qint64 seconds)
{
    setValue(clockAhead, QString::number(seconds));
}

int Settings::number(const QString &name) const
{
    const QString text = value(name);
    return text.isEmpty() ? numbers().value(name).atFirst : text.toInt();
}

QString Settings::value(const QString &name) const
{
    QSqlQuery query =
        m_database.run(QStringLiteral("SELECT value FROM setting WHERE name = ?"), {name});
    return query.next() ? textOf(query, "value") : texts().value(name).atFirst;
}

void Settings::setValue(const QString &name, const QString &value)
{
    m_database.run(QStringLiteral("INSERT OR REPLACE INTO setting (name, value) VALUES (?,?)"),
                   {name, value});
}
