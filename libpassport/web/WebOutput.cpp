// SPDX-License-Identifier: MIT
#include "web/WebOutput_p.h"

namespace VelqorPassPort {

namespace {

// The length of a C string in bytes that need not end in a zero.
int lengthToZero(const QByteArray &bytes)
{
    return static_cast<int>(qstrnlen(bytes.constData(), static_cast<uint>(bytes.size())));
}

} // namespace

std::optional<QString> valueBetween(const QByteArray &chunk, const QByteArray &startMarker,
                                    const QByteArray &endMarker)
{
    const int startPosition = chunk.indexOf(startMarker);
    const int endPosition = chunk.indexOf(endMarker);
    if (startPosition < 0 || endPosition < 0)
        return std::nullopt;
    const int valuePosition = startPosition + startMarker.size();
    // A negative length takes the rest.
    const QByteArray value = chunk.mid(valuePosition, endPosition - valuePosition);
    return QString::fromLatin1(value.constData(), lengthToZero(value));
}

QString textOf(const QByteArray &chunk)
{
    return QString::fromUtf8(chunk.constData(), lengthToZero(chunk));
}

AccountDetails accountDetails(const QString &text)
{
    constexpr int startLength = 6;
    const int end = text.indexOf(QLatin1String("end"));
    const int start = text.indexOf(QLatin1String("start:"));
    AccountDetails details;
    details.untilEnd = text.left(end);
    details.afterStart = details.untilEnd.mid(start + startLength);
    details.parts = details.afterStart.split(QLatin1Char(' '), Qt::KeepEmptyParts);
    return details;
}

} // namespace VelqorPassPort
