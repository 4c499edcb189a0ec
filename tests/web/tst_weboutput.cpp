#include "web/WebOutput_p.h"

#include <QtTest/QtTest>

using namespace VelqorPassPort;

/// What is cut out of a chunk of the web tool's output.
class tst_WebOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsValues_data();
    void cutsValues();
    void cutsDetails_data();
    void cutsDetails();
    void decodesUpToAZeroByte();
};

void tst_WebOutput::cutsValues_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<bool>("found");
    QTest::addColumn<QString>("value");
    QTest::newRow("among other bytes") << QByteArray("xx<begin>ABC<stop>yy") << true << "ABC";
    QTest::newRow("empty") << QByteArray("<begin><stop>") << true << "";
    QTest::newRow("not trimmed") << QByteArray("<begin> A\n<stop>") << true << " A\n";
    QTest::newRow("Latin-1") << QByteArray("<begin>\xc3\xa9<stop>") << true
                             << QString("\u00c3\u00a9");
    QTest::newRow("zero byte") << QByteArray("<begin>A\0B<stop>", 16) << true << "A";
    QTest::newRow("zero byte before") << QByteArray("\0<begin>A<stop>", 15) << true << "A";
    QTest::newRow("first of each") << QByteArray("<begin>A<stop><begin>B<stop>") << true << "A";
    QTest::newRow("two starts") << QByteArray("<begin>A<begin>B<stop>") << true << "A<begin>B";
    QTest::newRow("end before start") << QByteArray("<stop>A<begin>B<stop>C") << true << "B<stop>C";
    QTest::newRow("end just before start") << QByteArray("<stop><begin>B") << true << "B";
    QTest::newRow("start alone") << QByteArray("<begin>A") << false << QString();
    QTest::newRow("end alone") << QByteArray("A<stop>") << false << QString();
    QTest::newRow("nothing") << QByteArray() << false << QString();
}

void tst_WebOutput::cutsValues()
{
    QFETCH(QByteArray, chunk);
    const std::optional<QString> value = valueBetween(chunk, "<begin>", "<stop>");
    QTEST(value.has_value(), "found");
    QTEST(value.value_or(QString()), "value");
}

void tst_WebOutput::cutsDetails_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("untilEnd");
    QTest::addColumn<QStringList>("parts");
    const QString head = "userLoadSuccess start:";
    QTest::newRow("whole") << head + " alice secret 86 end" << head + " alice secret 86 "
                           << QStringList{"", "alice", "secret", "86", ""};
    QTest::newRow("short") << head + "alice end" << head + "alice " << QStringList{"alice", ""};
    QTest::newRow("two spaces") << head + "  a b end" << head + "  a b "
                                << QStringList{"", "", "a", "b", ""};
    QTest::newRow("end in a field")
        << head + " brenda x 1 end" << head + " br" << QStringList{"", "br"};
    QTest::newRow("no end") << head + " a b 1" << head + " a b 1" << QStringList{"", "a", "b", "1"};
    QTest::newRow("no start") << "12345 a b 1 end"
                              << "12345 a b 1 " << QStringList{"", "a", "b", "1", ""};
    QTest::newRow("no start, short") << "1234"
                                     << "1234" << QStringList{""};
    QTest::newRow("end before start") << "the end of it, start: a b 1"
                                      << "the " << QStringList{""};
    QTest::newRow("end within start's reach") << "start:end"
                                              << "start:" << QStringList{""};
    QTest::newRow("lines are no separators")
        << head + "\na b\n1 end" << head + "\na b\n1 " << QStringList{"\na", "b\n1", ""};
}

void tst_WebOutput::cutsDetails()
{
    QFETCH(QString, text);
    const AccountDetails details = accountDetails(text);
    QTEST(details.untilEnd, "untilEnd");
    QTEST(details.parts, "parts");
    QCOMPARE(details.parts.join(' '), details.afterStart);
}

void tst_WebOutput::decodesUpToAZeroByte()
{
    QCOMPARE(textOf(QByteArray("\xe6\x9d\x8e\0end", 7)), QString("\u674e"));
    QCOMPARE(textOf(QByteArray("\0end", 4)), QString());
    QCOMPARE(textOf("\xff"), QString("\ufffd"));
}

QTEST_GUILESS_MAIN(tst_WebOutput)

#include "tst_weboutput.moc"
