#include "support/AccountClient.h"

#include <QtTest/QtTest>

#include <atomic>
#include <thread>

using Client = AccountClient;

namespace {

constexpr int rounds = 50;
const QString ada = QStringLiteral("ada@example.com");
const QString carol = QStringLiteral("carol@example.com");

} // namespace

/// Kills the emulator again and again while two clients change what it keeps, and looks each time
/// whether all is there that it had acknowledged, and nothing is there by halves.
class DurabilityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsWhatItAcknowledged();

private:
    // Both work until an answer fails to come; each knows what has been acknowledged to it.
    void signInByCode();
    void resetPasswords();
    void checkSignIns();
    void checkPassword();

    QTemporaryDir m_directory;
    EmulatorProcess m_emulator{{"--data", m_directory.filePath("accounts.db")}};
    const Client m_client{m_emulator};
    std::atomic<int> m_changes[2]; // acknowledged in this round

    QStringList m_tokens;            // of Ada's sign-ins
    QVector<QJsonObject> m_newCodes; // used in this round, the last perhaps without a token
    QStringList m_newTokens;         // for them

    QString m_password = "correct horse 4"; // Carol's
    QString m_passwordInFlight;
    QString m_sessionBeforeReset;
    int m_passwords = 0;
};

void DurabilityTest::signInByCode()
{
    for (;;) {
        const QJsonObject code = m_client.sentCode("login", ada);
        if (code.isEmpty())
            return;
        m_newCodes.push_back(code);
        const QString token = Client::token(m_client.post("code-login", code));
        if (token.isEmpty())
            return;
        m_newTokens.append(token);
        ++m_changes[0];
    }
}

void DurabilityTest::resetPasswords()
{
    for (;;) {
        m_sessionBeforeReset = Client::token(m_client.logIn(carol, m_password));
        QJsonObject fields = m_client.sentCode("bpwd", carol);
        if (m_sessionBeforeReset.isEmpty() || fields.isEmpty())
            return;
        m_passwordInFlight = QString("password %1").arg(++m_passwords);
        fields.insert("password", m_passwordInFlight);
        if (Client::word(m_client.post("reset-password", fields)) != "ok")
            return;
        m_password = std::exchange(m_passwordInFlight, QString());
        ++m_changes[1];
    }
}

// Only the last of the codes may still be good, when its sign-in was not acknowledged.
void DurabilityTest::checkSignIns()
{
    for (int i = 0; i < m_newCodes.size(); ++i) {
        const QString word = Client::word(m_client.post("code-login", m_newCodes.at(i)));
        const bool good = word == "ok" && i >= m_newTokens.size();
        QVERIFY2(good || word == "codeExpired" || word == "captchaErr", qPrintable(word));
    }
    m_newCodes.clear();
    m_tokens += std::exchange(m_newTokens, {});
    for (const QString &token : qAsConst(m_tokens))
        QCOMPARE(Client::word(m_client.profile(token, "10001")), "ok");
}

// A reset that was not acknowledged has happened or not; the session goes with the old password.
void DurabilityTest::checkPassword()
{
    const bool happened = !m_passwordInFlight.isEmpty() &&
                          Client::word(m_client.logIn(carol, m_passwordInFlight)) == "ok";
    const bool oldIsGood = Client::word(m_client.logIn(carol, m_password)) == "ok";
    QCOMPARE(oldIsGood, !happened);
    if (!m_passwordInFlight.isEmpty())
        QCOMPARE(Client::word(m_client.profile(m_sessionBeforeReset, "10004")),
                 happened ? "authErr" : "ok");
    if (happened)
        m_password = m_passwordInFlight;
    m_passwordInFlight.clear();
}

void DurabilityTest::keepsWhatItAcknowledged()
{
    QVERIFY(m_emulator.start());
    QVERIFY(m_emulator.setSettings({{"codeIntervalSeconds", 0}})); // is kept, or codes would fail
    for (int round = 0; round < rounds && !QTest::currentTestFailed(); ++round) {
        for (auto &changes : m_changes)
            changes = 0;
        std::thread signingIn([this] { signInByCode(); });
        std::thread resetting([this] { resetPasswords(); });
        // Each in turn gets something done; at the kill both are in the middle of something.
        const bool busy =
            QTest::qWaitFor([&] { return m_changes[round % 2] >= 1 + round % 3; }, 30000);
        m_emulator.kill();
        signingIn.join();
        resetting.join();
        QVERIFY(busy);
        QVERIFY(m_emulator.start());
        checkSignIns();
        checkPassword();
    }
    QVERIFY(m_emulator.stop());
}

QTEST_GUILESS_MAIN(DurabilityTest)
#include "tst_durability.moc"
