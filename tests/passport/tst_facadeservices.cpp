#include "passport/Passport.h"
#include "passport/PassportNubelo.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"
#include "support/Recorder.h"

#include <ScriptedCloud.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtTest/QtTest>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;
using Record = PassportCommunityError;
using OnClient = std::function<Record(PassportNubelo &)>;
using OnFacade = std::function<Record(Passport &)>;

Q_DECLARE_METATYPE(OnClient)
Q_DECLARE_METATYPE(OnFacade)
Q_DECLARE_METATYPE(Script)

namespace {

const QString accountFile = "config/account.json";
const QString chinese = "privacypolicy/PrivacyPolicy-chinese-simplified.html";
const QString english = "privacypolicy/PrivacyPolicy-english.html";
const QVariantMap account{{"token", "T"}};

// Without what differs from one client to the next: threads and captcha identifiers.
QStringList plain(QStringList lines)
{
    static const QRegularExpression own(" QThread\\(.*|[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}");
    return lines.replaceInStrings(own, "");
}

} // namespace

/// The facade's account services: what they pass on, every log line in order, and the files and the
/// web pages that go with them.
class tst_Services : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void forwardsAndLogs_data();
    void forwardsAndLogs();
    void remembersTheNameAlone_data();
    void remembersTheNameAlone();
    void keepsACopyOfThePolicy_data();
    void keepsACopyOfThePolicy();
    void keepsTheCopyWhenFetchingFails();
    void doesWithoutACopy();
    void showsThePolicy_data();
    void showsThePolicy();
    void closesAPageWithoutAWebTool();
    void survivesItsDestruction();
    void asksTheConfiguredAddress_data();
    void asksTheConfiguredAddress();
    void tellsWhetherTheServiceAnswers();

private:
    QStringList played(const std::function<Record()> &operation, const QList<Script> &scripts);

    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<PassportDirectory> dir;
    std::unique_ptr<Passport> passport;
    QVariant data;
    QVariantMap map;
    QString text;
    QVariantList list;
};

void tst_Services::init()
{
    cloud.reset();
    dir = std::make_unique<PassportDirectory>();
    passport = std::make_unique<Passport>();
    passport->setPassportDir(dir->path());
    text = "before";
}

