// SPDX-License-Identifier: MIT
#include "PageServer.h"
#include "Window.h"
#include "support/Rows.h"

#include <QtGui/QScreen>
#include <QtWebEngineWidgets/QWebEngineProfile>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenu>

namespace {

constexpr int patienceMs = 60000;

void press(Qt::Key key)
{
    QTest::keyClick(QApplication::focusWidget(), key);
}

} // namespace

/// The web tool's window around the real browser engine.
class tst_Window : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        content = "<p>hello";
        server = std::make_unique<PageServer>([this](const QByteArray &target) {
            return target == "/away" ? redirect("other:program") : html(content);
        });
    }

    void cleanup()
    {
        window.reset();
        page.reset();
    }

    void saysWhatIsWrong_data()
    {
        const auto row =
            columns<QString, QString, QString, QString>("address", "language", "heading", "shown");
        row("no answer", QString::fromUtf8("http://u:p@127.0.0.1:2/李?token=T"), "en",
            "This page cannot be shown", "http://127.0.0.1:2/%E6%9D%8E");
        row("no such name", "http://nowhere.invalid", "zh-CN", QString::fromUtf8("找不到此地址"),
            "http://nowhere.invalid/");
        row("led to another program", "http://127.0.0.1:PORT/away", "en",
            "This page cannot be shown", "http://127.0.0.1:PORT/away");
        row("no such file", "file:///ERR_CERT_X", "fr", "This address was not found",
            "file:/ERR_CERT_X");
    }

    void saysWhatIsWrong()
    {
        QFETCH(QString, address);
        QFETCH(QString, language);
        QFETCH(QString, heading);
        const QString port = QString::number(server->serverPort());
        open(address.replace("PORT", port), language);
        QTRY_VERIFY_WITH_TIMEOUT(label("heading")->isVisible(), patienceMs);
        QCOMPARE(label("heading")->text(), heading);
        QTEST(label("address")->accessibleName().replace(port, "PORT"), "shown");
        QVERIFY(window->windowTitle().endsWith(heading));
    }

    void obeysKeys()
    {
        QTcpServer silent;
        QVERIFY(silent.listen(QHostAddress::LocalHost));
        content = "<img src='" + address(silent.serverPort()).toLatin1() + "'>";
        const quint16 port = server->serverPort();
        server->close();
        open(address(port));
        QTRY_VERIFY_WITH_TIMEOUT(label("heading")->isVisible(), patienceMs);
        window->move(600, 600);
        press(Qt::Key_Return);
        QVERIFY(!label("progress")->text().isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(label("progress")->text().isEmpty(), patienceMs);
        QCOMPARE(window->pos(), QPoint(600, 600));
        QVERIFY(server->listen(QHostAddress::LocalHost, port));
        press(Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(!label("heading")->isVisible(), patienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(window->windowTitle(), address(port) + QString::fromUtf8(" — t"),
                                  patienceMs);
        QCOMPARE(measured->count(), 0); // the picture is still to come

        server->close();
        page->loadAgain();
        QTRY_VERIFY_WITH_TIMEOUT(label("heading")->isVisible(), patienceMs);
        press(Qt::Key_Tab);
        press(Qt::Key_Return);
        QVERIFY(!window->isVisible());
    }

    void offersEditingAlone_data()
    {
        const auto row = columns<QByteArray, QString, QString>("element", "language", "menu");
        row("field", "<textarea>words", "en", "Cu&t,&Copy,&Paste,Select &all");
        row("text", "<b>words<script>getSelection().selectAllChildren(document.body)</script>",
            "zh-CN", QString::fromUtf8("复制(&C),全选(&A)"));
    }

    void offersEditingAlone()
    {
        QFETCH(QByteArray, element);
        QFETCH(QString, language);
        content = "<style>* { font: 300px monospace; margin: 0 }</style>" + element;
        open(server->page(), language);
        QTRY_COMPARE_WITH_TIMEOUT(measured->count(), 1, patienceMs);
        // A click is lost where the engine has not painted yet.
        const auto menu = [] { return qobject_cast<QMenu *>(QApplication::activePopupWidget()); };
        const auto isThere = [&] {
            if (!menu())
                QTest::mouseClick(QApplication::focusWidget(), Qt::RightButton, {}, {200, 200});
            return menu() != nullptr;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isThere(), patienceMs);
        QStringList entries;
        for (const QAction *entry : menu()->actions())
            entries.append(entry->text());
        QTEST(entries.join(','), "menu");
        menu()->close();
    }

    // Also run on a screen smaller than the window would have it.
    void fitsThePage_data()
    {
        const auto row = columns<QByteArray, QByteArray, QSize>("style", "status", "size");
        row("small", "width: 10px; height: 10px", "200 OK", {640, 480});
        row("fits", "width: 700px; height: 550px", "200 OK", {700, 550});
        row("large", "width: 9000px; height: 9000px", "200 OK", {9000, 9000});
        row("refusal", "width: 700px; height: 550px", "404 Not Found", {700, 550});
        row("higher than any window", "min-height: 100vh; margin: 20px", "200 OK", {640, 520});
    }

    void fitsThePage()
    {
        QFETCH(QByteArray, style);
        QFETCH(QByteArray, status);
        QFETCH(QSize, size);
        content = "<style>* { margin: 0 }</style><div style='" + style + "'></div>";
        server = std::make_unique<PageServer>(
            [&](const QByteArray &) { return html(content).replace("200 OK", status); });
        open(server->page());
        QTRY_COMPARE_WITH_TIMEOUT(measured->count(), 1, patienceMs);
        page->loadAgain();
        QTRY_COMPARE_WITH_TIMEOUT(measured->count(), 2, patienceMs);
        const QRect room = window->screen()->availableGeometry();
        const QSize borders = window->frameSize() - window->size();
        QCOMPARE(window->size(), size.boundedTo(room.size() - borders));
        QVERIFY(room.contains(window->frameGeometry()));
        window->resize(500, 500);
        page->load(server->page("/other"));
        QTRY_COMPARE_WITH_TIMEOUT(measured->count(), 3, patienceMs);
        QCOMPARE(window->size(), QSize(500, 500));
    }

private:
    void open(const QString &address, const QString &language = "en")
    {
        page = std::make_unique<Page>(&profile, std::nullopt);
        window = std::make_unique<Window>(*page, Texts::in(language));
        measured = std::make_unique<QSignalSpy>(page.get(), &Page::measured);
        page->begin(QUrl(address));
        window->show();
        window->setFocus();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
    }

    QLabel *label(const char *name) const { return window->findChild<QLabel *>(name); }

    static QString address(quint16 port) { return QString("http://127.0.0.1:%1").arg(port); }

    QByteArray content;
    QWebEngineProfile profile;
    std::unique_ptr<PageServer> server;
    std::unique_ptr<Page> page;
    std::unique_ptr<QSignalSpy> measured;
    std::unique_ptr<Window> window;
};

QTEST_MAIN(tst_Window)
#include "tst_window.moc"
