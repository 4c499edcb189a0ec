// SPDX-License-Identifier: MIT
#include "support/Rows.h"
#include "web/WebOutput_p.h"

using namespace VelqorPassPort;

/// What is cut out of a chunk of the web tool's output.
class tst_WebOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsValues_data()
    {
        const auto row = columns<QByteArray, QString>("chunk", "value");
        row("among other bytes", "xx<begin>ABC<stop>yy", "ABC");
        row("empty", "<begin><stop>", "");
        row("not trimmed", "<begin> A\n<stop>", " A\n");
        row("Latin-1", "<begin>\xc3\xa9<stop>", "\u00c3\u00a9");
        row("zero byte", QByteArray("\0<begin>A\0B<stop>", 17), "A");
        row("first of each", "<begin>A<stop><begin>B<stop>", "A");
        row("two starts", "<begin>A<begin>B<stop>", "A<begin>B");
        row("end before start", "<stop>A<begin>B<stop>C", "B<stop>C");
        row("end just before start", "<stop><begin>B", "B");
        row("start alone", "<begin>A", "none");
        row("end alone", "A<stop>", "none");
    }

    void cutsValues()
    {
        QFETCH(QByteArray, chunk);
        QTEST(valueBetween(chunk, "<begin>", "<stop>").value_or("none"), "value");
    }

    void cutsDetails_data()
    {
        const auto row = columns<QString, QString, QStringList>("text", "untilEnd", "parts");
        row("whole", "Success start: alice secret 86 end", "Success start: alice secret 86 ",
            {"", "alice", "secret", "86", ""});
        row("short", "start:alice end", "start:alice ", {"alice", ""});
        row("two spaces", "start:  a b end", "start:  a b ", {"", "", "a", "b", ""});
        row("end in a field", "start: brenda x 1 end", "start: br", {"", "br"});
        row("no end", "start: a b 1", "start: a b 1", {"", "a", "b", "1"});
        row("no start", "12345 a b 1 end", "12345 a b 1 ", {"", "a", "b", "1", ""});
        row("no start, short", "1234", "1234", {""});
        row("end before start", "the end of it, start: a b 1", "the ", {""});
        row("lines are no separators", "start:\na b\n1 end", "start:\na b\n1 ",
            {"\na", "b\n1", ""});
    }

    void cutsDetails()
    {
        QFETCH(QString, text);
        const AccountDetails details = accountDetails(text);
        QTEST(details.untilEnd, "untilEnd");
        QTEST(details.parts, "parts");
        QCOMPARE(details.parts.join(' '), details.afterStart);
    }

    void decodesUpToAZeroByte()
    {
        QCOMPARE(textOf(QByteArray("\xe6\x9d\x8e\0end", 7)), QString("\u674e"));
        QCOMPARE(textOf(QByteArray("\0end", 4)), QString());
        QCOMPARE(textOf(QByteArray("\xff")), QString("\ufffd"));
    }
};

QTEST_GUILESS_MAIN(tst_WebOutput)
#include "tst_weboutput.moc"