void tst_Services::cleanup()
{
    passport.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void tst_Services::forwardsAndLogs_data()
{
    QTest::addColumn<OnClient>("onClient");
    QTest::addColumn<OnFacade>("onFacade");
    QTest::addColumn<QString>("end"); // of the line of a success
    const auto row = [](const char *name, const auto &operation) {
        QTest::newRow(name) << OnClient(operation) << OnFacade(operation) << "";
    };
    row("reqCountries", [this](auto &to) { return to.reqCountries(list); });
    row("reqCaptcha",
        [this](auto &to) { return to.reqCaptcha(data, "w", "h", "e", "l", "source", "uSource"); });
    row("reqValidCode", [this](auto &to) {
        return to.reqValidCode(data, "captcha", "user", "area", "lang", "source", "uSource");
    });
    row("isUserExisted",
        [](auto &to) { return to.isUserExisted("source", "captcha", "user", "area"); });
    row("reqResetPassword", [](auto &to) {
        return to.reqResetPassword("user", "area", "captcha", "code", "pw", "source");
    });
    QTest::newRow("reqCurrentCountry")
        << OnClient([this](auto &client) { return client.reqCurrentCountry(text, map, ""); })
        << OnFacade([this](auto &facade) { return facade.reqCurrentCountry(text, map); })
        << " \"33\"";
    QTest::newRow("reqCodeLogIn") << OnClient([this](auto &client) {
        return client.reqCodeLogIn("user", "area", "captcha", "code", map, "source");
    }) << OnFacade([this](auto &facade) {
        return facade.reqCodeLogIn("user", "area", "captcha", "code", map, "source", false);
    }) << "";
}

// The lines of an operation, with what it asked the cloud in front.
QStringList tst_Services::played(const std::function<Record()> &operation,
                                 const QList<Script> &scripts)
{
    cloud.reset();
    for (const Script &script : scripts)
        cloud.play(script);
    const LogCapture log;
    operation();
    QStringList asked;
    for (const auto &call : cloud.calls()) {
        QString envelope;
        QDebug(&envelope) << call.type << call.envelope;
        asked << call.operation << call.name << call.appendToUrl << envelope;
    }
    return plain(asked + log.lines());
}

void tst_Services::forwardsAndLogs()
{
    QFETCH(OnClient, onClient);
    QFETCH(OnFacade, onFacade);
    QFETCH(QString, end);
    const QString name = QTest::currentDataTag();
    PassportNubelo client;
    const auto direct = [&] { return onClient(client); };
    const auto forwarded = [&] { return onFacade(*passport); };
    const QVariantMap answer{{"token", "T"}};
    const bool signsIn = name == "reqCodeLogIn";

    const QList<Script> refusal{Script::refusing(R"({"a":1})")};
    const QString failure =
        " error... 84344833 \"{\\\"a\\\":1}\" QJsonDocument({\"a\":1}) \"{\\\"a\\\":1}\"";
    list.clear();
    QStringList expected = played(direct, refusal);
    list.clear();
    QCOMPARE(played(forwarded, refusal), expected << "debug " + name + failure);

    const QList<Script> success{signsIn ? Script::answering(answer) : Script::answering("33"),
                                signsIn ? Script::answering(answer)
                                        : Script::answering(QVariantList())};
    list.clear();
    expected = played(direct, success);
    list.clear();
    QCOMPARE(played(forwarded, success), expected << "debug " + name + " success..." + end);
}

void tst_Services::remembersTheNameAlone_data()
{
    QTest::addColumn<QList<Script>>("scripts");
    QTest::addColumn<bool>("remember");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("rebuilt");
    const Script good = Script::answering(account), bad = Script::refusing("dberr");
    QTest::newRow("asked, no file") << QList<Script>{good, good} << true << false << true;
    QTest::newRow("asked, replaces everything")
        << QList<Script>{good, good} << true << true << true;
    QTest::newRow("not asked") << QList<Script>{good, good} << false << true << false;
    QTest::newRow("failed") << QList<Script>{bad} << true << true << false;
    QTest::newRow("profile failed") << QList<Script>{good, bad} << true << true << false;
}

void tst_Services::remembersTheNameAlone()
{
    QFETCH(QList<Script>, scripts);
    QFETCH(bool, remember);
    QFETCH(bool, exists);
    QFETCH(bool, rebuilt);
    const QByteArray old = R"({"name":"old","password":"pw"})";
    if (exists) {
        dir->write(accountFile, old);
        QFile::setPermissions(dir->filePath(accountFile), QFile::Permissions(0x6644));
    }
    played([&] { return passport->reqCodeLogIn("ada", {}, {}, {}, map, {}, remember); }, scripts);
    QCOMPARE(dir->read(accountFile), rebuilt ? "{\n    \"name\": \"ada\"\n}\n" : old);
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    QCOMPARE(!(QFileInfo(dir->filePath(accountFile)).permissions() & others), rebuilt);
}

void tst_Services::keepsACopyOfThePolicy_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("copy");
    QTest::newRow("English") << "en-us" << english;
    QTest::newRow("none") << "" << english;
    QTest::newRow("Chinese") << "zh-cn" << chinese;
    QTest::newRow("Chinese inside") << "x-zh-cn,en" << chinese;
    QTest::newRow("Chinese in capitals") << "ZH-CN" << english;
}

void tst_Services::keepsACopyOfThePolicy()
{
    QFETCH(QString, language);
    QFETCH(QString, copy);
    const QString policy = QString::fromUtf8("<p>隐私 \"ä\"</p>\n");
    for (int i = 0; i < 2; ++i) { // the second time there is an old one
        cloud.play(Script::answering(policy));
        LogCapture log;
        passport->reqGetPrivacy(text, language, "/elsewhere", false, "oem", "reserved", "source");
        QString success, directory;
        QDebug(&success) << "debug reqGetPrivacy success..." << policy;
        QDebug(&directory) << "debug reqGetPrivacy passPortDir..." << dir->path();
        QCOMPARE(log.lines().mid(3), QStringList({success.trimmed(), directory.trimmed()}));
    }
    QCOMPARE(text, policy);
    QCOMPARE(dir->read(copy), policy.toUtf8());
    QCOMPARE(QDir(dir->filePath("privacypolicy")).entryList(QDir::Files).size(), 1);
    QCOMPARE(cloud.lastCall().appendToUrl, "/oem/" + language + "/privacy/%4");
    QVERIFY(!QFileInfo::exists("/elsewhere"));
}

void tst_Services::keepsTheCopyWhenFetchingFails()
{
    dir->write(english, "old");
    cloud.play(Script::refusing("dberr"));
    const LogCapture log;
    passport->reqGetPrivacy(text, "en", {}, false, {}, {}, {});
    QCOMPARE(log.lines().mid(3),
             QStringList({"debug reqGetPrivacy error... 84344839 \"dbErr\" QJsonDocument() \"\"",
                          "debug reqGetPrivacy passPortDir... \"" + dir->path() + '"'}));
    QCOMPARE(text, "before");
    QCOMPARE(dir->read(english), "old");
}

void tst_Services::doesWithoutACopy()
{
    dir->write("privacypolicy", "a file in the way");
    cloud.play(Script::answering("policy"));
    passport->reqGetPrivacy(text, "en", {}, false, {}, {}, {});
    QCOMPARE(text, "policy");
    QCOMPARE(dir->read("privacypolicy"), "a file in the way");
}

