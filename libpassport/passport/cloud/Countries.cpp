// SPDX-License-Identifier: MIT
#include "passport/PassportNubelo.h"

#include "common/Log.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace VelqorPassPort {

namespace {

// The service sends JSON inside a text. Anything else counts as an empty array.
QJsonArray arrayIn(const QVariant &text)
{
    return QJsonDocument::fromJson(text.toString().toUtf8()).array();
}

} // namespace

PassportCommunityError PassportNubelo::reqCountries(QVariantList &countries)
{
    const bool isCache = &countries == &m_countries;
    qCDebug(log_lp) << "reqCountries " << countries.size() << m_countries.size();
    // What the caller keeps should the request fail.
    if (!m_countries.isEmpty() && !isCache)
        countries = m_countries;

    QVariant result;
    PassportCommunityError record = get(result, QStringLiteral("fetchCountries"));
    if (record.isError())
        return record;

    countries.clear();
    const QVariantList entries = result.toList();
    for (const QVariant &entry : entries) {
        QVariantMap country = entry.toMap();
        for (const QString &key : {QStringLiteral("languages"), QStringLiteral("timezones")})
            country.insert(key, arrayIn(country.value(key)));
        countries.append(country);
    }
    qCDebug(log_lp) << "reqCountries " << countries.size() << m_countries.size();
    if (!isCache)
        m_countries = countries;
    return record;
}

PassportCommunityError PassportNubelo::getCurrentPhoneArea(QString &phoneArea)
{
    QVariant result;
    PassportCommunityError record = get(result, QStringLiteral("ipCountry"));
    if (!record.isError()) {
        m_currentPhoneArea = result.toString();
        phoneArea = m_currentPhoneArea;
    }
    return record;
}

PassportCommunityError PassportNubelo::reqCurrentCountry(QString &country,
                                                         QVariantMap &cCountryInfoMap, QString mode)
{
    const bool online = mode == QLatin1String("online");
    PassportCommunityError record;
    if (online || m_currentPhoneArea.isEmpty()) {
        record = getCurrentPhoneArea(country);
        if (record.isError())
            return record;
    }
    if (online || m_countries.isEmpty()) {
        record = reqCountries(m_countries);
        if (record.isError())
            return record;
    }

    for (const QVariant &entry : qAsConst(m_countries)) {
        const QVariantMap candidate = entry.toMap();
        if (candidate.value(QStringLiteral("id")).toString() == m_currentPhoneArea) {
            country = candidate.value(QStringLiteral("name")).toString();
            cCountryInfoMap = candidate;
            break;
        }
    }
    return record;
}

} // namespace VelqorPassPort
