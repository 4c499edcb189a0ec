// SPDX-License-Identifier: MIT
#include <passport/Passport.h>

#include <QtCore/QVector>

using namespace VelqorPassPort;

//! [list]
struct Area
{
    QString name;
    QString callingCode; // without "+": what the calls take as phoneArea
};

QVector<Area> areas(Passport &passport)
{
    QVariantList countries;
    // After a failure it holds what was fetched before, or nothing: both can be shown.
    passport.reqCountries(countries);
    QVector<Area> list;
    for (const QVariant &entry : qAsConst(countries)) {
        const QVariantMap country = entry.toMap();
        list.append({country.value(QStringLiteral("nativeName")).toString(),
                     country.value(QStringLiteral("phoneArea")).toString()});
    }
    return list;
}
//! [list]

//! [here]
// Empty when the service does not answer or lists no such country.
QString callingCodeHere(Passport &passport)
{
    QString name;
    QVariantMap country;
    passport.reqCurrentCountry(name, country);
    return country.value(QStringLiteral("phoneArea")).toString();
}
//! [here]
