#include "Words.h"

#include <errortable/ErrorTable.h>

#include <QtCore/QCoreApplication>

using namespace VelqorPassPort;

QString wordsFor(const PassportCommunityError &outcome)
{
    if (!outcome.isError())
        return {};
    const ErrorEntry *entry = findError(outcome.errorCode, outcome.errorMessage);
    // Another request library may report codes of its own.
    return entry ? entry->sentence(QLocale().language())
                 : QCoreApplication::translate("Words", "That did not work.");
}
