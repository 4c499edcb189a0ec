#include "Report.h"
#include "Start.h"

#include <QtTest/QtTest>

/// What the web tool takes from a host and from a page.
class tst_Reports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printsReports_data();
    void printsReports();
    void keepsReportsInOnePiece();
    void readsItsArguments_data();
    void readsItsArguments();
    void knowsItsOrigin_data();
    void knowsItsOrigin();
};

void tst_Reports::printsReports_data()
{
    QTest::addColumn<QString>("report");
    QTest::addColumn<QByteArray>("printed");
    const auto row = [](const char *name, const char *report, const char *printed) {
        QTest::newRow(name) << QString(report) << QByteArray(printed);
    };
    row("sign-in", "signed-in?token=a.b_c&userId=42",
        "openLoginURL_token_starta.b_copenLoginURL_token_end"
        "openLoginURL_user_id_start42openLoginURL_user_id_end\n");
    row("sign-in without token", "signed-in?userId=42", "");
    row("sign-in, empty user", "signed-in?token=a&userId=", "");
    row("token with a line end", "signed-in?token=a%0Ab&userId=42", "");
    row("token outside ASCII", "signed-in?token=%C3%A9&userId=42", "");
    row("token with a marker", "signed-in?token=openLoginURL_token_end&userId=42", "");
    row("account", "account?userName=alice&password=s%26c%25%2B&phoneArea=86",
        "userLoadSuccess start: alice s&c%+ 86 end\n");
    row("account outside ASCII", "account?userName=%E6%9D%8E&password=%C3%9F&phoneArea=",
        "userLoadSuccess start: \xe6\x9d\x8e \xc3\x9f  end\n");
    row("account with an emoji", "account?userName=a&password=%F0%9F%94%91x&phoneArea=1",
        "userLoadSuccess start: a \xf0\x9f\x94\x91x 1 end\n");
    row("account with a space", "account?userName=alice&password=a%20b&phoneArea=86", "");
    row("account with a form's space", "account?userName=alice&password=a+b&phoneArea=86", "");
    row("account with a wide space", "account?userName=a&password=a%E2%80%83b&phoneArea=86", "");
    row("account with a zero", "account?userName=a&password=a%00b&phoneArea=86", "");
    row("account with an end", "account?userName=brenda&password=x&phoneArea=86", "");
    row("account with a marker", "account?userName=closeSignal&password=x&phoneArea=86", "");
    row("account without password", "account?userName=alice&phoneArea=86", "");
    row("bytes that are no text", "account?userName=%FF%FE&password=x&phoneArea=", "");
    row("supplied", "supplied", "supplyResult success!\n");
    row("close", "close?x=userLoadSuccess", "closeSignal\n");
    row("unknown", "openLoginURL_token_start", "");
    row("nothing", "", "");
}

void tst_Reports::printsReports()
{
    QFETCH(QString, report);
    QTEST(reportText(QUrl("openweburl:" + report)), "printed");
}

void tst_Reports::keepsReportsInOnePiece()
{
    constexpr int pipeBuffer = 4096;
    const int frame = reportText(QUrl("openweburl:signed-in?token=a&userId=b")).size() - 1;
    const QString token(pipeBuffer - frame, 'a');
    const QString report = "openweburl:signed-in?userId=b&token=";
    QCOMPARE(reportText(QUrl(report + token)).size(), pipeBuffer);
    QCOMPARE(reportText(QUrl(report + token + 'a')), QByteArray());
}

void tst_Reports::readsItsArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("page"); // empty: refused
    QTest::addColumn<int>("timeout");  // -1: none
    const QString web = "http://127.0.0.1:8787/web";
    QTest::newRow("usual") << QStringList{web, "en", "7000"} << web << 7000;
    QTest::newRow("decoded") << QStringList{"http://h/a b/\u674e?x=1%25", "", "0"}
                             << "http://h/a%20b/%E6%9D%8E?x=1%25" << 100;
    QTest::newRow("file") << QStringList{"file:///a b.html", "en", "-3"} << "file:///a%20b.html"
                          << -1;
    QTest::newRow("add information") << QStringList{web, "T", "http://b", "en"} << web << 5000;
    QTest::newRow("no address") << QStringList{"/path", "en", "7000"} << "" << -1;
    QTest::newRow("no host") << QStringList{"http:///x", "en", "7000"} << "" << -1;
    QTest::newRow("script") << QStringList{"javascript:alert(1)", "en", "7000"} << "" << -1;
    QTest::newRow("no number") << QStringList{web, "en", "7s"} << "" << -1;
    QTest::newRow("too few") << QStringList{web, "en"} << "" << -1;
    QTest::newRow("too many") << QStringList{web, "T", "b", "en", "7"} << "" << -1;
}

void tst_Reports::readsItsArguments()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, page);
    QString problem;
    const std::optional<Start> start = Start::fromArguments(arguments, problem);
    QCOMPARE(start ? QString::fromLatin1(start->page.toEncoded()) : QString(), page);
    QCOMPARE(problem.isEmpty(), start.has_value());
    const auto none = std::chrono::milliseconds(-1);
    QTEST(int(start.value_or(Start()).reloadTimeout.value_or(none).count()), "timeout");
    if (arguments.size() == 4)
        QCOMPARE((QStringList{start->token, start->base, start->text}), arguments.mid(1));
}

void tst_Reports::knowsItsOrigin_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("initiator");
    QTest::addColumn<bool>("own");
    QTest::newRow("same") << "http://h:81/web"
                          << "http://h:81" << true;
    QTest::newRow("usual port") << "https://h/web"
                                << "https://h:443" << true;
    QTest::newRow("other port") << "http://h:81/web"
                                << "http://h:82" << false;
    QTest::newRow("other scheme") << "https://h/web"
                                  << "http://h:443" << false;
    QTest::newRow("other host") << "https://h/web"
                                << "https://h.evil" << false;
    QTest::newRow("opaque") << "https://h/web"
                            << "" << false;
    QTest::newRow("file") << "file:///x"
                          << "file:///x" << false;
}

void tst_Reports::knowsItsOrigin()
{
    QFETCH(QString, page);
    QFETCH(QString, initiator);
    Start start;
    start.page = QUrl(page);
    QTEST(start.isOwnOrigin(QUrl(initiator)), "own");
}

QTEST_GUILESS_MAIN(tst_Reports)

#include "tst_reports.moc"
