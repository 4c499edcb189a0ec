// SPDX-License-Identifier: MIT
#pragma once

#include "storage/Settings.h"

/// The time that everything in the emulator goes by: the machine's, or as far ahead of it as the
/// developer has moved it. Times are milliseconds since 1970.
///
/// Used from the database's thread.
class Clock
{
public:
    explicit Clock(Settings &settings) : m_settings(settings) {}

    qint64 now() const;
    qint64 aheadSeconds() const { return m_settings.clockAheadSeconds(); }
    /// Throws Refusal when it would be more than a hundred years ahead.
    void advance(qint64 seconds);
    void setBack() { m_settings.setClockAhead(0); } ///< to the machine's

    /// ISO 8601 in UTC, with milliseconds.
    static QString text(qint64 time);

private:
    Settings &m_settings;
};
