// SPDX-License-Identifier: MIT
#include "http/Request.h"

#include "http/Refusal.h"

#include <QtCore/QJsonDocument>

QString Request::answeredMethod() const
{
    return method == QLatin1String("HEAD") ? QStringLiteral("GET") : method;
}

QStringList Request::headerValues(const QString &name) const
{
    QStringList values;
    for (const auto &header : headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0)
            values.append(header.second);
    }
    return values;
}

bool Request::queryFlag(const QString &key) const
{
    const QString value = query.value(key, QStringLiteral("false"));
    if (value != QLatin1String("true") && value != QLatin1String("false"))
        throw Refusal(400, QStringLiteral("query value \"%1\" must be true or false").arg(key));
    return value == QLatin1String("true");
}

int Request::queryNumber(const QString &key, int fallback, int minimum, int maximum) const
{
    const QString text = query.value(key);
    if (text.isEmpty())
        return fallback;
    bool isNumber = false;
    const int value = text.toInt(&isNumber);
    if (!isNumber || value < minimum || value > maximum) {
        throw Refusal(400, QStringLiteral("query value \"%1\" must be a whole number from %2 to %3")
                               .arg(key)
                               .arg(minimum)
                               .arg(maximum));
    }
    return value;
}

QString Request::queryChoice(const QString &key, const QStringList &choices) const
{
    QString value = query.value(key);
    if (!value.isEmpty() && !choices.contains(value)) {
        throw Refusal(400, QStringLiteral("query value \"%1\" must be one of %2")
                               .arg(key, choices.join(QStringLiteral(", "))));
    }
    return value;
}

qint64 Request::numberAtEnd() const
{
    const bool alone = path.count(QLatin1Char('/')) == 3;
    return alone ? path.section(QLatin1Char('/'), -1).toLongLong() : 0;
}

QJsonObject Request::json() const
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError) {
        throw Refusal(400, QStringLiteral("the body is not JSON: %1 at byte %2")
                               .arg(error.errorString())
                               .arg(error.offset));
    }
    if (!document.isObject())
        throw Refusal(400, QStringLiteral("the body is not a JSON object"));
    return document.object();
}
