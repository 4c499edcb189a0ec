// SPDX-License-Identifier: MIT
#include "storage/Clock.h"

#include "http/Refusal.h"

#include <QtCore/QDateTime>

qint64 Clock::now() const
{
    return QDateTime::currentMSecsSinceEpoch() + aheadSeconds() * 1000;
}

void Clock::advance(qint64 seconds)
{
    constexpr qint64 mostSeconds = 100LL * 366 * 24 * 60 * 60; // years have four digits
    const qint64 ahead = aheadSeconds() + seconds;
    if (ahead > mostSeconds)
        throw Refusal(400, QStringLiteral("the clock goes no further ahead than a hundred years"));
    m_settings.setClockAhead(ahead);
}

QString Clock::text(qint64 time)
{
    return QDateTime::fromMSecsSinceEpoch(time, Qt::UTC).toString(Qt::ISODateWithMs);
}
