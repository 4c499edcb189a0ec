#include "http/RequestLog.h"

#include <QtCore/QJsonDocument>

namespace {

constexpr std::size_t maximumEntries = 1000;
constexpr int maximumHeaderBytes = 8 * 1024; // of one request, as are the body's
constexpr int maximumKeptBytes = 64 * 1024;
constexpr int maximumBytes = 4 * 1024 * 1024; // of all, listed in a fraction of a second

// The beginning of a text, as much as is left of an allowance.
QString taken(const QString &text, int &left)
{
    QString beginning = text.left(left);
    left -= beginning.size();
    return beginning;
}

Request shortened(const Request &request)
{
    Request kept = request;
    kept.body.truncate(maximumKeptBytes);
    kept.headers.clear();
    int left = maximumHeaderBytes;
    for (const auto &[name, value] : request.headers) {
        if (left == 0)
            break;
        const QString beginning = taken(name, left);
        kept.headers.append({beginning, taken(value, left)});
    }
    return kept;
}

int sizeOf(const Request &request)
{
    int size = request.path.size() + request.body.size();
    for (auto it = request.query.begin(); it != request.query.end(); ++it)
        size += it.key().size() + it.value().size();
    for (const auto &[name, value] : request.headers)
        size += name.size() + value.size();
    return size;
}

QJsonValue bodyValue(const QByteArray &body)
{
    if (body.isEmpty())
        return QJsonValue::Null;
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isObject())
        return document.object();
    if (document.isArray())
        return document.array();
    return QString::fromUtf8(body);
}

QJsonObject entryObject(const RequestLog::Entry &entry)
{
    QJsonObject query;
    for (auto it = entry.request.query.begin(); it != entry.request.query.end(); ++it)
        query.insert(it.key(), it.value());
    QJsonObject headers;
    for (const auto &header : entry.request.headers)
        headers.insert(header.first, header.second);
    return {{QStringLiteral("name"), entry.name},
            {QStringLiteral("method"), entry.request.method},
            {QStringLiteral("path"), entry.request.path},
            {QStringLiteral("query"), query},
            {QStringLiteral("headers"), headers},
            {QStringLiteral("body"), bodyValue(entry.request.body)}};
}

} // namespace

RequestLog::Entry &RequestLog::add(const Request &request)
{
    m_entries.push_back({{}, shortened(request)});
    m_bytes += sizeOf(m_entries.back().request);
    while (m_entries.size() > maximumEntries || m_bytes > maximumBytes) {
        m_bytes -= sizeOf(m_entries.front().request);
        m_entries.pop_front();
    }
    return m_entries.back();
}

void RequestLog::clear()
{
    m_entries.clear();
    m_bytes = 0;
}

QJsonArray RequestLog::toJson() const
{
    QJsonArray array;
    for (const Entry &entry : m_entries)
        array.append(entryObject(entry));
    return array;
}
