// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>

/// Standard output, kept for reports alone.
///
/// Construct it before anything else can print: from then on whatever the browser engine, its child
/// processes or a driver write to standard output is dropped, and so is standard error where it
/// leads to the same place, since its chatter would be read as part of a report. One object at a
/// time.
class ReportPipe
{
public:
    ReportPipe();
    ~ReportPipe();
    ReportPipe(const ReportPipe &) = delete;
    ReportPipe &operator=(const ReportPipe &) = delete;

    /// Writes all of it at once; false when nobody reads any more.
    bool write(const QByteArray &report) const;

private:
    int m_descriptor;
};
