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
        const auto row = columns<QByteArray, QString, QByteArray, QByteArray>("variables", "host",
                                                                              "plain", "secure");
        row("nothing set", "", "a.example", "", "");
        row("one for each", "http_proxy=p:1 https_proxy=s:2", "a.example", "p:1", "s:2");
        row("capital letters", "HTTP_PROXY=p:1 HTTPS_PROXY=s:2", "a.example", "", "s:2");
        row("one for all", "ALL_PROXY=a:3 https_proxy=s:2", "a.example", "a:3", "s:2");
        row("this machine", "all_proxy=a:3", "127.0.0.1", "", "");
        row("exempt name", "all_proxy=a:3 no_proxy=b,.A.example", "x.a.example", "", "");
        row("no label of its own", "all_proxy=a:3 NO_PROXY=a.example", "ba.example", "a:3", "a:3");
        row("exempt subnet", "all_proxy=a:3 no_proxy=10.1.0.0/16", "10.1.2.3", "", "");
        row("other subnet", "all_proxy=a:3 no_proxy=10,10.1.0.0/16", "10.2.2.3", "a:3", "a:3");
        row("everything exempt", "all_proxy=a:3 no_proxy=*", "a.example", "", "");
    }

    void proxies()
    {
        QFETCH(QByteArray, variables);
        QFETCH(QString, host);
        for (const char *name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy"}) {
            qunsetenv(name);
            qunsetenv(QByteArray(name).toUpper());
        }
        for (const QByteArray &variable : variables.split(' '))
            qputenv(variable.split('=').first(), variable.split('=').last());
        QTEST(proxyFor("system", "http://" + host + "/"), "plain");
        QTEST(proxyFor("system", "https://" + host + "/"), "secure");
        QCOMPARE(proxyFor("none", "http://" + host), QByteArray());
        QCOMPARE(proxyFor("http://own:4", "http://" + host), QByteArray("http://own:4"));
    }
};

QTEST_GUILESS_MAIN(tst_Parts)
#include "tst_parts.moc"
