#include "SignInWindow.h"
#include "passport/testing/Emulator.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

using namespace VelqorPassPort;

/// The window as its user meets it: keys go to the window, what it shows is read from it.
class tst_SignInWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(emulator.start()); }
    void init();
    void cleanup();
    void signsInAndOutByKeyboard();
    void tellsFailuresInWords();
    void sendsOneRequestForTwoEnters();
    void closesDuringARequest();
    void signsInByCode();

private:
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(window->windowHandle(), key, modifiers);
    }
    void write(const QString &text)
    {
        for (const QChar letter : text)
            QTest::keyClick(window->windowHandle(), letter.toLatin1());
    }
    /// From the account field on; Enter returns when the request has ended.
    void signIn(const QString &name, const QString &password);
    template <typename T>
    T *child(const char *name)
    {
        return window->findChild<T *>(name);
    }
    QString words() { return child<QLabel>("words")->text(); }
    QString profileTitle()
    {
        auto *title = child<QLabel>("title");
        return title->isVisible() ? title->text() : QString();
    }
    int count(const char *request);
    /// Runs code in the loop of the next request.
    void duringNextRequest(const std::function<void()> &code);

    const LogCapture quiet;
    Testing::Emulator emulator;
    std::unique_ptr<PassportDirectory> directory;
    std::unique_ptr<Passport> passport;
    std::unique_ptr<SignInWindow> window;
};

void tst_SignInWindow::init()
{
    emulator.reset();
    directory = std::make_unique<PassportDirectory>();
    directory->writeSystemCfg({{"Default", QJsonObject{{"StartHub", false}}}});
    passport = std::make_unique<Passport>();
    passport->initial(directory->path());
    passport->setConfigData(emulator.cloudConfiguration());
    window = std::make_unique<SignInWindow>(*passport);
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
    QTRY_VERIFY(child<QComboBox>("country")->count() > 100);
    QTRY_VERIFY(!child<QProgressBar>("busy")->isVisible());
}

void tst_SignInWindow::cleanup()
{
    window.reset();
    passport.reset();
}

void tst_SignInWindow::signIn(const QString &name, const QString &password)
{
    press(Qt::Key_A, Qt::AltModifier);
    write(name);
    press(Qt::Key_W, Qt::AltModifier);
    write(password);
    press(Qt::Key_Return);
}

int tst_SignInWindow::count(const char *request)
{
    const QJsonArray requests = emulator.requests();
    return int(std::count_if(requests.begin(), requests.end(), [&](const QJsonValue &entry) {
        return entry.toObject()["name"].toString() == request;
    }));
}

void tst_SignInWindow::duringNextRequest(const std::function<void()> &code)
{
    auto *requests = window->findChild<Requests *>();
    auto *once = new QObject(requests);
    connect(
        requests, &Requests::busyChanged, once,
        [once, code] {
            once->deleteLater();
            once->disconnect();
            code();
        },
        Qt::QueuedConnection);
}

void tst_SignInWindow::signsInAndOutByKeyboard()
{
    QVERIFY(child<QLineEdit>("account")->hasFocus());
    press(Qt::Key_M, Qt::AltModifier); // to be remembered
    QTRY_VERIFY(child<QCheckBox>("remember")->isChecked());
    signIn("ada@example.com", "correct horse 1");
    QCOMPARE(profileTitle(), QString("Welcome, Ada"));
    press(Qt::Key_O, Qt::AltModifier);
    QTRY_VERIFY(profileTitle().isEmpty());
    QCOMPARE(child<QLineEdit>("account")->text(), QString("ada@example.com"));
    press(Qt::Key_Return);
    QCOMPARE(profileTitle(), QString("Welcome, Ada"));
}

void tst_SignInWindow::tellsFailuresInWords()
{
    signIn("locked@example.com", "correct horse 2");
    QCOMPARE(words(), QString("This account is locked. Please contact support."));
    emulator.addFault({{"request", "userLogin"}, {"kind", "word"}, {"word", "bogusErr"}});
    press(Qt::Key_Return);
    QCOMPARE(words(), QString("The service has refused this."));
    emulator.clearFaults();
    signIn("ada@example.com", "wrong");
    QCOMPARE(words(), QString("The name or the password is wrong."));
    write("correct horse 1"); // in the place of what was selected
    press(Qt::Key_Return);
    QCOMPARE(profileTitle(), QString("Welcome, Ada"));
}

void tst_SignInWindow::sendsOneRequestForTwoEnters()
{
    emulator.addFault({{"request", "userLogin"}, {"kind", "delay"}, {"ms", 500}});
    bool pressed = false;
    duringNextRequest([&] {
        press(Qt::Key_Return);
        press(Qt::Key_S, Qt::AltModifier);
        press(Qt::Key_V, Qt::AltModifier); // a captcha would be a second request
        pressed = child<QProgressBar>("busy")->isVisible();
    });
    signIn("ada@example.com", "correct horse 1");
    QVERIFY(pressed);
    QCOMPARE(profileTitle(), QString("Welcome, Ada"));
    QCOMPARE(count("userLogin"), 1);
    QCOMPARE(count("captcha"), 0);
}

void tst_SignInWindow::closesDuringARequest()
{
    emulator.addFault({{"request", "userLogin"}, {"kind", "delay"}, {"ms", 20000}});
    duringNextRequest([&] {
        QTRY_COMPARE(count("userLogin"), 1);
        window->close();
    });
    QTimer::singleShot(0, window.get(), [&] { signIn("ada@example.com", "correct horse 1"); });
    QCOMPARE(QApplication::exec(), 0); // ends with the last window, and so does the request
    QCOMPARE(words(), QString("This was cancelled."));
    emulator.clearFaults();
}

void tst_SignInWindow::signsInByCode()
{
    press(Qt::Key_A, Qt::AltModifier);
    write("carol@example.com");
    press(Qt::Key_V, Qt::AltModifier);
    const QString first = emulator.latestCaptchaAnswer();
    press(Qt::Key_U, Qt::AltModifier); // clicks, a moment later
    QTRY_COMPARE(count("captcha"), 2);
    QVERIFY(!child<QPushButton>("picture")->icon().isNull());
    press(Qt::Key_H, Qt::AltModifier);
    write("-" + first);
    press(Qt::Key_Return);
    QCOMPARE(words(), QString("Those are not the characters in the picture. Please type "
                              "those in the new one."));
    QCOMPARE(count("captcha"), 3);
    write(emulator.latestCaptchaAnswer());
    press(Qt::Key_Return);
    QCOMPARE(words(), QString("The code is on its way to you."));
    write(emulator.latestCode());
    press(Qt::Key_Return);
    QCOMPARE(profileTitle(), QString("Welcome, Carol"));
}

QTEST_MAIN(tst_SignInWindow)
#include "tst_signinwindow.moc"