void tst_Services::showsThePolicy_data()
{
    QTest::addColumn<bool>("hasCopy");
    QTest::addColumn<Script>("script");
    QTest::addColumn<QString>("page");
    QTest::newRow("fetched") << false << Script::answering("policy") << "file://%1/" + chinese;
    QTest::newRow("of an earlier call")
        << true << Script::refusing("dberr") << "file://%1/" + chinese;
    QTest::newRow("never fetched") << false << Script::refusing("dberr") << "%1file:///" + english;
}

void tst_Services::showsThePolicy()
{
    QFETCH(bool, hasCopy);
    QFETCH(Script, script);
    QFETCH(QString, page);
    Recorder tools;
    tools.add("openweburl");
    tools.add("ps");
    const QString tool = "openweburl.app/Contents/MacOS/openweburl";
    const QString program = dir->path() + "/openweburl/" + tool;
    QDir().mkpath(QFileInfo(program).path());
    QVERIFY(QFile::link(tools.programPath("openweburl"), program));
    dir->writeSystemCfg({{"Tunnel", QJsonObject{{"Port", 1}}}});
    dir->writePassportCfg({{"openwebengine", QJsonObject{{"reLoadTimeout", 7}}}});
    passport->initial(dir->path());
    if (hasCopy)
        dir->write(chinese, "old");
    page = page.arg(dir->path());

    cloud.play(script);
    QStringList callsAtTheEnd;
    connect(passport.get(), &Passport::webpageClosed,
            [&] { callsAtTheEnd = tools.calls().filter("openweburl"); });
    const LogCapture log;
    passport->reqGetPrivacy(text, "zh-cn", {}, true, {}, {}, {});
    QCOMPARE(callsAtTheEnd, QStringList("openweburl [" + page + "] [zh-cn] [7000]"));
    QCOMPARE(log.lines().mid(5),
             QStringList({"debug reloadTiemout___ 7", "debug reload____ 7000",
                          "debug start openurl:::: \"" + tool + "\" QUrl(\"" + page + "\")",
                          "debug start openurl:::: \"" + program + '"'}));
}

void tst_Services::closesAPageWithoutAWebTool()
{
    const QSignalSpy closed(passport.get(), &Passport::webpageClosed);
    passport->openURL(QUrl("http://127.0.0.1/"), "en");
    QCOMPARE(closed.count(), 1);
}

void tst_Services::survivesItsDestruction()
{
    cloud.play(Script::silent());
    QTimer::singleShot(0, qApp, [this] { passport.reset(); });
    passport->reqGetPrivacy(text, "en", {}, true, {}, {}, {});
    QCOMPARE(text, "before");
}

void tst_Services::asksTheConfiguredAddress_data()
{
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<QString>("address");
    const QString address = "http://127.0.0.1/probe?x=1";
    QTest::newRow("configured") << QByteArray(
                                       R"({"nubelo": {"hasnet": "http://127.0.0.1/probe?x=1"}})")
                                << address;
    QTest::newRow("no key") << QByteArray(R"({"nubelo": {"url": "x"}})") << "";
    QTest::newRow("no object") << QByteArray(R"({"nubelo": "x"})") << "";
    QTest::newRow("no text") << QByteArray(R"({"nubelo": {"hasnet": 7}})") << "";
    QTest::newRow("no JSON") << QByteArray("{") << "";
    QTest::newRow("no file") << QByteArray() << "";
}

void tst_Services::asksTheConfiguredAddress()
{
    QFETCH(QByteArray, configuration);
    if (!configuration.isEmpty())
        dir->write("config/PassPortCfg.cfg", configuration);
    QVERIFY(passport->hasNet());
    const auto call = cloud.lastCall();
    QTEST(call.name, "address");
    QCOMPARE(call.operation, "request/3");
    const QVariantMap empty;
    QCOMPARE(call.envelope, (QVariantMap{{"body", empty}, {"headers", empty}, {"params", empty}}));

    cloud.play(Script::failing(Nubelo::Error::Refused));
    const LogCapture log;
    QVERIFY(!passport->hasNet());
    QCOMPARE(log.lines().last(),
             "debug hasNet error... 84345089 \"EC_ConnectionRefusedError\" QJsonDocument() \"\"");
}

void tst_Services::tellsWhetherTheServiceAnswers()
{
    const LogCapture log;
    QVERIFY(passport->hasVelqorNet());
    QCOMPARE(log.lines().size(), 3); // a success says nothing
    cloud.play(Script::withoutReply());
    QVERIFY(!passport->hasVelqorNet());
    QCOMPARE(log.lines().last(),
             "debug hasVelqorNet error... 84344840 \"unknownErr\" QJsonDocument() \"\"");
    QCOMPARE(cloud.names(), QStringList({"status", "status"}));
}

QTEST_GUILESS_MAIN(tst_Services)
#include "tst_facadeservices.moc"
