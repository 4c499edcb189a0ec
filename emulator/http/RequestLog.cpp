// SPDX-License-Identifier: MIT
#include "http/RequestLog.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t maximumEntries = 10000;
constexpr int maximumHeaderBytes = 8 * 1024; // of one request, as are the next two
constexpr int maximumKeptBytes = 64 * 1024;
constexpr int maximumWord = 1024; // a fault's may be as long as a body
constexpr int maximumBytes = 32 * 1024 * 1024;
constexpr int maximumListedBytes = 4 * 1024 * 1024; // made in a fraction of a second

// Cuts a text down to what is left of an allowance; true if it was longer.
template <typename Text>
bool cut(Text &text, int &left)
{
    const bool longer = text.size() > left;
    if (longer)
        text = text.left(left);
    left -= text.size();
    return longer;
}

bool cutBody(QByteArray &body)
{
    int left = maximumKeptBytes;
    return cut(body, left);
}

template <typename Text>
bool cutHeaders(QVector<QPair<Text, Text>> &headers)
{
    int left = maximumHeaderBytes;
    int kept = 0;
    bool longer = false;
    for (; kept < headers.size() && left > 0; ++kept) {
        longer = cut(headers[kept].first, left);
        longer = cut(headers[kept].second, left) || longer;
    }
    longer = longer || kept < headers.size();
    headers.resize(kept);
    return longer;
}

QJsonValue bodyValue(const QByteArray &body)
{
    if (body.isEmpty())
        return QJsonValue::Null;
    const QJsonDocument document = QJsonDocument::fromJson(body);
    // Parsers end at some depth, and a list of requests nests what it shows deeper than it was.
    const bool fitsInList = !QJsonDocument::fromJson("[[[[[[" + body + "]]]]]]").isNull();
    if (!fitsInList)
        return QString::fromUtf8(body);
    if (document.isObject())
        return document.object();
    if (document.isArray())
        return document.array();
    return QString::fromUtf8(body);
}

QJsonObject answerObject(const RequestLog::Entry &entry)
{
    const Answer &answer = entry.answer;
    QJsonObject headers{{QStringLiteral("Content-Type"), QString::fromLatin1(answer.contentType)}};
    for (const auto &[name, value] : answer.headers)
        headers.insert(QString::fromLatin1(name), QString::fromUtf8(value));
    return {{QStringLiteral("headers"), headers},
            {QStringLiteral("headersCut"), entry.answerHeadersCut},
            {QStringLiteral("body"), bodyValue(answer.body)},
            {QStringLiteral("bodyCut"), entry.answerBodyCut}};
}

QJsonObject entryObject(const RequestLog::Entry &entry)
{
    QJsonObject query;
    for (auto it = entry.request.query.begin(); it != entry.request.query.end(); ++it)
        query.insert(it.key(), it.value());
    QJsonObject headers;
    for (const auto &header : entry.request.headers)
        headers.insert(header.first, header.second);
    return {{QStringLiteral("id"), entry.id},
            {QStringLiteral("time"), entry.time},
            {QStringLiteral("name"), entry.name},
            {QStringLiteral("method"), entry.request.method},
            {QStringLiteral("path"), entry.request.path},
            {QStringLiteral("query"), query},
            {QStringLiteral("headers"), headers},
            {QStringLiteral("headersCut"), entry.headersCut},
            {QStringLiteral("body"), bodyValue(entry.request.body)},
            {QStringLiteral("bodyCut"), entry.bodyCut},
            {QStringLiteral("httpStatus"), entry.answer.httpStatus},
            {QStringLiteral("word"), entry.answer.word},
            {QStringLiteral("durationMs"), entry.durationMs},
            {QStringLiteral("bytes"), entry.answerBytes},
            {QStringLiteral("fault"), entry.fault},
            {QStringLiteral("answer"), answerObject(entry)}};
}

bool hasOutcome(const RequestLog::Entry &entry, const QString &outcome)
{
    const bool failed = entry.answer.httpStatus >= 300;
    if (outcome == QLatin1String("refused"))
        return entry.isRefused();
    if (outcome == QLatin1String("failed"))
        return failed;
    if (outcome == QLatin1String("fault"))
        return !entry.fault.isEmpty();
    return !entry.isRefused() && !failed && entry.fault.isEmpty();
}

bool fits(const RequestLog::Entry &entry, const RequestLog::Selection &selection)
{
    return entry.id > selection.after.value_or(0) && entry.id < selection.before &&
           (selection.name.isEmpty() || entry.name == selection.name) &&
           (selection.outcome.isEmpty() || hasOutcome(entry, selection.outcome));
}

using Entries = std::vector<const RequestLog::Entry *>;

// The first ones that fit.
template <typename Iterator>
Entries selected(Iterator entry, Iterator end, const RequestLog::Selection &selection)
{
    Entries found;
    int bytes = 0;
    for (; entry != end && static_cast<int>(found.size()) < selection.limit; ++entry) {
        if (!fits(*entry, selection))
            continue;
        bytes += entry->listedBytes;
        if (bytes > maximumListedBytes && !found.empty())
            break;
        found.push_back(&*entry);
    }
    return found;
}

} // namespace

void RequestLog::add(Entry entry)
{
    entry.id = ++m_lastId;
    entry.answerBytes = entry.answer.body.size();
    entry.headersCut = cutHeaders(entry.request.headers);
    entry.bodyCut = cutBody(entry.request.body);
    entry.answerHeadersCut = cutHeaders(entry.answer.headers);
    entry.answerBodyCut = cutBody(entry.answer.body);
    entry.answer.word = entry.answer.word.left(maximumWord);
    entry.listedBytes = QJsonDocument(entryObject(entry)).toJson(QJsonDocument::Compact).size();
    m_bytes += entry.listedBytes;
    m_entries.push_back(std::move(entry));
    while (m_entries.size() > maximumEntries || m_bytes > maximumBytes) {
        m_bytes -= m_entries.front().listedBytes;
        m_entries.pop_front();
    }
}

void RequestLog::clear()
{
    m_entries.clear();
    m_bytes = 0;
}

QStringList RequestLog::outcomes()
{
    return {QStringLiteral("ok"), QStringLiteral("refused"), QStringLiteral("failed"),
            QStringLiteral("fault")};
}

QJsonArray RequestLog::toJson(const Selection &selection) const
{
    Entries found;
    if (selection.after) {
        found = selected(m_entries.begin(), m_entries.end(), selection);
    } else {
        found = selected(m_entries.rbegin(), m_entries.rend(), selection);
        std::reverse(found.begin(), found.end());
    }
    QJsonArray array;
    for (const Entry *entry : found)
        array.append(entryObject(*entry));
    return array;
}
