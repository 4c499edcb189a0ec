// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Request.h"

#include <QtCore/QJsonArray>
#include <QtCore/QStringList>

#include <deque>
#include <limits>
#include <optional>

/// The newest API requests and what each was answered, for whoever wants to know what a client
/// really sent.
///
/// Kept in memory alone, with the passwords and tokens they carried: at most 10,000 of them, and
/// 32 MiB of JSON in all, of which the oldest go first. Of one request the first 8 KiB of headers
/// and the first 64 KiB of the body are kept, of its answer the same.
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

        // Given when it is added.
        int answerBytes = 0; ///< of the whole body
        int listedBytes = 0; ///< of its JSON in a listing
        bool headersCut = false;
        bool bodyCut = false;
        bool answerHeadersCut = false;
        bool answerBodyCut = false;

        /// By the account rules, with a word.
        bool isRefused() const { return answer.httpStatus == 200 && !answer.word.isEmpty(); }
    };

    /// Which ones to list: with `after` the oldest of those that fit, otherwise the newest.
    struct Selection
    {
        static constexpr int maximum = 1000;

        std::optional<qint64> after; ///< numbers above this one
        qint64 before = std::numeric_limits<qint64>::max();
        int limit = maximum;
        QString name;    ///< empty: any
        QString outcome; ///< one of outcomes(); empty: any
    };

    /// Adds a request, whose number is ignored.
    void add(Entry entry);
    void clear();

    /// "ok", "refused" (with a word), "failed" (HTTP 300 and above) and "fault".
    static QStringList outcomes();

    /// The oldest first, each {"id","time","name","method","path","query","headers","headersCut",
    /// "body","bodyCut","httpStatus","word","durationMs","bytes","fault","answer":{"headers",
    /// "headersCut","body","bodyCut"}}; a body is the JSON that it holds, else its text, null
    /// without one. One listing ends early, but not empty, where it would exceed 4 MiB.
    QJsonArray toJson(const Selection &selection) const;

private:
    std::deque<Entry> m_entries;
    qint64 m_lastId = 0;
    int m_bytes = 0;
};
