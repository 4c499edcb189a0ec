#include "CountryBox.h"
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

/// The window as its user meets it: keys go to the window, what it shows is read from it.
class tst_SignInWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(emulator.start()); }

    void init()
    {
        emulator.reset();
        emulator.addFault({{"request", "fetchCountries"}, {"kind", "delay"}, {"ms", 20000}});
        directory = std::make_unique<PassportDirectory>();
        directory->writeSystemCfg({{"Default", QJsonObject{{"StartHub", false}}}});
        passport = std::make_unique<Passport>();
        passport->initial(directory->path());
        passport->setConfigData(emulator.cloudConfiguration());
        open();
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
        QCOMPARE(told(), "The name or the password is wrong.");
        QCOMPARE(child<QLineEdit>("password")->accessibleDescription(), told());
        write("correct horse 1"); // in the place of what was selected
        press(Qt::Key_Return);
        QCOMPARE(child<QLabel>("title")->text(), "Welcome, Ada");
        press(Qt::Key_O, Qt::AltModifier);
        QTRY_VERIFY(child<QLineEdit>("password")->hasFocus());
        press(Qt::Key_Return);
        QVERIFY(child<QLabel>("title")->isVisible());
    }

    void cancelsARequest()
    {
        emulator.addFault({{"request", "userLogin"}, {"kind", "delay"}, {"ms", 20000}});
        press(Qt::Key_Return);
        QVERIFY(told().startsWith("Please type"));
        fillIn(Qt::Key_A, "ada@example.com");
        fillIn(Qt::Key_W, "correct horse 1");
        QString toldMeanwhile = "not called";
        duringRequest([&] {
            press(Qt::Key_Return);
            press(Qt::Key_S, Qt::AltModifier);
            press(Qt::Key_V, Qt::AltModifier); // a captcha would be a second request
            toldMeanwhile = told();
            press(Qt::Key_Escape);
        });
        const int before = emulator.requests().size();
        press(Qt::Key_Return);
        QCOMPARE(toldMeanwhile, "");
        QCOMPARE(told(), "This was cancelled.");
        QCOMPARE(emulator.requests().size(), before + 1);
        QVERIFY(window->isVisible() && child<QLineEdit>("password")->hasFocus());
    }

    void signsInByCode()
    {
        fillIn(Qt::Key_A, "carol@example.com");
        press(Qt::Key_V, Qt::AltModifier);
        QVERIFY(!child<QPushButton>("picture")->icon().isNull());
        fillIn(Qt::Key_H, "-" + emulator.latestCaptchaAnswer());
        press(Qt::Key_Return);
        QVERIFY(told().startsWith("Those are not the characters in the picture."));
        QVERIFY(child<QPushButton>("send")->isEnabled());
        write(emulator.latestCaptchaAnswer());
        press(Qt::Key_Return);
        QCOMPARE(told(), "The code is on its way to you.");
        QVERIFY(!child<QPushButton>("send")->isEnabled());
        write(emulator.latestCode());
        press(Qt::Key_Return);
        QCOMPARE(child<QLabel>("title")->text(), "Welcome, Carol");
    }

    void findsCountries_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("found");
        QTest::newRow("in the user's language") << "nigr"
                                                << "Vereinigtes Königreich (+44)";
        QTest::newRow("in English") << "germ"
                                    << "Deutschland (+49)";
        QTest::newRow("in the country's own") << "suomi"
                                              << "Finnland (+358)";
        QTest::newRow("by calling code") << "+8190"
                                         << "China (+86)"; // none: the earlier one stays
    }

    void findsCountries()
    {
        const Translations german{QLocale("de")};
        emulator.clearFaults();
        open();
        QTRY_COMPARE(child<QComboBox>("country")->currentText(), "China (+86)");
        QFETCH(QString, typed);
        fillIn(Qt::Key_L, typed);
        press(Qt::Key_Tab);
        QTEST(child<QComboBox>("country")->currentText(), "found");
    }

    void takesOverWhatAPageBrought()
    {
        const QString tool = "openweburl/openweburl.app/Contents/MacOS/openweburl";
        directory->write(tool, "#!/bin/sh\necho userLoadSuccess start: ada@example.com pass 1 end");
        press(Qt::Key_N, Qt::AltModifier);
        QTRY_COMPARE(told(), "The pages for this are not installed.");
        QFile(directory->filePath(tool)).setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        press(Qt::Key_N, Qt::AltModifier);
        QTRY_COMPARE(child<QLineEdit>("account")->text(), "ada@example.com");
        QCOMPARE(child<QLineEdit>("password")->text(), "pass");
    }

    void speaks_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<double>("fontScale");
        for (const char *locale : {"en", "de", "zh_CN"}) {
            QTest::addRow("%s", locale) << locale << 1.0;
            QTest::addRow("%s-large", locale) << locale << 1.5;
        }
    }

    // Goes through all that the window shows. PASSPORT_PICTURES names a directory for pictures.
    void speaks()
    {
        QFETCH(QString, locale);
        QFETCH(double, fontScale);
        const Translations translations{QLocale(locale)};
        for (const ErrorEntry &entry : errorTable()) {
            QVERIFY2(locale != "de" || QCoreApplication::translate(
                                           "Errors", entry.english.toUtf8()) != entry.english,
                     qPrintable(entry.english));
        }
        const QFont font = QApplication::font();
        const auto fontAgain = qScopeGuard([&] { QApplication::setFont(font); });
        QFont scaled = font;
        scaled.setPointSizeF(font.pointSizeF() * fontScale);
        QApplication::setFont(scaled);

        emulator.clearFaults();
        emulator.addFault(
            {{"request", "userLogin"}, {"kind", "delay"}, {"ms", 20000}, {"times", 1}});
        open();
        QTRY_VERIFY(child<QComboBox>("country")->count() > 100);
        look("empty");
        child<QLineEdit>("account")->setText("ada@example.com");
        child<QLineEdit>("password")->setText("wrong");
        duringRequest([&] {
            QTRY_VERIFY(child<QWidget>("progress")->isVisible());
            look("busy");
            press(Qt::Key_Escape);
        });
        child<QPushButton>("signIn")->click();
        child<QPushButton>("signIn")->click();
        look("wrong-password");
        child<QTabBar>("ways")->setCurrentIndex(1);
        look("captcha");
        child<QLineEdit>("captcha")->setText(emulator.latestCaptchaAnswer());
        child<QPushButton>("send")->click();
        look("code-sent");
        child<QLineEdit>("code")->setText(emulator.latestCode());
        child<QPushButton>("signIn")->click();
        look("profile");
        child<QPushButton>("signOut")->click();
        child<QComboBox>("country")->setFocus(Qt::TabFocusReason);
        write("sl");
        look("country-search");
        QApplication::activePopupWidget()->hide();
        passport->setConfigData(
            {{"environments",
              QVariantMap{{"emulator", QVariantMap{{"cloud", "http://127.0.0.1:1/v1"}}}}}});
        child<QLineEdit>("password")->setText("correct horse 1");
        child<QPushButton>("signIn")->click();
        look("unreachable");
    }

