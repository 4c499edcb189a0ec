#include "support/Rows.h"
#include "support/ScriptedClient.h"

#include <QtCore/QJsonArray>

namespace {

const QVariantMap china{
    {"id", 86}, {"name", "China"}, {"languages", "[\"zh\",\"en\"]"}, {"timezones", "[8]"}};
const QVariantMap france{{"id", "33"}, {"name", "France"}, {"more", 1}};

Script countries(const QVariantList &list)
{
    return Script::answering(list);
}

} // namespace

/// Countries and the current one: how entries are unpacked, and the two caches in every order.
class tst_Countries : public ScriptedClient
{
    Q_OBJECT

private Q_SLOTS:
    void unpacksCountries();
    void fallsBackOnCachedCountries();
    void asksForTheCountryOnlyOnce();
    void findsTheCountryThroughEveryOrder_data();
    void findsTheCountryThroughEveryOrder();
};

void tst_Countries::unpacksCountries()
{
    const QVariantMap sent{{"id", 1}, {"timezones", "[8]"}, {"more", QVariantList{1}}};
    const QJsonArray two{"zh", QString::fromUtf8("ä")};
    QVariantList entries{with(sent, {{"languages", QString::fromUtf8("[\"zh\", \"ä\"]")}}),
                         "no map"};
    for (const QVariant &wrong :
         {QVariant("{\"a\":[1]}"), QVariant("[\"zh\""), QVariant(QVariantList{"zh"})})
        entries << with(sent, {{"languages", wrong}});
    cloud.play(countries(entries));
    QVariantList list{"old"};
    QCOMPARE(client->reqCountries(list).errorCode, Code::NoError);
    QCOMPARE(list.size(), 5);
    const QVariantMap known = with(sent, {{"timezones", QJsonArray{8}}});
    QCOMPARE(shown(list[0].toMap()), shown(with(known, {{"languages", two}})));
    QCOMPARE(shown(list[1].toMap()),
             shown({{"languages", QJsonArray()}, {"timezones", QJsonArray()}}));
    for (const QVariant &entry : list.mid(2))
        QCOMPARE(shown(entry.toMap()), shown(with(known, {{"languages", QJsonArray()}})));
}

void tst_Countries::fallsBackOnCachedCountries()
{
    const QVariantList before{"old"};
    QVariantList list = before;
    const LogCapture log;
    const auto refused = [&] {
        list = before;
        cloud.play(Script::refusing("dberr"));
        return client->reqCountries(list).errorCode == Code::DbErr;
    };
    QVERIFY(refused());
    QCOMPARE(list, before);

    cloud.play(countries({france, china}));
    client->reqCountries(list);
    const QVariantList cached = list;
    QVERIFY(refused());
    QCOMPARE(list, cached);

    cloud.play(Script::answering("no list")); // empties list and cache
    QCOMPARE(client->reqCountries(list).errorCode, Code::NoError);
    QCOMPARE(list, QVariantList());
    QVERIFY(refused());
    QCOMPARE(list, before);
    QCOMPARE(log.lines().filter("reqCountries"),
             QStringList({"debug reqCountries  1 0", "debug reqCountries  1 0",
                          "debug reqCountries  2 0", "debug reqCountries  1 2",
                          "debug reqCountries  2 2", "debug reqCountries  0 2",
                          "debug reqCountries  1 0"}));
}

void tst_Countries::asksForTheCountryOnlyOnce()
{
    cloud.play(Script::answering("86"));
    cloud.play(countries({france, china, france}));
    QCOMPARE(client->reqCurrentCountry(text, map).errorCode, Code::NoError);
    QCOMPARE(text, "China");
    QCOMPARE(map.value("languages").toJsonArray(), (QJsonArray{"zh", "en"}));
    for (const QString mode : {"", "Online", "online "})
        client->reqCurrentCountry(text, map, mode);
    QCOMPARE(cloud.names(), QStringList({"ipCountry", "fetchCountries"}));

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
    // The outcomes are '+' or '-' for each request that is made.
    const auto row = columns<bool, bool, bool, QString, QString>("areaKnown", "listKnown", "online",
                                                                 "outcomes", "country");
    row("area fails", false, false, false, "-", "before");
    row("list fails", false, false, false, "+-", "33");
    row("area fails, list known", false, true, false, "-", "before");
    row("list fails, area known", true, false, false, "-", "before");
    row("both known", true, true, false, "", "France");
    row("online, area fails", true, true, true, "-", "before");
    row("online, list fails", true, true, true, "+-", "33");
    row("online", true, true, true, "++", "France");
}

void tst_Countries::findsTheCountryThroughEveryOrder()
{
    QFETCH(bool, areaKnown);
    QFETCH(bool, listKnown);
    QFETCH(bool, online);
    QFETCH(QString, outcomes);
    QString ignored;
    QVariantList list;
    if (areaKnown) {
        cloud.play(Script::answering(33));
        QCOMPARE(client->getCurrentPhoneArea(ignored).errorCode, Code::NoError);
        QCOMPARE(ignored, "33");
    }
    if (listKnown) {
        cloud.play(countries({china, france}));
        client->reqCountries(list);
    }
    cloud.reset();
    const bool areaFirst = !areaKnown || online;
    for (int i = 0; i < outcomes.size(); ++i) {
        if (outcomes[i] == '-')
            cloud.play(Script::refusing("dberr"));
        else
            cloud.play(i == 0 && areaFirst ? Script::answering("33") : countries({france}));
    }
    const bool fails = outcomes.endsWith('-');
    QCOMPARE(client->reqCurrentCountry(text, map, online ? "online" : "").errorCode,
             fails ? Code::DbErr : Code::NoError);
    QCOMPARE(int(cloud.calls().size()), outcomes.size());
    QTEST(text, "country");
    QCOMPARE(map.value("name"), fails ? QVariant() : QVariant("France"));

    // What was known before still is, whatever failed.
    if (!areaKnown || !listKnown)
        return;
    cloud.reset();
    QCOMPARE(client->reqCurrentCountry(text, map).errorCode, Code::NoError);
    QCOMPARE(text, "France");
    QVERIFY(cloud.calls().empty());
}

QTEST_GUILESS_MAIN(tst_Countries)
#include "tst_countries.moc"
