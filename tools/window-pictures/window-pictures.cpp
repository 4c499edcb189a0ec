// SPDX-License-Identifier: MIT
// Pictures of examples/signin-window in all its states. Usage: window-pictures DIRECTORY LOCALE
// SCALE, where SCALE is that of the font. Ends with 1 when a text is cut or a page has a mnemonic
// twice.
#include "SignInWindow.h"
#include "Translations.h"

#include <passport/testing/Emulator.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>
#include <QtCore/QThread>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QCompleter>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTabBar>

#include <functional>

using namespace VelqorPassPort;

namespace {

/// Delivers events until something has come about, for ten seconds at most.
bool waitFor(const std::function<bool()> &hasCome)
{
    constexpr qint64 patienceMs = 10000;
    QElapsedTimer timer;
    timer.start();
    while (!hasCome() && !timer.hasExpired(patienceMs)) {
        QThread::msleep(1);
        QCoreApplication::processEvents();
    }
    return hasCome();
}

QString textOf(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->text();
    const auto *button = qobject_cast<const QAbstractButton *>(widget);
    return button ? button->text() : QString();
}

/// One window as a user takes it from state to state, with a picture of each.
class Walk
{
public:
    Walk(Passport &passport, const HostSettings &settings, QString fileName)
        : m_window(passport, settings)
        , m_fileName(std::move(fileName))
    {
        m_window.show();
    }

    bool isFlawless() const { return m_isFlawless; }

    void byPassword(Testing::Emulator &emulator)
    {
        waitFor([this] { return find<QComboBox>("country").count() > 1; });
        picture("empty");
        find<QLineEdit>("account").setText(QStringLiteral("ada@example.com"));
        find<QLineEdit>("password").setText(QStringLiteral("wrong"));
        emulator.addFault({{QStringLiteral("request"), QStringLiteral("userLogin")},
                           {QStringLiteral("kind"), QStringLiteral("delay")},
                           {QStringLiteral("ms"), 20000},
                           {QStringLiteral("times"), 1}});
        const auto whileBusy = [this] {
            waitFor([this] { return find<QWidget>("progress").isVisible(); });
            picture("busy");
            m_window.reject();
        };
        QMetaObject::invokeMethod(&m_window, whileBusy, Qt::QueuedConnection);
        press("signIn");
        press("signIn");
        picture("wrong-password");
    }

    void byCode(Testing::Emulator &emulator)
    {
        find<QTabBar>("ways").setCurrentIndex(1);
        picture("captcha");
        find<QLineEdit>("captcha").setText(emulator.latestCaptchaAnswer());
        press("send");
        picture("code-sent");
        find<QLineEdit>("code").setText(emulator.latestCode());
        press("signIn");
        picture("profile");
        press("signOut");
    }

    void searchesCountry()
    {
        settle();
        QComboBox &country = find<QComboBox>("country");
        country.setFocus(Qt::TabFocusReason);
        country.lineEdit()->setText(QStringLiteral("land"));
        country.completer()->setCompletionPrefix(country.lineEdit()->text());
        country.completer()->complete();
        picture("country-search");
        QApplication::activePopupWidget()->hide();
        country.setCurrentIndex(0);
    }

    void unreachable()
    {
        find<QLineEdit>("account").setText(QStringLiteral("ada@example.com"));
        find<QLineEdit>("password").setText(QStringLiteral("correct horse 1"));
        press("signIn");
        picture("unreachable");
    }

private:
    template <typename T>
    T &find(const char *name)
    {
        return *m_window.findChild<T *>(QLatin1String(name));
    }
    void press(const char *name) { find<QAbstractButton>(name).click(); }
    void picture(const char *state);
    void settle();
    void check(const QString &file);

    SignInWindow m_window;
    const QString m_fileName;
    bool m_isFlawless = true;
};

// A sentence that wraps has the window grow a few events later.
void Walk::settle()
{
    for (int i = 0; i < 10; ++i)
        QCoreApplication::processEvents();
}

void Walk::picture(const char *state)
{
    settle();
    const QString file = m_fileName.arg(QLatin1String(state));
    check(file);
    QPixmap picture = m_window.grab();
    if (QWidget *popup = QApplication::activePopupWidget()) {
        QPainter painter(&picture);
        painter.drawPixmap(m_window.mapFromGlobal(popup->pos()), popup->grab());
    }
    m_isFlawless = picture.save(file) && m_isFlawless;
}

void Walk::check(const QString &file)
{
    QStringList faults;
    QStringList mnemonics;
    const QList<QWidget *> widgets = m_window.findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        if (!widget->isVisible())
            continue;
        const QString text = textOf(widget);
        const QSize least = widget->minimumSizeHint();
        const int height = qMax(least.height(), widget->heightForWidth(widget->width()));
        if (!text.isEmpty() && (widget->width() < least.width() || widget->height() < height))
            faults.append(text);
        const QString mnemonic = QKeySequence::mnemonic(text).toString();
        if (mnemonics.contains(mnemonic))
            faults.append(mnemonic);
        if (!mnemonic.isEmpty())
            mnemonics.append(mnemonic);
        const auto *line = qobject_cast<const QLineEdit *>(widget);
        constexpr int frame = 8;
        if (line &&
            line->fontMetrics().horizontalAdvance(line->placeholderText()) + frame > line->width())
            faults.append(line->placeholderText());
    }
    m_isFlawless = m_isFlawless && faults.isEmpty();
    for (const QString &fault : qAsConst(faults))
        QTextStream(stderr) << file << ": \"" << fault << "\" is cut or there twice\n";
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    Testing::Emulator emulator;
    const QTemporaryDir directory;
    if (arguments.size() != 4 || !emulator.start())
        return 2;
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * arguments[3].toDouble());
    QApplication::setFont(font);
    const Translations translations{QLocale(arguments[2])};

    const HostSettings settings{directory.path(), emulator.cloudConfiguration()};
    Passport passport;
    passport.setPassportDir(settings.passportDirectory);
    passport.setConfigData(settings.cloud);
    Walk walk(passport, settings, arguments[1] + QStringLiteral("/%1.png"));
    walk.byPassword(emulator);
    walk.byCode(emulator);
    walk.searchesCountry();
    emulator.kill();
    walk.unreachable();
    return walk.isFlawless() ? 0 : 1;
}
