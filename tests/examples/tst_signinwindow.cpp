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

    void init()
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

    void cleanup()
    {
        window.reset();
        passport.reset();
    }

    void signsInAndOutByKeyboard()
    {
        press(Qt::Key_M, Qt::AltModifier); // to be remembered
        QTRY_VERIFY(child<QCheckBox>("remember")->isChecked());
        fillIn(Qt::Key_A, "ada@example.com");
        fillIn(Qt::Key_W, "wrong");
        press(Qt::Key_Return);
        QCOMPARE(words(), "The name or the password is wrong.");
        write("correct horse 1"); // in the place of what was selected
        press(Qt::Key_Return);
        QCOMPARE(child<QLabel>("title")->text(), "Welcome, Ada");
        press(Qt::Key_O, Qt::AltModifier);
        QTRY_VERIFY(child<QLineEdit>("password")->hasFocus());
        press(Qt::Key_Return);
        QVERIFY(child<QLabel>("title")->isVisible());
    }

    void livesOnDuringARequest()
    {
        emulator.addFault({{"request", "userLogin"}, {"kind", "delay"}, {"ms", 500}});
        bool pressed = false;
        auto *once = new QObject(window.get());
        const auto pressMore = [&] {
            delete once;
            press(Qt::Key_Return);
            press(Qt::Key_S, Qt::AltModifier);
            press(Qt::Key_V, Qt::AltModifier); // a captcha would be a second request
            pressed = child<QProgressBar>("busy")->isVisible() &&
                      !child<QPushButton>("signIn")->isEnabled();
        };
        connect(window->findChild<Requests *>(), &Requests::busyChanged, once, pressMore,
                Qt::QueuedConnection);
        fillIn(Qt::Key_A, "ada@example.com");
        fillIn(Qt::Key_W, "correct horse 1");
        const int before = emulator.requests().size();
        press(Qt::Key_Return);
        QVERIFY(pressed);
        QVERIFY(child<QLabel>("title")->isVisible());
        QCOMPARE(emulator.requests().size(), before + 2); // the sign-in and the profile
    }

    void signsInByCode()
    {
        fillIn(Qt::Key_A, "carol@example.com");
        press(Qt::Key_V, Qt::AltModifier);
        QVERIFY(!child<QPushButton>("picture")->icon().isNull());
        fillIn(Qt::Key_H, "-" + emulator.latestCaptchaAnswer());
        press(Qt::Key_Return);
        QCOMPARE(words(), "Those are not the characters in the picture. Please type "
                          "those in the new one.");
        write(emulator.latestCaptchaAnswer());
        press(Qt::Key_Return);
        QCOMPARE(words(), "The code is on its way to you.");
        write(emulator.latestCode());
        press(Qt::Key_Return);
        QCOMPARE(child<QLabel>("title")->text(), "Welcome, Carol");
    }

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
    void fillIn(Qt::Key field, const QString &text)
    {
        press(field, Qt::AltModifier);
        write(text);
    }
    template <typename T>
    T *child(const char *name)
    {
        return window->findChild<T *>(name);
    }
    QString words() { return child<QLabel>("words")->text(); }

    const LogCapture quiet;
    Testing::Emulator emulator;
    std::unique_ptr<PassportDirectory> directory;
    std::unique_ptr<Passport> passport;
    std::unique_ptr<SignInWindow> window;
};

QTEST_MAIN(tst_SignInWindow)
#include "tst_signinwindow.moc"
