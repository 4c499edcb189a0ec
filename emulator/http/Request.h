// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

/// An HTTP request, wholly read and decoded, as the rules see it.
struct Request
{
    QString method;
    QString path;                             ///< percent-decoded, without the query
    QMap<QString, QString> query;             ///< of a repeated key the last value
    QVector<QPair<QString, QString>> headers; ///< as sent
    QByteArray body;
    QString remoteAddress; ///< the caller's address without the port

    /// GET for HEAD, whose answer is the same without a body; else the method.
    QString answeredMethod() const;
    /// The values of a header; its name is compared without regard to case.
    QStringList headerValues(const QString &name) const;
    /// A query value that must be "true" or "false"; a missing one is false. Throws Refusal.
    bool queryFlag(const QString &key) const;
    /// A query value that must be a whole number from minimum to maximum; a missing or empty one is
    /// the fallback. Throws Refusal.
    int queryNumber(const QString &key, int fallback, int minimum, int maximum) const;
    /// A query value that must be one of these; a missing one is empty. Throws Refusal.
    QString queryChoice(const QString &key, const QStringList &choices) const;
    /// The third and last part of the path as a number; 0 when it is not one.
    qint64 numberAtEnd() const;
    /// The body, which must be a JSON object. Throws Refusal.
    QJsonObject json() const;
};
