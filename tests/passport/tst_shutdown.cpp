#include "support/PassportDirectory.h"

#include <QtCore/QProcess>
#include <QtTest/QtTest>

/// A facade may come and go at any time of its host's life: nothing hangs, aborts or, under the
/// leak checker, leaks. Each case is a process of its own.
class tst_Shutdown : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ends_data();
    void ends();

private:
    PassportDirectory good;
};

void tst_Shutdown::ends_data()
{
    QTest::addColumn<QString>("when");
    QTest::addColumn<QString>("initial");
    QTest::addColumn<QString>("request");
    good.writeSystemCfg({{"Default", QJsonObject{{"StartHub", false}}}});
    good.writePassportCfg({{"hub", QJsonObject{{"path", "hub.exe"}}}});
    for (const char *when : {"before the loop", "during the loop", "after the loop",
                             "across the loop", "as the application's child", "unloaded",
                             "on another thread", "quit under a call", "end under a call"}) {
        QTest::addRow("%s, unused", when) << when << ""
                                          << "";
        QTest::addRow("%s, initial", when) << when << good.path() << "request";
        QTest::addRow("%s, failed initial", when) << when << "/nowhere"
                                                  << "request";
    }
}

void tst_Shutdown::ends()
{
    QFETCH(QString, when);
    QFETCH(QString, initial);
    QFETCH(QString, request);
    QProcess host;
    host.setProcessChannelMode(QProcess::MergedChannels);
    host.start(SHUTDOWN_HOST, {when, initial, request, SHUTDOWN_PLUGIN});
    QVERIFY(host.waitForFinished(20000));
    const QByteArray output = host.readAll();
    QVERIFY2(host.exitStatus() == QProcess::NormalExit && host.exitCode() == 0, output.constData());
    QCOMPARE(output, QByteArray());
}

QTEST_GUILESS_MAIN(tst_Shutdown)
#include "tst_shutdown.moc"
