#include "passport/testing/Emulator.h"

#include <QtCore/QDir>
#include <QtCore/QJsonDocument>
#include <QtCore/QUuid>
#include <QtTest/QtTest>

using VelqorPassPort::Testing::Emulator;

namespace {

const QJsonObject company{
    {"companyName", "Lab"}, {"companyType", "mill"}, {"companyPurpose", "work"}};
const QJsonObject carol{{"username", "carol@example.com"}, {"phoneArea", ""}};
const QString carolsPassword = "correct horse 4";

QJsonObject merged(QJsonObject object, const QJsonObject &changes)
{
    for (auto it = changes.begin(); it != changes.end(); ++it)
        object.insert(it.key(), it.value());
    return object;
}

// "ok", or why not.
QString word(const Emulator::Answer &reply)
{
    const QJsonObject answer = reply.json();
    return answer.value("status") == "ok" ? "ok" : answer.value("result").toString();
}

QString readAll(const QDir &directory, const QString &pattern)
{
    QByteArray all;
    for (const QString &name : directory.entryList({pattern})) {
        QFile file(directory.filePath(name));
        all += file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    return QString::fromUtf8(all);
}

} // namespace

class WebPagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_emulator.start()); }
    void cleanupTestCase() { QVERIFY(m_emulator.stop()); }
    void init() { QVERIFY(m_emulator.reset()); }

    void believesCodes_data();
    void believesCodes();
    void supplyNeedsNoContact();
    void servesPages_data();
    void servesPages();
    void servesNothingElse();
    void textsAreComplete();

private:
    Emulator::Answer post(const QString &path, const QJsonObject &body, const QString &token = {})
    {
        return m_emulator.http("POST", "/v1/user/" + path.toLatin1(), QJsonDocument(body).toJson(),
                               {"X-Auth-Token: " + token.toLatin1()});
    }
    QJsonObject logIn(const QJsonObject &user, const QString &password)
    {
        const QJsonObject rest{{"password", password}, {"loginType", "VelqorPassPort"}};
        return post("login", merged(user, rest)).json().value("result").toObject();
    }
    QJsonObject withCode(const QString &purpose, const QJsonObject &user)
    {
        const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
        m_emulator.http("GET", "/v1/captcha/" + id.toLatin1() + "?p=" + purpose.toLatin1());
        const QJsonObject fields =
            merged(user, {{"captcha", m_emulator.captchaAnswer(id)}, {"uuid", purpose + "-" + id}});
        const bool sent =
            word(post("code", merged(fields, {{"lang", ""}, {"source", ""}}))) == "ok";
        return merged(fields, {{"validCode", sent ? m_emulator.latestCode() : QString()}});
    }

    Emulator m_emulator;
};

void WebPagesTest::believesCodes_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QJsonObject>("user");
    QTest::addColumn<QJsonObject>("changes"); // after the code has been sent
    QTest::addColumn<QString>("expected");    // a word, or a part of a sentence
    const auto row = [](const char *request, const char *contact, const char *area,
                        const char *expected, const QJsonObject &changes = {}) {
        QTest::addRow("%s %s%s %s", request, area, contact, expected)
            << request << QJsonObject{{"username", contact}, {"phoneArea", area}} << changes
            << expected;
    };
    const char *mail = "new@example.com";
    for (const char *request : {"register", "supply"}) {
        row(request, mail, "", "ok");
        row(request, "17000000009", "49", "ok");
        row(request, "13800000001", "49", "ok"); // known in another area
        row(request, "13800000001", "86", "existErr");
        row(request, "ada@example.com", "", "existErr");
        row(request, "17000000009", "", "\"phoneArea\" must be");
        row(request, "newcomer", "", "\"username\" must be");
        row(request, "me@example.com new@example.com", "", "\"username\" must be");
        row(request, mail, " me@example.com", "ok"); // mail has no area
        row(request, mail, "", "captchaErr", {{"captcha", "?"}});
        row(request, mail, "", "codeErr", {{"validCode", "?"}});
        row(request, mail, "1", "codeErr", {{"username", "else@example.com"}});
    }
    row("register", mail, "", "pwdTooShort", {{"password", "12345"}});
    row("supply", mail, "", "\"companyType\" must not", {{"companyType", " "}});
    row("supply", "carol@example.com", "", "ok"); // her own
}

