// SPDX-License-Identifier: MIT
#include "nubelo/HttpRequest_p.h"

#include "nubelo/Configuration_p.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QUrl>

#include <algorithm>

namespace Nubelo {

namespace {

bool isAddress(const QString &name)
{
    return name.startsWith(QLatin1String("http://"), Qt::CaseInsensitive) ||
           name.startsWith(QLatin1String("https://"), Qt::CaseInsensitive);
}

bool isHex(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Text that already is part of an address stays as it is; what an address cannot hold is encoded,
// and so is a '%' that starts no escape.
QByteArray encodedAsAddress(const QString &text)
{
    QByteArray bytes = text.toUtf8();
    for (int at = bytes.indexOf('%'); at >= 0; at = bytes.indexOf('%', at + 1)) {
        if (at + 2 >= bytes.size() || !isHex(bytes[at + 1]) || !isHex(bytes[at + 2]))
            bytes.insert(at + 1, "25");
    }
    return bytes.toPercentEncoding("%/?:@!$&'()*+,;=");
}

QByteArray textOf(const QVariant &value)
{
    if (value.type() == QVariant::Map || value.type() == QVariant::List ||
        value.type() == QVariant::StringList)
        return QJsonDocument::fromVariant(value).toJson(QJsonDocument::Compact);
    return value.toString().toUtf8();
}

QByteArray queryOf(const QVariantMap &params)
{
    QByteArray query;
    for (auto param = params.begin(); param != params.end(); ++param) {
        query += query.isEmpty() ? "" : "&";
        query += QUrl::toPercentEncoding(param.key()) + '=';
        query += textOf(param.value()).toPercentEncoding();
    }
    return query;
}

// A name is a token of RFC 9110; a line break in either part would start a header of its own.
bool isHeader(const QByteArray &name, const QByteArray &value)
{
    const auto isToken = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               QByteArrayLiteral("!#$%&'*+-.^_`|~").contains(c);
    };
    const auto isControl = [](char c) { return c == '\r' || c == '\n' || c == '\0'; };
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), isToken) &&
           std::none_of(value.begin(), value.end(), isControl);
}

// How long the body is and where it ends is the library's to say: another length would make a part
// of it the start of the next request.
bool isFraming(const QByteArray &name)
{
    return name.compare("content-length", Qt::CaseInsensitive) == 0 ||
           name.compare("transfer-encoding", Qt::CaseInsensitive) == 0;
}

Error::ErrorCode addHeaders(const QVariantMap &headers, HttpRequest &request, QString &problem)
{
    for (auto header = headers.begin(); header != headers.end(); ++header) {
        const QByteArray name = header.key().toUtf8();
        const QByteArray value = textOf(header.value()).trimmed();
        if (!isHeader(name, value)) {
            problem = QStringLiteral("it has a header that HTTP cannot carry");
            return Error::RequestParamsNotValid;
        }
        if (isFraming(name)) {
            problem = QStringLiteral("it has a header that the library sets itself");
            return Error::RequestParamsNotValid;
        }
        request.headers.append(name + ": " + value);
    }
    return Error::NoError;
}

// Behind "http://host" the text "@other/" or ":81" would name another origin.
bool changesOrigin(const QByteArray &address, const QByteArray &appended)
{
    const QByteArray rest = address.mid(address.indexOf("://") + 3);
    const bool isAuthorityEnded = rest.contains('/') || rest.contains('?');
    return !isAuthorityEnded && !appended.isEmpty() && appended[0] != '/' && appended[0] != '?';
}

Error::ErrorCode append(const QString &text, HttpRequest &request, QString &problem)
{
    const QByteArray appended = encodedAsAddress(text);
    if (changesOrigin(request.url, appended)) {
        problem = QStringLiteral("the text behind its address would change the host");
        return Error::RequestParamsNotValid;
    }
    request.url += appended;
    return Error::NoError;
}

Error::ErrorCode locate(const Configuration &configuration, const QString &name,
                        const QString &source, HttpRequest &request, QString &problem)
{
    if (isAddress(name)) {
        if (QUrl(name).host().isEmpty()) {
            problem = QStringLiteral("its address has no host");
            return Error::RequestParamsNotValid;
        }
        request.isAddress = true;
        request.url = QUrl(name).toEncoded(QUrl::RemoveFragment);
        return Error::NoError;
    }
    const auto known = configuration.requests.constFind(name);
    if (known == configuration.requests.constEnd()) {
        problem = QStringLiteral("no request has that name");
        return Error::RequestNameNotExist;
    }
    const QString address = configuration.addresses.value(source);
    if (address.isEmpty()) {
        const QVariant environment = configuration.data.value(QStringLiteral("cloudEnvironment"));
        problem = environment.toString().isEmpty()
                      ? QStringLiteral("cloudEnvironment names no environment")
                      : QStringLiteral("environments.%1.%2 is missing")
                            .arg(environment.toString(), source);
        return Error::ConfigDataError;
    }
    request.method = known->method;
    request.url = QUrl(address).toEncoded();
    return append(known->path, request, problem);
}

} // namespace

Error::ErrorCode buildRequest(const Configuration &configuration, const QString &name,
                              const QByteArray &method, const QString &appendToUrl,
                              const QVariantMap &envelope, HttpRequest &request, QString &problem)
{
    const QVariantMap body = envelope.value(QStringLiteral("body")).toMap();
    const QVariantMap params = envelope.value(QStringLiteral("params")).toMap();
    const QString source = envelope.value(QStringLiteral("source")).toString();

    Error::ErrorCode code = locate(configuration, name, source, request, problem);
    if (code == Error::NoError)
        code = append(appendToUrl, request, problem);
    if (code != Error::NoError)
        return code;
    if (!method.isEmpty())
        request.method = method;
    else if (request.isAddress)
        request.method = body.isEmpty() ? "GET" : "POST";

    if (!params.isEmpty())
        request.url += (request.url.contains('?') ? '&' : '?') + queryOf(params);

    // A POST always carries an object, so that the service need not tell "nothing" from "empty".
    request.hasBody = !body.isEmpty() || request.method == "POST";
    if (request.hasBody)
        request.body =
            QJsonDocument(QJsonObject::fromVariantMap(body)).toJson(QJsonDocument::Compact);
    return addHeaders(envelope.value(QStringLiteral("headers")).toMap(), request, problem);
}

} // namespace Nubelo
