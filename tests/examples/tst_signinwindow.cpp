// SPDX-License-Identifier: MIT
#include "Notice.h"
#include "SignInWindow.h"
#include "Translations.h"
#include "errortable/ErrorTable.h"
#include "passport/testing/Emulator.h"
#include "support/LogCapture.h"
#include "support/PassportDirectory.h"

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

using namespace VelqorPassPort;

// Qt leaves the declaration to who needs it.
Q_GUI_EXPORT void qt_set_sequence_auto_mnemonic(bool enable);

/// The window as its user meets it: keys go to the window, what it shows is read from it.
class tst_SignInWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qt_set_sequence_auto_mnemonic(true); // macOS has them off
        QVERIFY(emulator.start());
    }

    void init()
    {
        emulator.reset();
        directory = std::make_unique<PassportDirectory>();
        passport = std::make_unique<Passport>();
        passport->setPassportDir(directory->path());
        passport->setConfigData(emulator.cloudConfiguration());
        window = std::make_unique<SignInWindow>(
            *passport, HostSettings{directory->path(), emulator.cloudConfiguration()});
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    void cleanup()
    {
        window.reset();
        passport.reset();
    }

    void signsInAndOutByKeyboard()
    {
        QStringList order;
        for (int i = 0; i < 10; ++i, press(Qt::Key_Tab))
            order += window->focusWidget()->objectName();
        QCOMPARE(order.join(' '),
                 "account country ways password show remember signIn signUp forgotten close");
        press(Qt::Key_M, Qt::AltModifier); // to be remembered
        QTRY_VERIFY(child<QCheckBox>("remember")->isChecked());
        fillIn(Qt::Key_A, "ada@example.com");
        fillIn(Qt::Key_W, "wrong");
        press(Qt::Key_Return);
        QCOMPARE(told(), "The name or the password is wrong.");
        QCOMPARE(child("password")->accessibleDescription(), told());
        write("correct horse 1"); // in the place of what was selected
        press(Qt::Key_Return);
        QCOMPARE(child<QLabel>("title")->text(), "Welcome, Ada");
        press(Qt::Key_O, Qt::AltModifier);
        QTRY_VERIFY(child("password")->hasFocus());
        press(Qt::Key_Return);
        QVERIFY(child("title")->isVisible());
    }

    void cancelsARequest()
    {
        emulator.addFault({{"request", "userLogin"}, {"kind", "delay"}, {"ms", 20000}});
        press(Qt::Key_Return);
        QVERIFY(told().startsWith("Please type"));
        fillIn(Qt::Key_A, "ada@example.com");
        fillIn(Qt::Key_W, "correct horse 1");
        for (int time = 0; time < 2; ++time) { // what was told goes with the next request
            auto *once = new QObject(window.get());
            const auto act = [&] {
                delete once;
                QCOMPARE(told(), QString());
                QVERIFY(!child("password")->isEnabled());
                press(Qt::Key_Return);
                press(Qt::Key_S, Qt::AltModifier);
                press(Qt::Key_V, Qt::AltModifier); // a captcha would be a second request
                press(Qt::Key_Escape);
            };
            connect(window->findChild<Requests *>(), &Requests::busyChanged, once, act,
                    Qt::QueuedConnection);
            press(Qt::Key_Return);
            QCOMPARE(told(), "This was cancelled.");
        }
        QVERIFY(window->isVisible() && child("password")->hasFocus());
        QCOMPARE(emulator.requests().last().toObject()["name"], "userLogin");
    }

    void signsInByCode()
    {
        fillIn(Qt::Key_A, "carol@example.com");
        press(Qt::Key_V, Qt::AltModifier);
        QVERIFY(!child<QPushButton>("picture")->icon().isNull());
        fillIn(Qt::Key_H, "-" + emulator.latestCaptchaAnswer());
        press(Qt::Key_Return);
        QVERIFY(told().startsWith("Those are not the characters in the picture."));
        write(emulator.latestCaptchaAnswer());
        press(Qt::Key_Return);
        QCOMPARE(told(), "The code is on its way to you.");
        QVERIFY(!child("send")->isEnabled());
        write(emulator.latestCode());
        press(Qt::Key_Return);
        QCOMPARE(child<QLabel>("title")->text(), "Welcome, Carol");
    }

    void speaksGerman()
    {
        const Translations german{QLocale("de")};
        for (const ErrorEntry &entry : errorTable()) {
            const QByteArray english = entry.english.toUtf8();
            QVERIFY2(QCoreApplication::translate("Errors", english) != english, english);
        }
        init();
        auto *country = child<QComboBox>("country");
        QTRY_COMPARE(country->currentText(), "China (+86)");
        const QString germany = "Deutschland (+49)",
                      india = "Indien (+91)"; // not an ocean's territory
        for (const auto &[typed, found] :
             {std::pair("germ", germany), {"indi", india}, {"+49", germany}, {"zzz", germany}}) {
            fillIn(Qt::Key_L, typed);
            press(Qt::Key_Tab);
            QCOMPARE(country->currentText(), found);
        }
    }

    void takesOverWhatAPageBrought()
    {
        const QString tool = "openweburl/openweburl.app/Contents/MacOS/openweburl";
        directory->write(tool, "#!/bin/sh\necho userLoadSuccess start: ada@example.com pass 1 end");
        QFile(directory->filePath(tool)).setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        press(Qt::Key_N, Qt::AltModifier);
        QTRY_COMPARE(child<QLineEdit>("account")->text(), "ada@example.com");
        QCOMPARE(child<QLineEdit>("password")->text(), "pass");
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
    template <typename T = QWidget>
    T *child(const char *name)
    {
        return window->findChild<T *>(name);
    }
    QString told() ///< the sentences that are shown
    {
        const auto notices = window->findChildren<Notice *>();
        return std::accumulate(
            notices.begin(), notices.end(), QString(),
            [](const QString &all, auto *notice) { return all + notice->text(); });
    }

    const LogCapture quiet;
    Testing::Emulator emulator;
    std::unique_ptr<PassportDirectory> directory;
    std::unique_ptr<Passport> passport;
    std::unique_ptr<SignInWindow> window;
};

QTEST_MAIN(tst_SignInWindow)
#include "tst_signinwindow.moc"
