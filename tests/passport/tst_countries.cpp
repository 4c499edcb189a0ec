#include "passport/PassportNubelo.h"
#include "support/LogCapture.h"

#include <ScriptedCloud.h>

#include <QtCore/QJsonArray>
#include <QtTest/QtTest>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;
using Record = PassportCommunityError;

namespace {

// With the types of the values, which QVariant's comparison would convert.
QString shown(const QVariantMap &map)
{
    QString text;
    QDebug(&text) << map;
    return text;
}

const QVariantMap china{
    {"id", 86}, {"name", "China"}, {"languages", "[\"zh\",\"en\"]"}, {"timezones", "[8]"}};
const QVariantMap france{{"id", "33"}, {"name", "France"}, {"more", 1}};

Script countries(const QVariantList &list)
{
    return Script::answering(list);
}

} // namespace

/// Countries and the current one: how entries are unpacked, and the two caches in every order.
class tst_Countries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void unpacksCountries_data();
    void unpacksCountries();
    void fallsBackOnCachedCountries();
    void keepsThePhoneAreaThroughFailures();
    void asksForTheCountryOnlyOnce();
    void findsTheCountryThroughEveryOrder_data();
    void findsTheCountryThroughEveryOrder();

private:
    ScriptedCloud &cloud = ScriptedCloud::instance();
    std::unique_ptr<PassportNubelo> client;
    QVariantMap map;
    QString text;
};

void tst_Countries::init()
{
    cloud.reset();
    client = std::make_unique<PassportNubelo>();
    map = {{"old", 1}};
    text = "before";
}

void tst_Countries::unpacksCountries_data()
{
    QTest::addColumn<QVariant>("languages");
    QTest::addColumn<QJsonArray>("unpacked");
    QTest::newRow("two") << QVariant("[\"zh\", \"\xc3\xa4\"]")
                         << QJsonArray{"zh", QString::fromUtf8("ä")};
    QTest::newRow("empty text") << QVariant("") << QJsonArray();
    QTest::newRow("object") << QVariant("{\"a\":[1]}") << QJsonArray();
    QTest::newRow("cut short") << QVariant("[\"zh\"") << QJsonArray();
    QTest::newRow("a list already") << QVariant(QVariantList{"zh"}) << QJsonArray();
    QTest::newRow("missing") << QVariant() << QJsonArray();
}

void tst_Countries::unpacksCountries()
{
    QFETCH(QVariant, languages);
    QFETCH(QJsonArray, unpacked);
    QVariantMap sent{{"id", 1}, {"timezones", "[8]"}, {"more", QVariantList{1}}};
    if (languages.isValid())
        sent.insert("languages", languages);
    cloud.play(countries({sent, "no map"}));
    QVariantList list{"old"};
    const LogCapture log;
    QCOMPARE(client->reqCountries(list).errorCode, Code::NoError);
    QCOMPARE(list.size(), 2);
    sent["languages"] = unpacked;
    sent["timezones"] = QJsonArray{8};
    QCOMPARE(shown(list[0].toMap()), shown(sent));
    QCOMPARE(shown(list[1].toMap()),
             shown({{"languages", QJsonArray()}, {"timezones", QJsonArray()}}));
    QCOMPARE(log.lines().filter("reqCountries"),
             QStringList({"debug reqCountries  1 0", "debug reqCountries  2 0"}));
}

void tst_Countries::fallsBackOnCachedCountries()
{
    const QVariantList before{"old"};
    QVariantList list = before;
    const LogCapture log;
    cloud.play(Script::refusing("dberr"));
    QCOMPARE(client->reqCountries(list).errorCode, Code::DbErr);
    QCOMPARE(list, before);

    cloud.play(countries({france, china}));
    client->reqCountries(list);
    const QVariantList cached = list;
    list = before;
    cloud.play(Script::refusing("dberr"));
    QCOMPARE(client->reqCountries(list).errorCode, Code::DbErr);
    QCOMPARE(list, cached);

    cloud.play(Script::answering("no list")); // empties list and cache
    QCOMPARE(client->reqCountries(list).errorCode, Code::NoError);
    QCOMPARE(list, QVariantList());
    list = before;
    cloud.play(Script::refusing("dberr"));
    client->reqCountries(list);
    QCOMPARE(list, before);
    QCOMPARE(log.lines().filter("reqCountries"),
             QStringList({"debug reqCountries  1 0", "debug reqCountries  1 0",
                          "debug reqCountries  2 0", "debug reqCountries  1 2",
                          "debug reqCountries  2 2", "debug reqCountries  0 2",
                          "debug reqCountries  1 0"}));
}

