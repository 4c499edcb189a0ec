// SPDX-License-Identifier: MIT
#include "CountryNames.h"

#include "Words.h"

#include <QtCore/QFile>
#include <QtCore/QHash>
#include <QtCore/QStringList>

namespace {

// By code, a column for each language, as the first line names them. Qt 5 knows a country's name in
// the languages of the country, but not in the user's.
QHash<QString, QStringList> readNames()
{
    QFile file(QStringLiteral(":/signin-window/countries.tsv"));
    file.open(QIODevice::ReadOnly);
    QHash<QString, QStringList> names;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QStringList columns = line.split(QLatin1Char('\t'));
        names.insert(columns.first(), columns);
    }
    return names;
}

} // namespace

QString countryName(const QVariantMap &country)
{
    static const QHash<QString, QStringList> names = readNames();
    const QString language = spokenLocale().name().section(QLatin1Char('_'), 0, 0);
    const int column = names.value(QStringLiteral("code")).indexOf(language);
    const QString name =
        names.value(country.value(QStringLiteral("code")).toString()).value(column);
    return name.isEmpty() ? country.value(QStringLiteral("name")).toString() : name;
}
