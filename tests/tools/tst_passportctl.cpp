#include "support/EmulatorProcess.h"
#include "support/PassportDirectory.h"
#include "support/Rows.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>

namespace {

struct Run
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
    QJsonObject json() const { return QJsonDocument::fromJson(out).object(); }
};

Run passportctl(const QStringList &arguments, const QByteArray &input = {})
{
    QProcess process;
    process.start(PASSPORTCTL, arguments);
    process.write(input);
    process.closeWriteChannel();
    Run run;
    if (process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit)
        run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

const QString user = "ada@example.com";
const QByteArray password = "correct horse 1\n";

} // namespace

/// The command line as scripts see it: exit codes, JSON, and no secret where none was asked for.
class tst_Passportctl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(emulator.start()); }
    void endsWithTheCodeScriptsCanUse_data();
    void endsWithTheCodeScriptsCanUse();
    void keepsSecrets();
    void remembersAndForgets();
    void showsWebPages_data();
    void showsWebPages();
    void protectsAnyLength_data();
    void protectsAnyLength();
    void losesNothingOnBadInput();

private:
    QStringList here(const QStringList &arguments)
    {
        return QStringList{"--cloud", emulator.baseUrl()} + arguments;
    }

    EmulatorProcess emulator;
    PassportDirectory dir;
};

void tst_Passportctl::endsWithTheCodeScriptsCanUse_data()
{
    const auto row = columns<QStringList, QByteArray, int>("arguments", "input", "code");
    dir.write("bad.json", "{");
    const QStringList nowhere{"--cloud", "http://127.0.0.1:1"};
    row("signed in", here({"sign-in", user}), password, 0);
    row("wrong password", here({"sign-in", user}), "x\n", 1);
    row("no password", here({"sign-in", user}), {}, 2);
    row("no command", {}, {}, 2);
    row("unknown option", here({"status", "--nonsense"}), {}, 2);
    row("nothing listens", nowhere + QStringList("status"), {}, 3);
    row("doctor", here({"doctor"}), {}, 0);
    row("bad configuration", QStringList{"--config", dir.filePath("bad.json"), "status"}, {}, 4);
    row("no passport directory", here({"sign-in", "--remember", user}), password, 4);
    row("not a passport directory", here({"--passport-dir", "/nowhere", "account"}), {}, 4);
}

void tst_Passportctl::endsWithTheCodeScriptsCanUse()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, input);
    QFETCH(int, code);
    const Run run = passportctl(arguments, input);
    QVERIFY2(run.exitCode == code, run.err);
    QCOMPARE(run.err.isEmpty(), code == 0);
    const Run json = passportctl(QStringList("--json") + arguments, input);
    QCOMPARE(json.exitCode, code);
    if (code != 2)
        QCOMPARE(json.json().value("ok"), QJsonValue(code == 0));
}

void tst_Passportctl::keepsSecrets()
{
    for (const QStringList &command : {QStringList{"sign-in", user}, {"-v", "sign-in", user}}) {
        const Run run = passportctl(here(command), password);
        QCOMPARE(run.exitCode, 0);
        QVERIFY(!run.out.contains("token") && !run.err.contains("token"));
        QVERIFY(!run.out.contains("correct horse") && !run.err.contains("correct horse"));
    }
    const Run profile = passportctl(here({"--json", "profile", user}), password);
    QCOMPARE(profile.out.count('\n'), 1);
    QCOMPARE(profile.json()["profile"].toObject()["nickName"].toString(), "Ada");
    QVERIFY(!profile.out.contains("token") && !profile.out.contains("correct horse"));
    const Run asked = passportctl(here({"--json", "sign-in", "--show-token", user}), password);
    QVERIFY(!asked.json()["token"].toString().isEmpty());
    const Run refused = passportctl(here({"--json", "sign-in", user}), "x\n");
    QCOMPARE(refused.json()["error"].toObject()["message"].toString(), "pwdErr");
}