void tst_Countries::keepsThePhoneAreaThroughFailures()
{
    cloud.play(Script::answering(33));
    QCOMPARE(client->getCurrentPhoneArea(text).errorCode, Code::NoError);
    QCOMPARE(text, "33");
    text = "before";
    cloud.play(Script::failing(Nubelo::Error::Refused));
    QCOMPARE(client->getCurrentPhoneArea(text).errorCode, Code::EC_ConnectionRefusedError);
    QCOMPARE(text, "before");

    cloud.play(countries({france}));
    QCOMPARE(client->reqCurrentCountry(text, map).errorCode, Code::NoError);
    QCOMPARE(text, "France");
}

void tst_Countries::asksForTheCountryOnlyOnce()
{
    cloud.play(Script::answering("86"));
    cloud.play(countries({france, china, france}));
    QCOMPARE(client->reqCurrentCountry(text, map).errorCode, Code::NoError);
    QCOMPARE(text, "China");
    QCOMPARE(map.value("id"), QVariant(86));
    QCOMPARE(map.value("languages").toJsonArray(), (QJsonArray{"zh", "en"}));
    for (const QString mode : {"", "Online", "online "})
        client->reqCurrentCountry(text, map, mode);
    QCOMPARE(cloud.names(), QStringList({"ipCountry", "fetchCountries"}));

    cloud.play(Script::answering("33"));
    cloud.play(countries({france}));
    QCOMPARE(client->reqCurrentCountry(text, map, "online").errorCode, Code::NoError);
    QCOMPARE(text, "France");
    QCOMPARE(cloud.calls().size(), 4u);

    const QVariantMap found = map;
    cloud.play(Script::answering("99")); // a country that nobody lists
    cloud.play(countries({france}));
    QCOMPARE(client->reqCurrentCountry(text, map, "online").errorCode, Code::NoError);
    QCOMPARE(text, "99");
    QCOMPARE(map, found);
    text = "before";
    QCOMPARE(client->reqCurrentCountry(text, map).errorCode, Code::NoError);
    QCOMPARE(text, "before");
}

void tst_Countries::findsTheCountryThroughEveryOrder_data()
{
    QTest::addColumn<bool>("areaKnown");
    QTest::addColumn<bool>("listKnown");
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("outcomes"); // '+' or '-' for each request that is made
    QTest::addColumn<QString>("country");
    QTest::newRow("area fails") << false << false << ""
                                << "-"
                                << "before";
    QTest::newRow("list fails") << false << false << ""
                                << "+-"
                                << "33";
    QTest::newRow("area fails, list known") << false << true << ""
                                            << "-"
                                            << "before";
    QTest::newRow("list fails, area known") << true << false << ""
                                            << "-"
                                            << "before";
    QTest::newRow("both known") << true << true << ""
                                << ""
                                << "France";
    QTest::newRow("online, area fails") << true << true << "online"
                                        << "-"
                                        << "before";
    QTest::newRow("online, list fails") << true << true << "online"
                                        << "+-"
                                        << "33";
    QTest::newRow("online") << true << true << "online"
                            << "++"
                            << "France";
}

void tst_Countries::findsTheCountryThroughEveryOrder()
{
    QFETCH(bool, areaKnown);
    QFETCH(bool, listKnown);
    QFETCH(QString, mode);
    QFETCH(QString, outcomes);
    QString ignored;
    QVariantList list;
    if (areaKnown) {
        cloud.play(Script::answering("33"));
        client->getCurrentPhoneArea(ignored);
    }
    if (listKnown) {
        cloud.play(countries({china, france}));
        client->reqCountries(list);
    }
    cloud.reset();
    const bool areaFirst = !areaKnown || mode == "online";
    for (int i = 0; i < outcomes.size(); ++i) {
        if (outcomes[i] == '-')
            cloud.play(Script::refusing("dberr"));
        else
            cloud.play(i == 0 && areaFirst ? Script::answering("33") : countries({france}));
    }
    const bool fails = outcomes.endsWith('-');
    QCOMPARE(client->reqCurrentCountry(text, map, mode).errorCode,
             fails ? Code::DbErr : Code::NoError);
    QCOMPARE(int(cloud.calls().size()), outcomes.size());
    QTEST(text, "country");
    QCOMPARE(map.value("name"), fails ? QVariant() : QVariant("France"));

    // What was known before still is, whatever failed.
    if (!listKnown || !fails)
        return;
    cloud.play(Script::refusing("dberr"));
    list.clear();
    client->reqCountries(list);
    QCOMPARE(list.size(), 2);
}

QTEST_GUILESS_MAIN(tst_Countries)
#include "tst_countries.moc"
