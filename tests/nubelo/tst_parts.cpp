// SPDX-License-Identifier: MIT
#include "nubelo/Answer_p.h"
#include "nubelo/Proxy_p.h"

#include "support/Rows.h"

using namespace Nubelo;

/// The decisions of the request library that need no server.
class tst_Parts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void httpStatuses()
    {
        const QMap<int, int> table{{304, 0},   {400, 302}, {401, 204}, {402, 299},
                                   {403, 201}, {404, 203}, {405, 202}, {407, 105},
                                   {409, 206}, {410, 207}, {429, 299}, {500, 401},
                                   {501, 402}, {502, 499}, {503, 403}, {599, 499}};
        for (auto it = table.begin(); it != table.end(); ++it)
            QCOMPARE(int(codeOfHttpStatus(it.key())), it.value() ? 0x5000 + it.value() : 0);
    }

    void proxies_data()
    {
        QTest::addColumn<QStringList>("row");
        const QString table = textOf(QFINDTESTDATA("proxies.txt"));
        for (const QString &line : table.split('\n', Qt::SkipEmptyParts)) {
            const QStringList row =
                line.split('|').replaceInStrings(QRegularExpression("^ | *$"), "");
            QTest::newRow(qPrintable(row.first())) << row;
        }
    }

    void proxies()
    {
        QFETCH(QStringList, row);
        const QByteArray variables = row[1].toLatin1();
        const QString host = row[2];
        for (const char *name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy"}) {
            qunsetenv(name);
            qunsetenv(QByteArray(name).toUpper());
        }
        for (const QByteArray &variable : variables.split(' '))
            qputenv(variable.split('=').first(), variable.split('=').last());
        QCOMPARE(proxyFor("system", "http://" + host), row[3].toLatin1());
        QCOMPARE(proxyFor("system", "https://" + host), row[4].toLatin1());
        QCOMPARE(proxyFor("none", "http://" + host), QByteArray());
        QCOMPARE(proxyFor("http://own:4", "http://" + host), QByteArray("http://own:4"));
    }
};

QTEST_GUILESS_MAIN(tst_Parts)
#include "tst_parts.moc"
