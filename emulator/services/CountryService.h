// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Request.h"
#include "storage/Settings.h"

#include <QtCore/QMap>

/// Countries and territories: their codes from calling-codes.tsv, the rest from Qt's locale data
/// and the system's time zones.
///
/// Used from the store's thread. The list is made when it is first asked for.
class CountryService
{
public:
    explicit CountryService(Settings &settings) : m_settings(settings) {}

    /// fetchCountries: [{"id","name","nativeName","code","phoneArea","languages","timezones"},...]
    /// by name; the last two are JSON arrays as text.
    Answer list();
    /// ipCountry: the "id" of the country that callers are in.
    Answer current();
    /// {"code"}: from now on callers are in this country. For the developer.
    Answer setCurrent(const Request &request);

    using Countries = QMap<QString, QJsonObject>; ///< as listed, by two-letter code
    const Countries &countries();

private:
    Settings &m_settings;
    Countries m_countries;
};
