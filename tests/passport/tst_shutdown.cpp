// SPDX-License-Identifier: MIT
#include "support/PassportDirectory.h"
#include "support/Rows.h"

#include <QtCore/QProcess>

/// A facade may come and go at any time of its host's life: nothing hangs, aborts or, under the
/// leak checker, leaks. Each case is a process of its own.
class tst_Shutdown : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ends_data()
    {
        const auto row = columns<QString, QString, QString>("when", "initial", "request");
        good.writeSystemCfg({{"Default", QJsonObject{{"StartHub", false}}}});
        good.writePassportCfg({{"hub", QJsonObject{{"path", "hub.exe"}}}});
        for (const QByteArray when :
             {"before the loop", "during the loop", "after the loop", "across the loop",
              "as the application's child", "unloaded", "on another thread", "quit under a call",
              "end under a call"}) {
            row(when + ", unused", when, "", "");
            row(when + ", initial", when, good.path(), "request");
            row(when + ", failed initial", when, "/nowhere", "request");
        }
    }

    void ends()
    {
        QFETCH(QString, when);
        QFETCH(QString, initial);
        QFETCH(QString, request);
        QProcess host;
        host.setProcessChannelMode(QProcess::MergedChannels);
        host.start(SHUTDOWN_HOST, {when, initial, request, SHUTDOWN_PLUGIN});
        QVERIFY(host.waitForFinished(20000));
        const QByteArray output = host.readAll();
        QVERIFY2(host.exitStatus() == QProcess::NormalExit && host.exitCode() == 0,
                 output.constData());
        QCOMPARE(output, QByteArray());
    }

private:
    PassportDirectory good;
};

QTEST_GUILESS_MAIN(tst_Shutdown)
#include "tst_shutdown.moc"
