// SPDX-License-Identifier: MIT
#include "services/CaptchaLink.h"

#include <QtCore/QUuid>

namespace {

constexpr int idLength = 36;

} // namespace

CaptchaLink CaptchaLink::parse(const QString &text)
{
    const int hyphen = text.size() - idLength - 1;
    const QString id = text.right(idLength);
    if (hyphen < 0 || text.at(hyphen) != QLatin1Char('-') || !isCaptchaId(id))
        return {};
    return {text.left(hyphen), id};
}

bool CaptchaLink::isCaptchaId(const QString &text)
{
    // Of all the forms that QUuid reads, the one that it writes.
    return QUuid(text).toString(QUuid::WithoutBraces).compare(text, Qt::CaseInsensitive) == 0;
}