void tst_Passportctl::remembersAndForgets()
{
    dir.writeSystemCfg({{"Default", QJsonObject()}});
    dir.writePassportCfg({{"hub", QJsonObject()}});
    const QStringList at{"--json", "--passport-dir", dir.path()};
    QCOMPARE(passportctl(at + QStringList("account")).json()["remembered"], QJsonValue(false));
    const Run signedIn =
        passportctl(here(at + QStringList{"sign-in", "--remember", user}), password);
    QCOMPARE(signedIn.json()["remembered"], QJsonValue(true));
    const Run account = passportctl(at + QStringList("account"));
    QCOMPARE(account.json()["name"].toString(), user);
    QVERIFY(!account.out.contains("correct horse"));
    QCOMPARE(passportctl(at + QStringList{"account", "--forget"}).json()["remembered"],
             QJsonValue(false));
    QVERIFY(!QFile::exists(dir.filePath("config/account.json")));
}

void tst_Passportctl::showsWebPages_data()
{
    const auto row = columns<QString, QString, QByteArray, int, QByteArray>(
        "flow", "program", "report", "code", "shown");
    const QString bundled = "openweburl.app/Contents/MacOS/openweburl";
    const QByteArray details = "userLoadSuccess start: zoe s-3cret 86 end";
    row("sign-in", "sign-in", "openweburl", "openLoginURL_token_startT-1openLoginURL_token_end", 0,
        R"j([{"signal":"tokenReceived","token":"(not shown)"},{"signal":"webpageClosed"}])j");
    row("sign-up", "sign-up", bundled, details, 0,
        R"j("passWord":"(not shown)","phoneArea":"86","signal":"userLoadSuccess","userName":"zoe")j");
    row("forgotten, shown", "forgotten --show-secrets", bundled, details, 0, "s-3cret");
    row("closed", "sign-in", "openweburl", "closeSignal", 1, "closed without a sign-in");
    row("no address", "open page.html", bundled, "", 2, "is not an http, https or file address");
    row("no program", "sign-up", "openweburl", details, 4, "the web tool is missing");
}

void tst_Passportctl::showsWebPages()
{
    QFETCH(QString, flow);
    QFETCH(QString, program);
    QFETCH(QByteArray, report);
    QFETCH(QByteArray, shown);
    const PassportDirectory place;
    place.writeSystemCfg({{"Default", QJsonObject()}});
    place.writePassportCfg({{"hub", QJsonObject()}});
    program.prepend("openweburl/");
    place.write(program, "#!/bin/sh\nprintf '" + report + "'\n");
    QVERIFY(QFile::setPermissions(place.filePath(program), QFile::ReadOwner | QFile::ExeOwner));
    const Run run =
        passportctl(QStringList{"--json", "--passport-dir", place.path(), "web"} + flow.split(' '));
    QTEST(run.exitCode, "code");
    QVERIFY2(run.out.contains(shown), run.out);
}

void tst_Passportctl::protectsAnyLength_data()
{
    QTest::addColumn<int>("size");
    constexpr int piece = 48 * 128 * 1024;
    for (const int size : {15, 16, piece - 1, piece, piece + 1})
        QTest::addRow("%d bytes", size) << size;
}

void tst_Passportctl::protectsAnyLength()
{
    QFETCH(int, size);
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>('a' + i % 25);
    dir.write("plain", bytes);
    // By name one way, by standard input and output the other.
    QCOMPARE(
        passportctl({"protect", dir.filePath("plain"), "-o", dir.filePath("protected")}).exitCode,
        0);
    const QByteArray text = dir.read("protected");
    QVERIFY(passportctl({"protect"}, bytes).out == text + '\n');
    QVERIFY(passportctl({"unprotect", "--strip"}, text + '\n').out == bytes);
    const QByteArray whole = passportctl({"unprotect"}, text).out;
    QVERIFY(whole == bytes + QByteArray((16 - size % 16) % 16, '\0'));
}

void tst_Passportctl::losesNothingOnBadInput()
{
    dir.write("target", "old content");
    for (const QByteArray input :
         {"no protected text", "AAAA", "AAAAAAAAAAAAAAAAAAAAAA==\nAAAAAAAAAAAAAAAAAAAAAA=="}) {
        const Run run = passportctl({"unprotect", "-o", dir.filePath("target")}, input);
        QCOMPARE(run.exitCode, 4);
        QCOMPARE(dir.read("target"), QByteArray("old content"));
    }
    QCOMPARE(passportctl({"protect"}, "").exitCode, 2);
}

QTEST_GUILESS_MAIN(tst_Passportctl)
#include "tst_passportctl.moc"
