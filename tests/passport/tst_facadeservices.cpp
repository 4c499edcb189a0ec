// SPDX-License-Identifier: MIT
#include "passport/Passport.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"
#include "support/Rows.h"

#include <ScriptedCloud.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QScopedValueRollback>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace VelqorPassPort;

Q_DECLARE_METATYPE(Script)

namespace {

const QString accountFile = "config/account.json";
const QString chinese = "privacypolicy/PrivacyPolicy-chinese-simplified.html";
const QString english = "privacypolicy/PrivacyPolicy-english.html";
const QVariantMap account{{"token", "T"}};

} // namespace

// The system's calls, which can be made to fail as on a volume that knows no permissions or in a
// directory that nothing can be removed from.
static bool filesAreFixed = false;
#ifdef Q_OS_LINUX
extern "C" Q_DECL_EXPORT int unlink(const char *path)
{
    return filesAreFixed ? -1 : ::unlinkat(AT_FDCWD, path, 0);
}
extern "C" Q_DECL_EXPORT int fchmod(int file, mode_t mode)
{
    return filesAreFixed ? -1 : int(::syscall(SYS_fchmod, file, mode));
}
#endif

/// The facade's account services: the files and the web pages that go with them.
class tst_Services : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        cloud.reset();
        dir = std::make_unique<PassportDirectory>();
        passport = std::make_unique<Passport>();
        passport->setPassportDir(dir->path());
        text = "before";
    }

    void cleanup()
    {
        passport.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void remembersOnlyWhenAsked_data()
    {
        const auto row = columns<bool, QList<Script>, bool, bool, bool>(
            "byCode", "scripts", "remember", "exists", "rebuilt");
        const Script good = Script::answering(account), bad = Script::refusing("dberr");
        const QList<Script> all{good, good}, none{bad}, half{good, bad};
        row("name alone, no file", true, all, true, false, true);
        row("name alone, replaces everything", true, all, true, true, true);
        row("name alone, not asked", true, all, false, true, false);
        row("name alone, profile failed", true, half, true, true, false);
        row("password, replaces everything", false, half, true, true, true);
        row("password, not asked", false, all, false, true, false);
        row("password, failed", false, none, true, true, false);
    }

    void remembersOnlyWhenAsked()
    {
        QFETCH(bool, byCode);
        QFETCH(QList<Script>, scripts);
        QFETCH(bool, remember);
        QFETCH(bool, exists);
        QFETCH(bool, rebuilt);
        const QByteArray old = R"({"name":"old","password":"pw","more":"members"})";
        if (exists) {
            dir->write(accountFile, old);
            QFile::setPermissions(dir->filePath(accountFile), QFile::Permissions(0x6644));
        }
        for (const Script &script : scripts)
            cloud.play(script);
        QFile reader(dir->filePath(accountFile));
        reader.open(QIODevice::ReadOnly);
        QVariantMap map;
        if (byCode)
            passport->reqCodeLogIn("ada", {}, {}, {}, map, {}, remember);
        else
            passport->logIn("ada", "word", {}, map, remember);
        const QByteArray fresh = byCode
                                     ? "{\n    \"name\": \"ada\"\n}\n"
                                     : "{\n    \"name\": \"ada\",\n    \"password\": \"word\"\n}\n";
        QCOMPARE(dir->read(accountFile), rebuilt ? fresh : old);
        const auto others =
            QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QCOMPARE(!(QFileInfo(dir->filePath(accountFile)).permissions() & others), rebuilt);
        // Who has the old file open does not read the new one.
        QCOMPARE(reader.readAll(), exists ? old : QByteArray());
    }

    void neverMixesAccounts()
    {
        if (QSysInfo::kernelType() != "linux")
            QSKIP("functions of the C library are replaced on Linux alone");
        dir->write(accountFile, R"({"name":"old","password":"pw"})");
        for (int i = 0; i < 2; ++i)
            cloud.play(Script::answering(account));
        QVariantMap map;
        const QScopedValueRollback<bool> fixed(filesAreFixed, true);
        passport->logIn("ada", "word", {}, map, true);
        QCOMPARE(dir->read(accountFile), "{\n    \"name\": \"ada\"\n}\n");
    }

    void keepsACopyOfThePolicy_data()
    {
        const auto row = columns<QString, QString>("language", "copy");
        row("English", "en-us", english);
        row("Chinese inside", "x-zh-cn,en", chinese);
        row("Chinese in capitals", "ZH-CN", english);
    }

    void keepsACopyOfThePolicy()
    {
        QFETCH(QString, language);
        QFETCH(QString, copy);
        const QString policy = QString::fromUtf8("<p>隐私 ä</p>");
        dir->write(copy, "an old and longer copy of the policy");
        // What is kept stays when a later fetch fails.
        for (const Script &script : {Script::answering(policy), Script::refusing("dberr")}) {
            cloud.play(script);
            passport->reqGetPrivacy(text, language, "/elsewhere", false, "oem", "reserved", "x");
            QCOMPARE(text, policy);
            QCOMPARE(dir->read(copy), policy.toUtf8());
        }
        QCOMPARE(QDir(dir->filePath("privacypolicy")).entryList(QDir::Files).size(), 1);
    }

    void showsThePolicy_data()
    {
        const auto row = columns<bool, Script, QString>("hasCopy", "script", "page");
        row("fetched", false, Script::answering("policy"), "file://%1/" + chinese);
        row("of an earlier call", true, Script::refusing("dberr"), "file://%1/" + chinese);
        row("never fetched", false, Script::refusing("dberr"), "%1file:///" + english);
    }

    void showsThePolicy()
    {
        QFETCH(bool, hasCopy);
        QFETCH(Script, script);
        QFETCH(QString, page);
        Recorder tools;
        tools.add("openweburl");
        tools.add("ps");
        const QString program =
            dir->path() + "/openweburl/openweburl.app/Contents/MacOS/openweburl";
        QDir().mkpath(QFileInfo(program).path());
        QVERIFY(QFile::link(tools.programPath("openweburl"), program));
        dir->writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 1}}}});
        dir->writePassportCfg({{"openwebengine", QJsonObject{{"reLoadTimeout", 7}}}});
        passport->initial(dir->path());
        if (hasCopy)
            dir->write(chinese, "old");

        cloud.play(script);
        QStringList callsAtTheEnd;
        connect(passport.get(), &Passport::webpageClosed,
                [&] { callsAtTheEnd = tools.calls().filter("openweburl"); });
        passport->reqGetPrivacy(text, "zh-cn", {}, true, {}, {}, {});
        QCOMPARE(callsAtTheEnd,
                 QStringList("openweburl [" + page.arg(dir->path()) + "] [zh-cn] [7000]"));
    }

    void survivesItsDestruction()
    {
        cloud.play(Script::silent());
        QTimer::singleShot(0, qApp, [this] { passport.reset(); });
        const LogCapture log;
        passport->reqGetPrivacy(text, "en", {}, true, {}, {}, {});
        QCOMPARE(text, "before");
        QCOMPARE(log.lines().filter("openurl"), QStringList()); // no page for a client that is gone
    }

    void tellsWhatAnswers()
    {
        const QVariantMap empty, parts{{"body", empty}, {"headers", empty}, {"params", empty}};
        QVERIFY(passport->hasNet()); // without a configuration it asks for nothing
        QCOMPARE(cloud.lastCall().name, "");
        dir->writePassportCfg({{"nubelo", QJsonObject{{"hasnet", "http://127.0.0.1/p?x=1"}}}});
        QVERIFY(passport->hasNet());
        QCOMPARE(cloud.lastCall().name, "http://127.0.0.1/p?x=1");
        QCOMPARE(cloud.lastCall().operation, "request/3");
        QCOMPARE(cloud.lastCall().envelope, parts);
        cloud.play(Script::failing(Nubelo::Error::Refused));
        QVERIFY(!passport->hasNet());

        QVERIFY(passport->hasVelqorNet());
        QCOMPARE(cloud.lastCall().name, "status");
        cloud.play(Script::withoutReply());
        QVERIFY(!passport->hasVelqorNet());
    }

private:
    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<PassportDirectory> dir;
    std::unique_ptr<Passport> passport;
    QString text;
};

QTEST_GUILESS_MAIN(tst_Services)
#include "tst_facadeservices.moc"
