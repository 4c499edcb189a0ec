// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QTimer>
#include <QtWebEngineWidgets/QWebEnginePage>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

/// A page in the browser engine that asks for itself again after it failed to load.
///
/// Until a page has been shown, an answer of HTTP status 400 or above is a failure too; later only
/// what gives no answer at all, so that a page may refuse a form without its fields being lost.
/// It goes to web pages alone, and to files when it began with one; opens no further windows, and
/// keeps what pages write to the console to itself.
class Page : public QWebEnginePage
{
    Q_OBJECT

public:
    /// Why there is nothing of the service's to show.
    enum class Failure {
        NoAnswer,   ///< or none that is a page
        NotFound,   ///< neither a server nor a file has the address
        NotTrusted, ///< the server has no certificate for the address
    };

    /// Without a timeout a page that failed to load stays as it is.
    Page(QWebEngineProfile *profile, std::optional<std::chrono::milliseconds> reloadTimeout,
         QObject *parent = nullptr);

    void begin(const QUrl &url);
    /// The address of the page that is there or is to be; empty before the beginning.
    QUrl wanted() const;
    /// Asks for the wanted page anew, without sending a form twice.
    void loadAgain();

Q_SIGNALS:
    /// There is the beginning of a page, or of the answer of a server that refuses one.
    void shown();
    /// There is nothing; again with each further attempt.
    void failed(Page::Failure failure);
    /// The size, in pixels, that a page has which was just loaded, or a server's refusal of it.
    void measured(const QSize &contents, bool isRefusal);

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message,
                                  int line, const QString &source) override;

private:
    using Answer = std::function<void(const QVariant &)>;

    void watchDocuments();
    void noteLoaded();
    void measure(bool isRefusal);
    void noteFailed();
    void judge(const QString &state);
    Answer unlessOutdated(Answer answer) const;

    struct State
    {
        QTimer timer;
        int loads = 0;
        bool retries = false;
        bool wasShown = false;
    };
    std::shared_ptr<State> m_state;
    QUrl m_first;
};
