#pragma once

#include <nubelo/Manager.h>

#include "support/RawServer.h"
#include "support/ReplyOutcome.h"
#include "support/Rows.h"

using Nubelo::Error;
using Nubelo::Manager;

/// A Manager, and what every test of the request library does with one.
class CloudFixture : public QObject
{
protected:
    QStringList configure(const QVariantMap &data)
    {
        return ReplyOutcome::of(manager->setConfigData(data, {})).order;
    }
    void useAddress(const QString &address)
    {
        configure({{"cloudEnvironment", "test"},
                   {"environments", QVariantMap{{"test", QVariantMap{{"cloud", address}}}}}});
    }
    ReplyOutcome send(Manager::HttpRequestType type, const QVariantMap &headers = {})
    {
        return ReplyOutcome::of(manager->request(
            "userLogin", type, Manager::NoEncrypt,
            {{"source", "cloud"}, {"body", QVariantMap{{"a", "b"}}}, {"headers", headers}},
            Manager::NoAuthentication, {}));
    }

    const QByteArray good =
        RawServer::answer(R"({"status":"ok","result":{"n":12345678901,"t":"x"}})");
    std::unique_ptr<Manager> manager;
};
