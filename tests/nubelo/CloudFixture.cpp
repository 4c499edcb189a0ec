// SPDX-License-Identifier: MIT
#include "nubelo/CloudFixture.h"

void CloudFixture::init()
{
    QLoggingCategory::setFilterRules("nubelo=false");
    manager = std::make_unique<Manager>();
    limit(4000, 5000);
    configure({{"tls", QVariantMap{{"caFile", authority()}}}});
}

void CloudFixture::cleanup()
{
    if (!manager)
        return;
    RawServer server(good);
    configure({{"proxy", "none"}});
    limit(4000, 5000);
    useAddress(server.url());
    QCOMPARE(send().order.join(' '), "finished");
}

void CloudFixture::useAddress(const QString &address)
{
    configure({{"cloudEnvironment", "test"},
               {"environments", QVariantMap{{"test", QVariantMap{{"cloud", address}}}}}});
}

void CloudFixture::limit(int connectMs, int totalMs)
{
    configure({{"timeouts", QVariantMap{{"connectMs", connectMs}, {"totalMs", totalMs}}}});
}

ReplyOutcome CloudFixture::end(Reply *reply)
{
    ReplyOutcome outcome;
    QEventLoop loop;
    connect(reply, &Reply::sslErrorOccurred, &loop, [&](const QList<QSslError> &errors) {
        outcome.order << "ssl";
        outcome.sslErrors = errors;
    });
    connect(reply, &Reply::errorOccurred, &loop, [&](Error::ErrorCode code) {
        outcome.order << "error";
        outcome.code = code;
    });
    connect(reply, &Reply::finished, &loop, [&](const QVariantMap &map) {
        outcome.order << "finished";
        outcome.map = map;
        loop.quit();
    });
    if (!outcome.order.isEmpty())
        outcome.order << "in the turn of its creation";
    QTimer::singleShot(15000, &loop, &QEventLoop::quit);
    loop.exec();
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    delete reply;
    return outcome;
}

ReplyOutcome CloudFixture::send(Manager::HttpRequestType type, const QVariantMap &headers,
                                const QVariantMap &body)
{
    const QVariantMap envelope{{"source", "cloud"}, {"body", body}, {"headers", headers}};
    return end(manager->request("userLogin", type, Manager::NoEncrypt, envelope,
                                Manager::NoAuthentication, {}));
}
