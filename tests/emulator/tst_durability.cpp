#include "support/AccountClient.h"

#include <QtTest/QtTest>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr int rounds = 50;
const QString ada = QStringLiteral("ada@example.com");
const QString carol = QStringLiteral("carol@example.com");

using Client = AccountClient;

// Counts the acknowledged changes of one client, so that the kill comes after a given number.
class Tally
{
public:
    void add()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_count;
        m_changed.notify_all();
    }
    bool waitFor(int count)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(30), [&] { return m_count >= count; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_count = 0;
};

} // namespace

/// Kills the emulator again and again while several clients change what it keeps, and looks each
/// time whether all is there that it had acknowledged, and nothing is there by halves.
class DurabilityTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsWhatItAcknowledged();

private:
    // Each works until an answer fails to come; each knows what has been acknowledged to it.
    void signIn(Tally &tally);
    void signInByCode(Tally &tally);
    void resetPasswords(Tally &tally);
    void sendCodes(Tally &tally);

    void checkUsedCodes();
    void checkSignIns(bool all);
    void checkPassword();
    void checkCodes();

    QTemporaryDir m_directory;
    EmulatorProcess m_emulator{{"--data", m_directory.filePath("accounts.db")}};
    const Client m_client{m_emulator};

    QStringList m_tokens;             ///< of Ada's sign-ins before this round
    QStringList m_newTokens;          ///< of those by password in this round
    QStringList m_newTokensByCode;    ///< of those by code
    QVector<QJsonObject> m_usedCodes; ///< for them, the last perhaps without a token

    QString m_password = "correct horse 4"; ///< Carol's
    QString m_passwordInFlight;
    QString m_sessionBeforeReset;
    int m_passwords = 0;

    QSet<QString> m_codes; ///< sent to new users, each with its user
};

void DurabilityTest::signIn(Tally &tally)
{
    for (;;) {
        const QString token = Client::token(m_client.logIn(ada, "correct horse 1"));
        if (token.isEmpty())
            return;
        m_newTokens.append(token);
        tally.add();
    }
}

void DurabilityTest::signInByCode(Tally &tally)
{
    for (;;) {
        const QJsonObject code = m_client.sentCode("login", ada);
        if (code.isEmpty())
            return;
        m_usedCodes.push_back(code);
        const QString token = Client::token(m_client.post("code-login", code));
        if (token.isEmpty())
            return;
        m_newTokensByCode.append(token);
        tally.add();
    }
}

void DurabilityTest::resetPasswords(Tally &tally)
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
        tally.add();
    }
}

void DurabilityTest::sendCodes(Tally &tally)
{
    for (;;) {
        const QString newUser = QString("new user %1").arg(m_codes.size());
        const QJsonObject fields = m_client.sentCode("register", newUser);
        if (fields.isEmpty())
            return;
        m_codes.insert(newUser + fields.value("validCode").toString());
        tally.add();
    }
}

void DurabilityTest::checkSignIns(bool all)
{
    const QStringList tokens = m_newTokens + m_newTokensByCode + (all ? m_tokens : QStringList());
    for (const QString &token : tokens)
        QCOMPARE(Client::word(m_client.profile(token, "10001")), "ok");
    m_tokens += m_newTokens + m_newTokensByCode;
    m_newTokens.clear();
    m_newTokensByCode.clear();
}

// Only the last of the codes may still be good, when its sign-in was not acknowledged.
void DurabilityTest::checkUsedCodes()
{
    for (int i = 0; i < m_usedCodes.size(); ++i) {
        const QString word = Client::word(m_client.post("code-login", m_usedCodes.at(i)));
        const bool good = word == "ok" && i >= m_newTokensByCode.size();
        QVERIFY2(good || word == "codeExpired" || word == "captchaErr", qPrintable(word));
    }
    m_usedCodes.clear();
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

void DurabilityTest::checkCodes()
{
    QSet<QString> kept;
    const QJsonArray inbox = m_emulator.inbox();
    for (const QJsonValue &value : inbox) {
        const QJsonObject message = value.toObject();
        kept.insert(message.value("username").toString() + message.value("code").toString());
    }
    QVERIFY(inbox.size() < 1000); // else the oldest are gone by right
    QVERIFY(kept.contains(m_codes));
}

void DurabilityTest::keepsWhatItAcknowledged()
{
    using Work = void (DurabilityTest::*)(Tally &);
    const std::vector<Work> works = {&DurabilityTest::signIn, &DurabilityTest::signInByCode,
                                     &DurabilityTest::resetPasswords, &DurabilityTest::sendCodes};
    QVERIFY(m_emulator.start());
    QVERIFY(m_emulator.setSettings({{"codeIntervalSeconds", 0}})); // is kept, or codes would fail
    for (int round = 0; round < rounds; ++round) {
        std::vector<Tally> tallies(works.size());
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < works.size(); ++i)
            threads.emplace_back(works[i], this, std::ref(tallies[i]));
        // Each in turn gets something done; at the kill all are in the middle of something.
        const bool busy = tallies[std::size_t(round) % works.size()].waitFor(1 + round % 3);
        m_emulator.kill();
        for (std::thread &thread : threads)
            thread.join();
        QVERIFY(busy);
        QVERIFY(m_emulator.start());
        checkUsedCodes();
        checkPassword();
        checkSignIns(round % 10 == 9);
        checkCodes();
        if (QTest::currentTestFailed())
            return;
    }
    QVERIFY(m_emulator.stop());
}

QTEST_GUILESS_MAIN(DurabilityTest)
#include "tst_durability.moc"
