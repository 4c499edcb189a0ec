#include "passport/Passport.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "web/WebAddress_p.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtTest/QtTest>

/// What the flows find in the passport directory: the address of the pages, and the web tool.
class tst_WebFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosesTheAddress_data();
    void choosesTheAddress();
    void copiesWhatIsMissing();
    void leavesADirectoryWithoutParentAlone();

private:
    PassportDirectory dir;
    VelqorPassPort::Passport passport;
};

void tst_WebFiles::choosesTheAddress_data()
{
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<QString>("page");
    const auto row = [](const char *name, const QByteArray &cloud, const QString &page) {
        QTest::newRow(name) << QByteArray("{\"nubelo\": " + cloud + '}') << page;
    };
    row("beta", R"({"env": "beta", "url": "u", "testurl": "t"})", "t/p");
    row("other case", R"({"env": "Beta", "url": "u", "testurl": "t"})", "u/p");
    row("no environment", R"({"url": "u", "testurl": "t"})", "u/p");
    row("beta without its address", R"({"env": "beta", "url": "u"})", "/p");
    row("no object", R"("u")", "/p");
    QTest::newRow("no JSON") << QByteArray("{") << "/p";
}

void tst_WebFiles::choosesTheAddress()
{
    QFETCH(QByteArray, configuration);
    dir.write("config/PassPortCfg.cfg", configuration);
    QTEST(VelqorPassPort::WebAddress(dir.path()).ofPage("/p"), "page");
}

void tst_WebFiles::copiesWhatIsMissing()
{
    const QTemporaryDir target;
    dir.write("tool/run", "new");
    dir.write("tool/data/deep/page", "new");
    dir.write("tool/data/kept", "new");
    dir.write("tool/.hidden", "new");
    QDir().mkpath(dir.filePath("tool/empty"));
    QDir().mkpath(target.filePath("to/data"));
    QFile kept(target.filePath("to/data/kept"));
    QVERIFY(kept.open(QIODevice::WriteOnly) && kept.write("old") == 3);
    kept.close();
    QVERIFY(QFile::setPermissions(dir.filePath("tool/run"), QFile::ReadOwner | QFile::ExeOwner));

    const QString from = dir.filePath("tool");
    const QString to = target.filePath("to");
    const LogCapture log;
    passport.copyOpenWebFile(from, to);
    const QString data = "\"" + from + "/data";
    QCOMPARE(log.lines(),
             QStringList({"debug copy files... \"" + from + "\" \"" + to + '"',
                          "debug copy dir... " + data + "\" \"data\"",
                          "debug copy files... " + data + "\" \"" + to + "/data\"",
                          "debug copy dir... " + data + "/deep\" \"deep\"",
                          "debug copy files... " + data + "/deep\" \"" + to + "/data/deep\"",
                          "debug copy file... " + data + "/deep/page\" \"page\"",
                          "debug copy dir... \"" + from + "/empty\" \"empty\"",
                          "debug copy files... \"" + from + "/empty\" \"" + to + "/empty\"",
                          "debug copy file... \"" + from + "/run\" \"run\""}));
    QVERIFY(QFileInfo(to + "/run").isExecutable());
    QVERIFY(QFileInfo(to + "/empty").isDir());
    QCOMPARE(QFileInfo(to + "/data/kept").size(), 3);
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("old"));
    QVERIFY(!QFileInfo::exists(to + "/.hidden"));
}

void tst_WebFiles::leavesADirectoryWithoutParentAlone()
{
    dir.write("tool/run", "new");
    passport.copyOpenWebFile(dir.filePath("tool"), dir.filePath("no/parent"));
    QVERIFY(!QFileInfo::exists(dir.filePath("no")));
}

QTEST_GUILESS_MAIN(tst_WebFiles)

#include "tst_webfiles.moc"
