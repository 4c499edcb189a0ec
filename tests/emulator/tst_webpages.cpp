// SPDX-License-Identifier: MIT
#include "support/AccountClient.h"
#include "support/Rows.h"

#include <QtCore/QDirIterator>

using VelqorPassPort::Testing::Emulator;
using Client = AccountClient;

namespace {

const QJsonObject company{
    {"companyName", "Lab"}, {"companyType", "mill"}, {"companyPurpose", "work"}};
const char carol[] = "carol@example.com";
const QString carolsPassword = "correct horse 4";

} // namespace

/// The web pages, and the requests that they alone make.
class WebPagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_emulator.start()); }
    void cleanupTestCase() { QVERIFY(m_emulator.stop()); }
    void init() { QVERIFY(m_emulator.reset()); }

    void believesCodes_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<QString>("contact");
        QTest::addColumn<QString>("area");
        QTest::addColumn<QString>("expected");    // a word, or a part of a sentence
        QTest::addColumn<QJsonObject>("changes"); // after the code has been sent
        const auto row = [](const char *request, const char *contact, const char *area,
                            const char *expected, const QJsonObject &changes = {}) {
            QTest::addRow("%s %s%s %s", request, area, contact, expected)
                << QString(request) << QString(contact) << QString(area) << QString(expected)
                << changes;
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
        row("supply", carol, "", "ok"); // her own
    }

    void believesCodes()
    {
        QFETCH(QString, request);
        QFETCH(QString, contact);
        QFETCH(QString, area);
        QFETCH(QString, expected);
        QFETCH(QJsonObject, changes);
        const bool supply = request == "supply";
        const QString password = supply ? carolsPassword : "secret 1";
        const QString token = Client::token(m_client.logIn(carol, carolsPassword));
        QJsonObject fields = Client::with(m_client.sentCode(request, contact, area), company);
        fields["password"] = password;
        const auto reply = m_client.post(request, Client::with(fields, changes), token);
        QVERIFY2(Client::word(reply).contains(expected), reply.body);
        QCOMPARE(reply.httpStatus, expected.contains(' ') ? 400 : 200);
        const auto again = [&] { return Client::word(m_client.post(request, fields, token)); };
        if (!changes.isEmpty()) // what was denied has not spent the code
            QCOMPARE(again(), "ok");
        const auto signedIn = m_client.logIn(contact, password, area);
        const QJsonObject record = Client::result(signedIn).toObject();
        QCOMPARE(record.isEmpty(), changes.isEmpty() && expected != "ok");
        if (record.isEmpty())
            return;
        const QJsonArray contacts{record.value("email"), record.value("phone")};
        QVERIFY(contacts.contains(contact));
        QCOMPARE(record.value("companyName").toString(), supply ? "Lab" : "");
        QCOMPARE(again(), supply ? "codeExpired" : "existErr");
    }

    void supplyNeedsNoContact()
    {
        const QString token = Client::token(m_client.logIn(carol, carolsPassword));
        const QJsonObject half = Client::with(company, {{"username", "a@b"}});
        QCOMPARE(Client::word(m_client.post("supply", company, "nobody's")), "authErr");
        QCOMPARE(m_client.post("supply", half, token).httpStatus, 400);
        QCOMPARE(Client::word(m_client.post("supply", company, token)), "ok");
        const QJsonValue record = Client::result(m_client.logIn(carol, carolsPassword));
        QCOMPARE(record["companyPurpose"].toString(), "work");
    }

    void servesPages_data()
    {
        const auto row = columns<QByteArray>("page");
        for (const char *page :
             {"sign-in", "sign-up", "forgotten-password", "add-information", "privacy"})
            row(page, page);
    }

    void servesPages()
    {
        QFETCH(QByteArray, page);
        const auto get = [&](const QByteArray &query, const QByteArray &language) {
            return m_emulator.http("GET", "/web/" + page + "?oem={{close}}%3Ci>" + query, {},
                                   {"Accept-Language: " + language});
        };
        const auto english = get("", "en-US,zh;q=0.5");
        const auto chinese = get("&lang=zh-cn", "en");
        QVERIFY2(english.head.contains("Content-Security-Policy: default-src 'self';"),
                 english.head);
        QVERIFY2(english.head.contains("Content-Type: text/html; charset=utf-8"), english.head);
        QVERIFY(english.body.contains("<html lang=\"en\">") &&
                english.body.contains("?lang=zh-cn"));
        QVERIFY(chinese.body.contains("<html lang=\"zh-CN\">") &&
                chinese.body.contains("?lang=en"));
        QCOMPARE(get("", "zh-TW,en;q=0.5").body.count("zh-CN"), chinese.body.count("zh-CN"));
        QCOMPARE(get("&lang=en", "zh").body, get("&lang=en", "fr").body);
        const int openings = page == "privacy" ? 2 : 0; // what the caller wrote, as it is
        QCOMPARE((english.body + chinese.body).count("{{"), openings);
        QCOMPARE((english.body + chinese.body).count("{{close}}&lt;i&gt;"), openings);
        QVERIFY(page == "privacy" ||
                english.body.contains("\"codeErr\" data-field=\"code\">The v"));
        QVERIFY(!english.body.contains("data-field=\"-\""));
        QCOMPARE(m_emulator.requests(), QJsonArray());
    }

    void servesNothingElse()
    {
        for (const QByteArray path :
             {"/web/page.css text/css", "/web/page.js text/javascript", "/ no-store nosniff",
              "/_dev/faults no-store nosniff", "/_dev/no nosniff", "/v1/status application/json"}) {
            const QList<QByteArray> words = path.split(' ');
            const auto whole = m_emulator.http("GET", words[0]);
            auto head = m_emulator.http("HEAD", words[0]);
            head.head.replace("Accept-Ranges: bytes\r\n", ""); // the library's, for HEAD alone
            QVERIFY2(head.head == whole.head && head.body.isEmpty(), head.head + head.body);
            for (const QByteArray &word : words.mid(1))
                QVERIFY2(whole.head.contains(word), whole.head);
        }
        for (const QByteArray path :
             {"", "nothing", "texts.tsv", "parts/head", "../seed", "a/page.js"})
            QCOMPARE(m_emulator.http("GET", "/web/" + path).httpStatus, 404);
    }

    void textsAreComplete()
    {
        QString html;
        QDirIterator pages(QFINDTESTDATA("../../emulator/web"), {"*.html"}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (pages.hasNext())
            html += textOf(pages.next());
        for (const char *file : {"web", "console"}) {
            const QString path = QString("../../emulator/%1/texts.tsv").arg(file);
            for (const QString &line : textOf(QFINDTESTDATA(path)).trimmed().split('\n').mid(1)) {
                const QStringList columns = line.split('\t');
                QVERIFY2(columns.size() >= 3 && !columns.contains(QString()), qPrintable(line));
                const QString field = QString("id=\"%1\"").arg(columns.value(3));
                QVERIFY2(columns.size() == 3 || html.contains(field), qPrintable(line));
            }
        }
    }

private:
    Emulator m_emulator;
    const Client m_client{m_emulator};
};

QTEST_GUILESS_MAIN(WebPagesTest)
#include "tst_webpages.moc"
