// SPDX-License-Identifier: MIT
#include "services/CountryService.h"

#include "http/Fields.h"
#include "http/Refusal.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QLocale>
#include <QtCore/QStringList>
#include <QtCore/QTimeZone>

#include <algorithm>

namespace {

const QString idKey = QStringLiteral("id");
const QString nameKey = QStringLiteral("name");

struct Codes
{
    QString id;
    QString phoneArea;
};

// Lines "two-letter code, numeric code, calling code"; "#" starts a comment.
QMap<QString, Codes> readCodes()
{
    QMap<QString, Codes> codes;
    QFile file(QStringLiteral(":/services/calling-codes.tsv"));
    file.open(QIODevice::ReadOnly);
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (!line.startsWith(QLatin1Char('#')) && fields.size() == 3)
            codes.insert(fields.at(0), {fields.at(1), fields.at(2)});
    }
    return codes;
}

// Clients expect a list as the text of a JSON array here.
QString listText(const QJsonArray &list)
{
    return QString::fromUtf8(QJsonDocument(list).toJson(QJsonDocument::Compact));
}

// The country's first language first.
QString languagesText(const QLocale &first, const QList<QLocale> &locales)
{
    QJsonArray tags = {first.bcp47Name()};
    for (const QLocale &locale : locales) {
        const QString tag = locale.bcp47Name();
        if (!tags.contains(tag))
            tags.append(tag);
    }
    return listText(tags);
}

QString timeZonesText(QLocale::Country country)
{
    QJsonArray ids;
    const QList<QByteArray> zones = QTimeZone::availableTimeZoneIds(country);
    for (const QByteArray &zone : zones)
        ids.append(QString::fromLatin1(zone));
    return listText(ids);
}

} // namespace

// Qt does not give away a country's code; the names of its locales end in it.
const CountryService::Countries &CountryService::countries()
{
    if (!m_countries.isEmpty())
        return m_countries;
    const QMap<QString, Codes> codes = readCodes();
    for (int i = QLocale::AnyCountry + 1; i <= QLocale::LastCountry; ++i) {
        const auto country = static_cast<QLocale::Country>(i);
        const QList<QLocale> locales =
            QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, country);
        const QString countryCode =
            locales.isEmpty() ? QString() : locales.first().name().section(QLatin1Char('_'), -1);
        const auto known = codes.find(countryCode);
        if (known == codes.end())
            continue;
        const QString name = QLocale::countryToString(country);
        const QLocale first(QLocale::AnyLanguage, country);
        const QString native = first.nativeCountryName();
        m_countries.insert(
            countryCode,
            QJsonObject{{idKey, known->id},
                        {nameKey, name},
                        {QStringLiteral("nativeName"), native.isEmpty() ? name : native},
                        {QStringLiteral("code"), countryCode},
                        {QStringLiteral("phoneArea"), known->phoneArea},
                        {QStringLiteral("languages"), languagesText(first, locales)},
                        {QStringLiteral("timezones"), timeZonesText(country)}});
    }
    return m_countries;
}

Answer CountryService::list()
{
    QList<QJsonObject> sorted = countries().values();
    std::sort(sorted.begin(), sorted.end(), [](const QJsonObject &left, const QJsonObject &right) {
        return left.value(nameKey).toString() < right.value(nameKey).toString();
    });
    QJsonArray list;
    for (const QJsonObject &country : qAsConst(sorted))
        list.append(country);
    return okAnswer(list);
}

Answer CountryService::current()
{
    return okAnswer(countries().value(m_settings.countryCode()).value(idKey));
}

Answer CountryService::setCurrent(const Request &request)
{
    const Fields body(request.json());
    const QString countryCode = body.text(QStringLiteral("code"));
    body.allowOnly({QStringLiteral("code")});
    if (!countries().contains(countryCode)) {
        throw Refusal(400, QStringLiteral("field \"code\" must be the code of a country, two"
                                          " capital letters like DE"));
    }
    m_settings.change({{QStringLiteral("country"), countryCode}});
    return okAnswer({});
}
