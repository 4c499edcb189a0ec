// SPDX-License-Identifier: MIT
#include "support/ScriptedClient.h"

#include <QtCore/QDebug>
#include <QtTest/QtTest>

void ScriptedClient::init()
{
    cloud.reset();
    client = std::make_unique<VelqorPassPort::PassportNubelo>();
    data = "before";
    map = mapBefore;
    text = "before";
}

void ScriptedClient::cleanup()
{
    // While the client lives: it deletes all that is left when it ends.
    if (client)
        QTRY_COMPARE(Nubelo::Reply::alive.load(), 0);
    client.reset();
    QCOMPARE(Nubelo::Reply::alive.load(), 0);
}

ScriptedClient::Record ScriptedClient::request()
{
    return client->requestNubelo(data, "status", Nubelo::Manager::Get, Nubelo::Manager::NoEncrypt);
}

QStringList ScriptedClient::withoutThreads(QStringList lines)
{
    for (QString &line : lines)
        line = line.section(" QThread(", 0, 0).trimmed();
    return lines;
}

QString ScriptedClient::shown(const QVariantMap &map)
{
    QString text;
    QDebug(&text) << map;
    return text;
}

QVariantMap ScriptedClient::with(QVariantMap map, const QVariantMap &changes)
{
    for (auto it = changes.begin(); it != changes.end(); ++it)
        map[it.key()] = it.value();
    return map;
}
