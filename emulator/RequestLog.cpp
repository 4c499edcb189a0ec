#include "RequestLog.h"

#include <QtCore/QJsonDocument>

namespace {

constexpr std::size_t maximumEntries = 1000;
constexpr int maximumBodyBytes = 64 * 1024;

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
    if (m_entries.size() == maximumEntries)
        m_entries.pop_front();
    m_entries.push_back({{}, request});
    m_entries.back().request.body.truncate(maximumBodyBytes);
    return m_entries.back();
}

QJsonArray RequestLog::toJson() const
{
    QJsonArray array;
    for (const Entry &entry : m_entries)
        array.append(entryObject(entry));
    return array;
}
