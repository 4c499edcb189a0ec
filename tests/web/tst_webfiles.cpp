// SPDX-License-Identifier: MIT
#include "passport/Passport.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Rows.h"
#include "web/WebAddress_p.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

/// What the flows find in the passport directory: the address of the pages, and the web tool.
class tst_WebFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosesTheAddress_data()
    {
        const auto row = columns<QByteArray, QString>("configuration", "page");
        row("beta", R"({"nubelo": {"env": "beta", "url": "u", "testurl": "t"}})", "t/p");
        row("other case", R"({"nubelo": {"env": "Beta", "url": "u", "testurl": "t"}})", "u/p");
        row("beta without its address", R"({"nubelo": {"env": "beta", "url": "u"}})", "/p");
        row("no JSON", "{", "/p");
    }

    void choosesTheAddress()
    {
        QFETCH(QByteArray, configuration);
        dir.write("config/PassPortCfg.cfg", configuration);
        QTEST(VelqorPassPort::WebAddress(dir.path()).ofPage("/p"), "page");
    }

    void copiesWhatIsMissing()
    {
        const PassportDirectory target;
        dir.write("tool/run", "new");
        dir.write("tool/data/deep/page", "new");
        dir.write("tool/data/kept", "new");
        dir.write("tool/.hidden", "new");
        QDir().mkpath(dir.filePath("tool/empty"));
        target.write("to/data/kept", "old");
        QVERIFY(
            QFile::setPermissions(dir.filePath("tool/run"), QFile::ReadOwner | QFile::ExeOwner));

        const QString from = dir.filePath("tool");
        const QString to = target.filePath("to");
        const LogCapture log;
        passport.copyOpenWebFile(from, to);
        QVERIFY(QFileInfo(to + "/run").isExecutable());
        QVERIFY(QFileInfo(to + "/empty").isDir());
        QVERIFY(!QFileInfo::exists(to + "/.hidden"));
        QCOMPARE(target.read("to/data/deep/page"), QByteArray("new"));
        QCOMPARE(target.read("to/data/kept"), QByteArray("old"));
        // A file that is there is not said to be copied.
        QCOMPARE(log.lines().filter("copy file..."),
                 QStringList({"debug copy file... \"" + from + "/data/deep/page\" \"page\"",
                              "debug copy file... \"" + from + "/run\" \"run\""}));

        // Of a missing target the last directory alone is made.
        passport.copyOpenWebFile(from, target.filePath("no/parent"));
        QVERIFY(!QFileInfo::exists(target.filePath("no")));
    }

private:
    PassportDirectory dir;
    VelqorPassPort::Passport passport;
};

QTEST_GUILESS_MAIN(tst_WebFiles)
#include "tst_webfiles.moc"
