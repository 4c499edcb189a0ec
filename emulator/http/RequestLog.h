#pragma once

#include "http/Request.h"

#include <QtCore/QJsonArray>

#include <deque>

/// The newest API requests, for whoever wants to know what a client really sent.
///
/// Kept in memory alone, with the passwords and tokens the requests carried.
class RequestLog
{
public:
    struct Entry
    {
        QString name; ///< empty for a path that nothing answers
        Request request;
    };

    /// Adds a request, of long headers and a long body the beginning, and drops the oldest over
    /// 1000 or 4 MiB. The reference is valid until the next call.
    Entry &add(const Request &request);
    void clear();

    /// The oldest first, each {"name","method","path","query","headers","body"}; a body is the JSON
    /// that it holds, else its text, null without one.
    QJsonArray toJson() const;

private:
    std::deque<Entry> m_entries;
    int m_bytes = 0;
};