void WebPagesTest::believesCodes()
{
    QFETCH(QString, request);
    QFETCH(QJsonObject, user);
    QFETCH(QJsonObject, changes);
    QFETCH(QString, expected);
    const bool supply = request == "supply";
    const QString password = supply ? carolsPassword : "secret 1";
    const QString token = logIn(carol, carolsPassword).value("token").toString();
    const QJsonObject fields =
        merged(merged(withCode(request, user), company), {{"password", password}});
    const auto reply = post(request, merged(fields, changes), token);
    QVERIFY2(word(reply).contains(expected), reply.body);
    QCOMPARE(reply.code, expected.contains(' ') ? 400 : 200);
    if (!changes.isEmpty()) // what was denied has not spent the code
        QCOMPARE(word(post(request, fields, token)), "ok");
    const QJsonObject record = logIn(user, password);
    QCOMPARE(record.isEmpty(), changes.isEmpty() && expected != "ok");
    if (record.isEmpty())
        return;
    const QJsonArray contacts{record.value("email"), record.value("phone")};
    QVERIFY(contacts.contains(user.value("username")));
    QCOMPARE(record.value("companyName").toString(), supply ? "Lab" : "");
    QCOMPARE(word(post(request, fields, token)), supply ? "codeExpired" : "existErr");
}

void WebPagesTest::supplyNeedsNoContact()
{
    const QString token = logIn(carol, carolsPassword).value("token").toString();
    QCOMPARE(word(post("supply", company, "nobody's")), "authErr");
    QCOMPARE(post("supply", merged(company, {{"username", "a@b"}}), token).code, 400);
    QCOMPARE(word(post("supply", company, token)), "ok");
    QCOMPARE(logIn(carol, carolsPassword).value("companyPurpose").toString(), "work");
}

void WebPagesTest::servesPages_data()
{
    QTest::addColumn<QByteArray>("page");
    for (const char *page :
         {"sign-in", "sign-up", "forgotten-password", "add-information", "privacy"})
        QTest::newRow(page) << QByteArray(page);
}

void WebPagesTest::servesPages()
{
    QFETCH(QByteArray, page);
    const auto get = [&](const QByteArray &query, const QByteArray &language) {
        return m_emulator.http("GET", "/web/" + page + "?oem={{close}}%3Ci>" + query, {},
                               {"Accept-Language: " + language});
    };
    const auto english = get("", "en-US,zh;q=0.5");
    const auto chinese = get("&lang=zh-cn", "en");
    QVERIFY2(english.head.contains("Content-Security-Policy: default-src 'self';"), english.head);
    QVERIFY2(english.head.contains("Content-Type: text/html; charset=utf-8"), english.head);
    QVERIFY(english.body.contains("<html lang=\"en\">") && english.body.contains("?lang=zh-cn"));
    QVERIFY(chinese.body.contains("<html lang=\"zh-CN\">") && chinese.body.contains("?lang=en"));
    QCOMPARE(get("", "zh-TW,en;q=0.5").body.count("zh-CN"), chinese.body.count("zh-CN"));
    QCOMPARE(get("&lang=en", "zh").body, get("&lang=en", "fr").body);
    const int openings = page == "privacy" ? 2 : 0; // what the caller wrote, as it is
    QCOMPARE((english.body + chinese.body).count("{{"), openings);
    QCOMPARE((english.body + chinese.body).count("{{close}}&lt;i&gt;"), openings);
    QVERIFY(page == "privacy" || english.body.contains("\"codeErr\" data-field=\"code\">The v"));
    QCOMPARE(m_emulator.requests(), QJsonArray());
}

void WebPagesTest::servesNothingElse()
{
    QVERIFY(m_emulator.http("GET", "/web/page.css").head.contains("text/css"));
    QVERIFY(m_emulator.http("GET", "/web/page.js").head.contains("text/javascript"));
    for (const QByteArray path : {"", "nothing", "texts.tsv", "parts/head", "../seed", "a/page.js"})
        QCOMPARE(m_emulator.http("GET", "/web/" + path).code, 404);
}

void WebPagesTest::textsAreComplete()
{
    const QDir web = QFileInfo(QFINDTESTDATA("../../emulator/web/texts.tsv")).dir();
    const QString html = readAll(web, "*.html") + readAll(web.filePath("parts"), "*.html");
    const QString texts = readAll(web, "texts.tsv"), scripts = readAll(web, "*.js");
    for (const QString &line : texts.trimmed().split('\n').mid(1)) {
        const QStringList columns = line.split('\t');
        const QString key = columns.first(), rest = key.section('.', 1);
        QVERIFY2(columns.size() == (html.contains("id=\"" + columns.value(3) + '"') ? 4 : 3) &&
                     !columns.contains(QString()),
                 qPrintable(line));
        QVERIFY2(html.contains("{{" + key + "}}") || html.contains("{{page." + rest + "}}") ||
                     scripts.contains("'" + rest + "'"),
                 qPrintable(line));
    }
}

QTEST_GUILESS_MAIN(WebPagesTest)
#include "tst_webpages.moc"
