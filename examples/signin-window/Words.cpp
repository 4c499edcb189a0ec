// SPDX-License-Identifier: MIT
#include "Words.h"

#include <errortable/ErrorTable.h>

#include <QtCore/QCoreApplication>

using namespace VelqorPassPort;

QLocale spokenLocale()
{
    // By a text, since the texts may come in another language than the locale's.
    //: The locale of this translation: language, underscore, country
    return QLocale(QCoreApplication::translate("Words", "en_US"));
}

QString spokenLanguageTag()
{
    return spokenLocale().name().toLower().replace(QLatin1Char('_'), QLatin1Char('-'));
}

QString sentenceFor(const PassportCommunityError &outcome)
{
    if (!outcome.isError())
        return {};
    const ErrorEntry *entry = findError(outcome.errorCode, outcome.errorMessage);
    // Another request library may report codes of its own.
    if (!entry)
        return QCoreApplication::translate("Words", "That did not work.");
    if (spokenLocale().language() == QLocale::Chinese)
        return entry->chinese;
    // A language that the table does not have gets its sentences from translations/errors_*.ts.
    return QCoreApplication::translate("Errors", entry->english.toUtf8().constData());
}

QString inputAtFault(const PassportCommunityError &outcome)
{
    const ErrorEntry *entry =
        outcome.isError() ? findError(outcome.errorCode, outcome.errorMessage) : nullptr;
    return entry ? entry->field : QString();
}
