// SPDX-License-Identifier: MIT
#include "support/AccountClient.h"
#include "support/Rows.h"

#include <QtCore/QJsonDocument>

using VelqorPassPort::Testing::Emulator;

namespace {

const QString ada = "ada@example.com", adasPassword = "correct horse 1";

} // namespace

/// What a developer sees and changes while a client runs.
class DeveloperTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_emulator.start()); }
    void cleanupTestCase() { QVERIFY(m_emulator.stop()); }
    void init() { QVERIFY(m_emulator.reset()); }

    void describesItsCalls()
    {
        const auto file = m_emulator.http("GET", "/_dev/openapi.json").json();
        QSet<QString> described, served;
        const QJsonObject paths = file["paths"].toObject();
        for (const QString &path : paths.keys()) {
            for (const QString &method : paths[path].toObject().keys()) {
                if (method != "parameters")
                    described << method.toUpper() + " /_dev" + path.section('{', 0, 0);
            }
        }
        const QString known = AccountClient::word(m_emulator.http("GET", "/_dev/"));
        for (const QString &route : known.section("known are ", 1).split(", "))
            served << route;
        QCOMPARE(described, served);
    }

    void keepsSessionsWhenAccountsChange()
    {
        const QString token = AccountClient::token(m_client.logIn(ada, adasPassword));
        const auto account = [this] { return m_emulator.devGet("accounts/10001").toObject(); };
        QCOMPARE(account()["password"].toString(), adasPassword);
        QCOMPARE(account()["sessions"].toInt(), 1);
        m_emulator.devPatch("accounts/10001", {{"username", "Ada"}, {"password", "new"}});
        QVERIFY(account()["builtIn"].toBool() && !account().contains("password"));
        QCOMPARE(logIn(ada, adasPassword), "pwdErr");
        QCOMPARE(logIn("Ada", "new"), "ok");
        m_emulator.devPatch("accounts/10001", {{"locked", true}});
        QCOMPARE(logIn("Ada", "new"), "illegalErr");
        QCOMPARE(AccountClient::word(m_client.profile(token, "10001")), "ok");

        const QJsonArray sessions = m_emulator.devGet("sessions").toArray();
        QCOMPARE(sessions.size(), 2);
        QCOMPARE(sessions[1].toObject()["username"].toString(), "Ada");
        m_emulator.devDelete(QString("sessions/%1").arg(sessions[1].toObject()["id"].toInt()));
        QCOMPARE(AccountClient::word(m_client.profile(token, "10001")), "authErr");
        QCOMPARE(m_emulator.devGet("sessions").toArray(), QJsonArray{sessions[0]});
    }

    void removesAccountsForGood()
    {
        const QJsonObject form{{"username", "new"}, {"password", "secret"}};
        const int id = m_emulator.devPost("accounts", form)["user_id"].toInt();
        const QString token = AccountClient::token(m_client.logIn("new", "secret"));
        m_emulator.devDelete(QString("accounts/%1").arg(id));
        QCOMPARE(m_emulator.devPost("accounts", form)["user_id"].toInt(), id + 1);
        for (int user : {id, id + 1})
            QCOMPARE(AccountClient::word(m_client.profile(token, QByteArray::number(user))),
                     "authErr");
    }

    void locksOut()
    {
        m_emulator.setSettings({{"lockOutTries", 2}, {"lockOutSeconds", 60}});
        QCOMPARE(logIn(ada, "?"), "pwdErr");
        QCOMPARE(logIn(ada, adasPassword), "ok"); // the row begins anew
        for (int i : {0, 1})
            QCOMPARE(logIn(ada, QString::number(i)), "pwdErr");
        QCOMPARE(logIn(ada, adasPassword), "illegalErr");
        m_emulator.devPost("clock", {{"advanceSeconds", 60}});
        QCOMPARE(logIn(ada, adasPassword), "ok");
        for (int i : {0, 1})
            QCOMPARE(logIn(ada, QString::number(i)), "pwdErr");
        m_emulator.devDelete("clock");
        QCOMPARE(logIn(ada, adasPassword), "ok");
    }

    void letsTimePass()
    {
        m_emulator.setSettings({{"sessionLifetimeSeconds", 100},
                                {"captchaLifetimeSeconds", 200},
                                {"codeLifetimeSeconds", 300},
                                {"codeIntervalSeconds", 0},
                                {"fixedCode", "012345"},
                                {"fixedCaptcha", "Abc"}});
        const QString token = AccountClient::token(m_client.logIn(ada, adasPassword));
        m_client.sentCode("login", ada);
        const QJsonObject fields = m_client.sentCode("login", ada);
        QCOMPARE(fields["validCode"].toString() + fields["captcha"].toString(), "012345Abc");
        QStringList seen;
        for (int i = 0; i < 3; ++i) {
            m_emulator.devPost("clock", {{"advanceSeconds", 100}});
            seen << AccountClient::word(m_client.profile(token, "10001"))
                 << m_emulator.devGet("captchas")[0]["state"].toString()
                 << m_emulator.inbox()[1].toObject()["state"].toString();
        }
        QCOMPARE(seen.join(' '),
                 "authErr valid valid authErr expired valid authErr expired expired");
        QCOMPARE(m_emulator.inbox()[0].toObject()["state"].toString(), "replaced");
        m_emulator.devDelete("clock");
        QCOMPARE(m_emulator.devGet("clock")["aheadSeconds"].toInt(), 0);
        QCOMPARE(AccountClient::word(m_client.profile(token, "10001")), "authErr"); // it is gone
        QCOMPARE(AccountClient::word(m_client.post("code-login", fields)), "ok");
        QCOMPARE(m_emulator.inbox()[1].toObject()["state"].toString(), "spent");
    }

    void recordsWhatWasAnswered()
    {
        m_emulator.addFault({{"request", "status"}, {"kind", "httpStatus"}, {"code", 503}});
        const int before = m_emulator.devGet("faults")[0]["id"].toInt();
        logIn(ada, "?");
        m_emulator.http("GET", "/v1/status");
        // As deep as a body may be, in a list that can be read nevertheless.
        m_emulator.http("POST", "/v1/user/login", QByteArray(1024, '[') + QByteArray(1024, ']'));
        const QJsonArray requests = m_emulator.requests();
        const auto of = [&](int i) { return requests[i].toObject(); };
        QCOMPARE(of(0)["word"].toString() + of(0)["fault"].toString(), "pwdErr");
        QCOMPARE(of(0)["answer"].toObject()["body"].toObject()["result"].toString(), "pwdErr");
        QCOMPARE(of(1)["httpStatus"].toInt(), 503);
        QCOMPARE(of(1)["fault"].toString(), "httpStatus");
        QCOMPARE(m_emulator.devGet("requests").toArray(), requests);
        const QString id = QString::number(of(1)["id"].toInt());
        const QVector<QPair<QString, int>> listings{
            {"after=" + id, 2},           {"after=0&limit=1", 0}, {"limit=1", 2},
            {"before=" + id, 0},          {"outcome=refused", 0}, {"outcome=fault", 1},
            {"limit=1&outcome=failed", 2}};
        for (const auto &[query, index] : listings)
            QCOMPARE(m_emulator.devGet("requests?" + query).toArray(), QJsonArray{requests[index]});
        m_emulator.devDelete(QString("faults/%1").arg(before));
        QCOMPARE(m_emulator.devGet("faults").toArray(), QJsonArray());
    }

    void goesOnFromItsExport()
    {
        m_emulator.devPost("accounts", {{"username", "new"}, {"password", "secret"}});
        m_emulator.setSettings({{"country", "DE"}, {"codeLifetimeSeconds", 7}});
        for (const char *large : {"accounts/10001", "accounts/10002"})
            m_emulator.devPatch(large, {{"note", QString(600000, 'x')}});
        const QJsonObject seed = m_emulator.devGet("export").toObject();
        m_emulator.reset();
        m_emulator.devPost("import", seed);
        QCOMPARE(m_emulator.devGet("settings"), seed["settings"]);
        QCOMPARE(logIn(ada, adasPassword) + logIn("new", "secret"), "okok");
    }

private:
    QString logIn(const QString &user, const QString &password) const
    {
        return AccountClient::word(m_client.logIn(user, password));
    }

    Emulator m_emulator;
    const AccountClient m_client{m_emulator};
};

QTEST_GUILESS_MAIN(DeveloperTest)
#include "tst_developer.moc"
