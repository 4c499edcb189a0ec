// SPDX-License-Identifier: MIT
#include "http/RequestLog.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <utility>

namespace {

constexpr std::size_t maximumEntries = 1000;
constexpr int maximumHeaderBytes = 8 * 1024; // of one request, as are the body's
constexpr int maximumKeptBytes = 64 * 1024;
constexpr int maximumBytes = 4 * 1024 * 1024; // of all, listed in a fraction of a second

// The beginning of a text, as much as is left of an allowance.
template <typename Text>
Text taken(const Text &text, int &left)
{
    Text beginning = text.left(left);
    left -= beginning.size();
    return beginning;
}

QByteArray beginningOf(const QByteArray &body)
{
    return body.left(maximumKeptBytes);
}

template <typename Text>
QVector<QPair<Text, Text>> beginningOf(const QVector<QPair<Text, Text>> &headers)
{
    QVector<QPair<Text, Text>> kept;
    int left = maximumHeaderBytes;
    for (const auto &[name, value] : headers) {
        if (left == 0)
            break;
        const Text beginning = taken(name, left);
        kept.append({beginning, taken(value, left)});
    }
    return kept;
}

template <typename Headers>
int sizeOfHeaders(const Headers &headers)
{
    int size = 0;
    for (const auto &[name, value] : headers)
        size += name.size() + value.size();
    return size;
}

int sizeOf(const RequestLog::Entry &entry)
{
    int size = entry.request.path.size() + entry.request.body.size() + entry.answer.body.size();
    for (auto it = entry.request.query.begin(); it != entry.request.query.end(); ++it)
        size += it.key().size() + it.value().size();
    return size + sizeOfHeaders(entry.request.headers) + sizeOfHeaders(entry.answer.headers);
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

QJsonObject answerObject(const Answer &answer)
{
    QJsonObject headers{{QStringLiteral("Content-Type"), QString::fromLatin1(answer.contentType)}};
    for (const auto &[name, value] : answer.headers)
        headers.insert(QString::fromLatin1(name), QString::fromUtf8(value));
    return {{QStringLiteral("headers"), headers}, {QStringLiteral("body"), bodyValue(answer.body)}};
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
            {QStringLiteral("body"), bodyValue(entry.request.body)},
            {QStringLiteral("httpStatus"), entry.answer.httpStatus},
            {QStringLiteral("word"), entry.answer.word},
            {QStringLiteral("durationMs"), entry.durationMs},
            {QStringLiteral("bytes"), entry.answerBytes},
            {QStringLiteral("fault"), entry.fault},
            {QStringLiteral("answer"), answerObject(entry.answer)}};
}

} // namespace

void RequestLog::add(Entry entry)
{
    entry.id = ++m_lastId;
    entry.answerBytes = entry.answer.body.size();
    entry.request.body = beginningOf(entry.request.body);
    entry.request.headers = beginningOf(entry.request.headers);
    entry.answer.body = beginningOf(entry.answer.body);
    entry.answer.headers = beginningOf(entry.answer.headers);
    m_bytes += sizeOf(entry);
    m_entries.push_back(std::move(entry));
    while (m_entries.size() > maximumEntries || m_bytes > maximumBytes) {
        m_bytes -= sizeOf(m_entries.front());
        m_entries.pop_front();
    }
}

void RequestLog::clear()
{
    m_entries.clear();
    m_bytes = 0;
}

QJsonArray RequestLog::toJson(qint64 after) const
{
    QJsonArray array;
    for (const Entry &entry : m_entries) {
        if (entry.id > after)
            array.append(entryObject(entry));
    }
    return array;
}
