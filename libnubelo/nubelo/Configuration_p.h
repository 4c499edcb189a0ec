// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Error.h"

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QVariantMap>
#include <QtCore/QVector>

#include <chrono>

namespace Nubelo {

/// What a transfer obeys besides its own request.
struct TransferRules
{
    std::chrono::milliseconds connectDeadline{0};
    std::chrono::milliseconds totalDeadline{0};
    qint64 answerLimit = 0; ///< bytes
    QByteArray caFile;      ///< empty: the system's certificates
    QByteArray minimumTls;  ///< "1.2" or "1.3"
    QByteArray proxy;       ///< "system", "none" or the proxy's address
};

/// A member that keeps a configuration from being used.
struct WrongMember
{
    QString path;    ///< such as "timeouts.totalMs"
    QString problem; ///< such as "must be a number from 1 to 10"
};

/// A checked configuration: what was set, and what follows from it and the built-in defaults.
///
/// A value; it never changes after parse() made it, so threads may share one.
class Configuration
{
public:
    struct Request
    {
        QString path;
        QByteArray method;
    };

    /// The configuration of `data` over builtIn(). Members of a wrong form are added to `wrong`;
    /// the result is then not to be used.
    static Configuration parse(const QVariantMap &data, QVector<WrongMember> &wrong);

    /// The defaults, which show every member that has an effect: those of "requests" and
    /// "environments" stand for others of any name, with members of the same names.
    static const QVariantMap &builtIn();

    /// The object in the file at `path`; on failure the code, with the reason in `problem`.
    static Error::ErrorCode readFile(const QString &path, QVariantMap &data, QString &problem);

    /// `changes` over `base`: objects are merged member by member, anything else is replaced.
    static QVariantMap merged(QVariantMap base, const QVariantMap &changes);

    QVariantMap data;                  ///< as set, without the defaults
    QHash<QString, QString> addresses; ///< of the chosen environment, by source; no trailing slash
    QHash<QString, Request> requests;  ///< by name
    TransferRules rules;
};

} // namespace Nubelo
