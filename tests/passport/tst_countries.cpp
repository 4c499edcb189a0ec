// SPDX-License-Identifier: MIT
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
    void unpacksCountries()
    {
        const QVariantMap sent{{"id", 1}, {"timezones", "[8]"}, {"more", QVariantList{1}}};
        QVariantList entries{with(sent, {{"languages", "[\"zh\", \"ä\"]"}}), "no map"};
        for (const QVariant &wrong :
             {QVariant("{\"a\":[1]}"), QVariant("[\"zh\""), QVariant(QVariantList{"zh"})})
            entries << with(sent, {{"languages", wrong}});
        cloud.play(countries(entries));
        QVariantList list{"old"};
        QCOMPARE(client->reqCountries(list).errorCode, Code::NoError);
        QCOMPARE(list.size(), 5);
        const QVariantMap known = with(sent, {{"timezones", QJsonArray{8}}});
        QCOMPARE(shown(list[0].toMap()),
                 shown(with(known, {{"languages", QJsonArray{"zh", "ä"}}})));
        QCOMPARE(shown(list[1].toMap()),
                 shown({{"languages", QJsonArray()}, {"timezones", QJsonArray()}}));
        for (const QVariant &entry : list.mid(2))
            QCOMPARE(shown(entry.toMap()), shown(with(known, {{"languages", QJsonArray()}})));
    }

    void fallsBackOnCachedCountries()
    {
        const QVariantList before{"old"};
        QVariantList list;
        const auto listWhenRefused = [&] {
            list = before;
            cloud.play(Script::refusing("dberr"));
            return client->reqCountries(list).errorCode == Code::DbErr ? list : QVariantList();
        };
        QCOMPARE(listWhenRefused(), before);
        cloud.play(countries({france, china}));
        client->reqCountries(list);
        const QVariantList cached = list;
        QCOMPARE(listWhenRefused(), cached);
        cloud.play(Script::answering("no list")); // empties list and cache
        QCOMPARE(client->reqCountries(list).errorCode, Code::NoError);
        QCOMPARE(list, QVariantList());
        QCOMPARE(listWhenRefused(), before);
    }

    void findsTheCountryThroughEveryOrder_data()
    {
        // The outcomes are '+' or '-' for each request that is made.
        const auto row = columns<bool, bool, QString, QString, QString>(
            "areaKnown", "listKnown", "mode", "outcomes", "country");
        row("both fetched", false, false, "Online", "++", "France");
        row("area fails", false, false, "", "-", "before");
        row("list fails", false, false, "", "+-", "33");
        row("area fails, list known", false, true, "", "-", "before");
        row("list fails, area known", true, false, "", "-", "before");
        row("both known", true, true, "online ", "", "France");
        row("online, area fails", true, true, "online", "-", "before");
        row("online, list fails", true, true, "online", "+-", "33");
        row("online", true, true, "online", "++", "France");
    }

    void findsTheCountryThroughEveryOrder()
    {
        QFETCH(bool, areaKnown);
        QFETCH(bool, listKnown);
        QFETCH(QString, mode);
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
        const bool areaFirst = !areaKnown || mode == "online";
        for (int i = 0; i < outcomes.size(); ++i) {
            if (outcomes[i] == '-')
                cloud.play(Script::refusing("dberr"));
            else
                cloud.play(i == 0 && areaFirst ? Script::answering("33")
                                               : countries({france, china, france}));
        }
        const bool fails = outcomes.endsWith('-');
        QCOMPARE(client->reqCurrentCountry(text, map, mode).errorCode,
                 fails ? Code::DbErr : Code::NoError);
        QCOMPARE(int(cloud.calls().size()), outcomes.size());
        QTEST(text, "country");
        QCOMPARE(map.value("name"), fails ? QVariant() : QVariant("France"));

        // What was known before still is, whatever failed.
        if (fails && !(areaKnown && listKnown))
            return;
        cloud.reset();
        QCOMPARE(client->reqCurrentCountry(text, map).errorCode, Code::NoError);
        QCOMPARE(text, "France");
        QVERIFY(cloud.calls().empty());
    }

    void keepsWhatItHasForACountryNobodyLists()
    {
        cloud.play(Script::answering("99"));
        cloud.play(countries({france}));
        QCOMPARE(client->reqCurrentCountry(text, map).errorCode, Code::NoError);
        QCOMPARE(text, "99");
        QCOMPARE(map, mapBefore);
        text = "before";
        QCOMPARE(client->reqCurrentCountry(text, map).errorCode, Code::NoError);
        QCOMPARE(text, "before");
    }
};

QTEST_GUILESS_MAIN(tst_Countries)
#include "tst_countries.moc"
