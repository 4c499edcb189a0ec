// SPDX-License-Identifier: MIT
#include "Address.h"
#include "Report.h"
#include "Start.h"
#include "support/Rows.h"

/// What the web tool takes from a host and from a page.
class tst_Reports : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void printsReports_data()
    {
        const auto row = columns<QString, QByteArray>("report", "printed");
        row("sign-in", "signed-in?token=a.b_c&userId=42",
            "openLoginURL_token_starta.b_copenLoginURL_token_end"
            "openLoginURL_user_id_start42openLoginURL_user_id_end\n");
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
        row("account with a form's space", "account?userName=a+b&password=x&phoneArea=86", "");
        row("account without name", "account?userName=&password=x&phoneArea=86", "");
        row("account with a wide space", "account?userName=a&password=a%E2%80%83b&phoneArea=86",
            "");
        row("account with a zero", "account?userName=a&password=a%00b&phoneArea=86", "");
        row("account with an end", "account?userName=brenda&password=x&phoneArea=86", "");
        row("account with a marker", "account?userName=closeSignal&password=x&phoneArea=86", "");
        row("account without password", "account?userName=alice&phoneArea=86", "");
        row("bytes that are no text", "account?userName=%FF%FE&password=x&phoneArea=", "");
        row("supplied", "supplied", "supplyResult success!\n");
        row("close", "close?x=userLoadSuccess", "closeSignal\n");
        row("unknown", "openLoginURL_token_start", "");
    }

    void printsReports()
    {
        QFETCH(QString, report);
        QTEST(reportText(QUrl("openweburl:" + report)), "printed");
    }

    void keepsReportsInOnePiece()
    {
        constexpr int pipeBuffer = 4096;
        const int frame = reportText(QUrl("openweburl:signed-in?token=a&userId=b")).size() - 1;
        const QString token(pipeBuffer - frame, 'a');
        const QString report = "openweburl:signed-in?userId=b&token=";
        QCOMPARE(reportText(QUrl(report + token)).size(), pipeBuffer);
        QCOMPARE(reportText(QUrl(report + token + 'a')), QByteArray());
    }

    void readsItsArguments_data()
    {
        // No page: refused. -1: never loaded again.
        const auto row =
            columns<QStringList, QString, QString, int>("arguments", "page", "language", "timeout");
        const QString web = "http://127.0.0.1:8787/web";
        row("usual", {web + "?lang=zh-CN", "en", "7000"}, web + "?lang=zh-CN", "zh-CN", 7000);
        row("decoded", {QString::fromUtf8("http://h/a b/李?x=1%25"), "", "0"},
            "http://h/a%20b/%E6%9D%8E?x=1%25", "", 100);
        row("file", {"file:///a b.html", "en", "-3"}, "file:///a%20b.html", "en", -1);
        row("add information", {web, "T", "http://b", "en"}, web, "en", 5000);
        row("no host", {"http:///x", "en", "7000"}, "", "", -1);
        row("script", {"javascript:alert(1)", "en", "7000"}, "", "", -1);
        row("no number", {web, "en", "7s"}, "", "", -1);
        row("too few", {web, "en"}, "", "", -1);
        row("too many", {web, "T", "b", "en", "7"}, "", "", -1);
    }

    void readsItsArguments()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, page);
        QString problem;
        const std::optional<Start> start = Start::fromArguments(arguments, problem);
        QCOMPARE(start ? QString::fromLatin1(start->page.toEncoded()) : QString(), page);
        QCOMPARE(problem.isEmpty(), start.has_value());
        QTEST(start.value_or(Start()).pageLanguage(), "language");
        const auto none = std::chrono::milliseconds(-1);
        QTEST(int(start.value_or(Start()).reloadTimeout.value_or(none).count()), "timeout");
        if (arguments.size() == 4)
            QCOMPARE((QStringList{start->token, start->base, start->text}), arguments.mid(1));
    }

    void putsTheOriginFirst_data()
    {
        const auto row = columns<QString, QString, QString>("address", "title", "shown");
        const QString tooLong(300, 'x');
        row("usual port", "https://h/web", "Sign in", "h - Sign in");
        row("other port", "https://h:81/", "t", "https://h:81 - t");
        row("not secure", "http://h/", "t", "http://h - t");
        row("letters that look like others", QString::fromUtf8("https://b\u0430nk.com/"), "",
            "xn--bnk-6cd.com");
        row("user that looks like a host", "https://bank.com@[::1]:81/", "", "https://[::1]:81");
        row("long host", "https://bank.com." + QString("abcdefg.").repeated(20) + "org", "",
            QString::fromUtf8("…cdefg.") + QString("abcdefg.").repeated(5) + "org");
        row("long title", "https://h/", tooLong,
            "h - " + tooLong.left(79) + QString::fromUtf8("…"));
        row("title that turns and breaks", "https://h/",
            QString::fromUtf8("\u202Ea\n\tb\u200B\u2066"), "h - a b");
        row("no title", "http://u:p@h:81/%5Ba?t=S", "h:81/[a?t=S", "http://h:81");
        row("no title, secure", "https://h/?t=S", "https://h/?t=S", "h");
        row("no title, another script", "https://xn--e1afmkfd.com/",
            QString::fromUtf8("https://пример.com"), "xn--e1afmkfd.com");
        row("no title, file", "file:///b/a?t=S", "a?t=S", "file:");
        row("title like the host", "https://h.com/", "h.comfort", "h.com - h.comfort");
        row("file", "file:///a", "https://bank.com", "file: - https://bank.com");
    }

    void putsTheOriginFirst()
    {
        QFETCH(QString, address);
        QFETCH(QString, title);
        QFETCH(QString, shown);
        QCOMPARE(titleWithOrigin(QUrl(address), title),
                 shown.replace(" - ", QString::fromUtf8(" — ")));
    }

    void knowsItsOrigin_data()
    {
        const auto row = columns<QString, QString, bool>("page", "initiator", "own");
        row("same", "http://h:81/web", "http://h:81", true);
        row("usual port", "https://h/web", "https://h:443", true);
        row("other port", "http://h:81/web", "http://h:82", false);
        row("other scheme", "https://h/web", "http://h:443", false);
        row("other host", "https://h/web", "https://h.evil", false);
        row("opaque", "https://h/web", "", false);
        row("file", "file:///x", "file:///x", false);
    }

    void knowsItsOrigin()
    {
        QFETCH(QString, page);
        QFETCH(QString, initiator);
        Start start;
        start.page = QUrl(page);
        QTEST(start.isOwnOrigin(QUrl(initiator)), "own");
    }
};

QTEST_GUILESS_MAIN(tst_Reports)
#include "tst_reports.moc"
