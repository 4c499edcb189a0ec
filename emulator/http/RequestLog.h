// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Request.h"

#include <QtCore/QJsonArray>

#include <deque>

/// The newest API requests and what each was answered, for whoever wants to know what a client
/// really sent.
///
/// Kept in memory alone, with the passwords and tokens they carried.
class RequestLog
{
public:
    struct Entry
    {
        qint64 id = 0; ///< given when it is added, ever increasing
        QString time;
        QString name;          ///< empty for a path that nothing answers
        QString fault;         ///< the kind that applied, or empty
        qint64 durationMs = 0; ///< until the answer was made, with the delay of a fault
        Request request;
        Answer answer;
        int answerBytes = 0; ///< of the whole body; given when it is added
    };

    /// Adds a request whose number is ignored, of long headers and long bodies the beginning, and
    /// drops the oldest over 1000 or 4 MiB.
    void add(Entry entry);
    void clear();

    /// Those after a number, the oldest first, each {"id","time","name","method","path","query",
    /// "headers","body","httpStatus","word","durationMs","bytes","fault","answer":{"headers",
    /// "body"}}; a body is the JSON that it holds, else its text, null without one.
    QJsonArray toJson(qint64 after) const;

private:
    std::deque<Entry> m_entries;
    qint64 m_lastId = 0;
    int m_bytes = 0;
};