private:
    void open()
    {
        window.reset();
        window = std::make_unique<SignInWindow>(
            *passport, HostSettings{directory->path(), emulator.cloudConfiguration()});
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }
    /// Once, in the middle of the next request.
    void duringRequest(const std::function<void()> &action)
    {
        auto *once = new QObject(window.get());
        const auto act = [=] {
            delete once;
            action();
        };
        connect(window->findChild<Requests *>(), &Requests::busyChanged, once, act,
                Qt::QueuedConnection);
    }
    /// Nothing is cut and no mnemonic is there twice; saves a picture where one is wanted.
    void look(const QString &state)
    {
        QTest::qWait(300); // XXX
        QStringList keys;
        for (QWidget *widget : window->findChildren<QWidget *>()) {
            const auto *label = qobject_cast<QLabel *>(widget);
            const auto *button = qobject_cast<QAbstractButton *>(widget);
            if (!widget->isVisible() || !(label || button))
                continue;
            const int height =
                qMax(widget->minimumSizeHint().height(), widget->heightForWidth(widget->width()));
            const QString text = label ? label->text() : button->text();
            QVERIFY2(widget->width() >= widget->minimumSizeHint().width() &&
                         widget->height() >= height,
                     qPrintable(state + ": " + text));
            keys += QKeySequence::mnemonic(text).toString();
        }
        keys.removeAll("");
        QVERIFY2(keys.removeDuplicates() == 0, qPrintable(state + keys.join(' ')));
        const auto *account = child<QLineEdit>("account");
        QVERIFY(account->fontMetrics().horizontalAdvance(account->placeholderText()) <
                account->width() - 8);
        if (!qEnvironmentVariableIsSet("PASSPORT_PICTURES"))
            return;
        QPixmap picture = window->grab();
        if (QWidget *popup = QApplication::activePopupWidget()) {
            QPainter(&picture).drawPixmap(window->mapFromGlobal(popup->pos()), popup->grab());
        }
        picture.save(
            QString("%1/%2-%3@%4.png")
                .arg(qEnvironmentVariable("PASSPORT_PICTURES"), state, QTest::currentDataTag())
                .arg(window->devicePixelRatioF()));
    }
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
    /// The one sentence that is shown.
    QString told()
    {
        QStringList sentences;
        for (Notice *notice : window->findChildren<Notice *>()) {
            if (notice->isVisible())
                sentences += notice->text();
        }
        return sentences.join(" AND ");
    }

    const LogCapture quiet;
    Testing::Emulator emulator;
    std::unique_ptr<PassportDirectory> directory;
    std::unique_ptr<Passport> passport;
    std::unique_ptr<SignInWindow> window;
};

QTEST_MAIN(tst_SignInWindow)
#include "tst_signinwindow.moc"
