// SPDX-License-Identifier: MIT
#pragma once

#include "passport/PassportNubelo.h"
#include "support/Gate.h"
#include "support/LogCapture.h"

#include <ScriptedCloud.h>

/// The base of the tests of the account client: a client of its own for each test, in front of a
/// cloud that plays what the test wrote. At the end of a test no reply may be left, neither with
/// the client nor after it.
class ScriptedClient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

protected:
    using Code = VelqorPassPort::CommunityErrorCode;
    using Record = VelqorPassPort::PassportCommunityError;

    /// The plainest request, into `data`.
    Record request();

    /// Lines of a log without the thread that ends some of them.
    static QStringList withoutThreads(QStringList lines);
    /// With the types of the values, which QVariant's comparison would convert.
    static QString shown(const QVariantMap &map);
    static QVariantMap with(QVariantMap map, const QVariantMap &changes);

    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<VelqorPassPort::PassportNubelo> client;
    // For results; these values stand for "as it was".
    const QVariantMap mapBefore{{"old", 1}};
    QVariant data;
    QVariantMap map;
    QString text;
};
