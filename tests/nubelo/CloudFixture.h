// SPDX-License-Identifier: MIT
#pragma once

#include <nubelo/Manager.h>

#include "nubelo/RawServer.h"
#include "support/Rows.h"

using Nubelo::Error;
using Nubelo::Manager;
using Nubelo::Reply;

/// What one reply of the request library came to.
struct ReplyOutcome
{
    QStringList order; ///< of the signals
    Error::ErrorCode code = Error::NoError;
    QVariantMap map;
    QList<QSslError> sslErrors;
};

/// A Manager, and what every test of the request library does with one. Whatever happened in a
/// test, its Manager then serves one more request.
class CloudFixture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

protected:
    /// The certificate to trust, and a server's own.
    static QString authority() { return QFINDTESTDATA("certificates/authority.pem"); }
    static QSslConfiguration tls(const QString &name = "server")
    {
        return RawServer::tls(QFINDTESTDATA("certificates/" + name + ".pem"));
    }

    void configure(const QVariantMap &data) { end(manager->setConfigData(data, {})); }
    void useAddress(const QString &address);
    void limit(int connectMs, int totalMs);

    /// Waits for the reply's end, and one more turn for what must not come; releases the reply.
    static ReplyOutcome end(Reply *reply);
    ReplyOutcome send(Manager::HttpRequestType type = Manager::Post,
                      const QVariantMap &headers = {}, const QVariantMap &body = {{"a", "b"}});

    const QByteArray good =
        RawServer::answer(R"({"status":"ok","result":{"n":12345678901,"t":"x"}})");
    std::unique_ptr<Manager> manager;
};
