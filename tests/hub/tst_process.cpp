#include "hub/ProcessControl.h"
#include "support/Recorder.h"

#include <QtTest/QtTest>

class TestProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void searchesTheListing();
    void missingToolsAreHarmless();
    void passesNamesToKillallUnchanged();
};

void TestProcess::searchesTheListing()
{
    Recorder tools;
    tools.add("ps", "printf ' 1 ?  /opt/passportHub -p\\n 2 ?  caf\\303\\251\\n'\n"
                    "echo complaint >&2; exit 1");
    const QList<unsigned long long> before{1, 2};
    QList<unsigned long long> ids = before;
    for (const QString name : {"passportHub", "opt/pass", "", "caf\u00e9"})
        QVERIFY2(g_checkProcessRunning(name, ids), qPrintable(name));
    for (const QString name : {"PassportHub", "pass.*", "complaint"})
        QVERIFY2(!g_checkProcessRunning(name, ids), qPrintable(name));
    QCOMPARE(ids, before);
    QCOMPARE(tools.calls().constFirst(), "ps [-A]");
}

void TestProcess::missingToolsAreHarmless()
{
    const Recorder nothing;
    nothing.hideOtherPrograms();
    QList<unsigned long long> ids;
    QVERIFY(!g_checkProcessRunning("sh", ids));
    QVERIFY(!g_checkProcessRunning(QString(), ids));
    g_killProcess("sh");
}

void TestProcess::passesNamesToKillallUnchanged()
{
    Recorder tools;
    tools.add("killall");
    g_killProcess("open web/\"tool\" -9");
    g_terminateProcess("open web/\"tool\" -9");
    const QString call = "killall [open web/\"tool\" -9]";
    QTRY_COMPARE(tools.calls(), (QStringList{call, call}));
}

QTEST_GUILESS_MAIN(TestProcess)

#include "tst_process.moc"
