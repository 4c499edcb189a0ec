// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QTimer>
#include <QtWebEngineWidgets/QWebEnginePage>

#include <chrono>
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
    /// Without a timeout a page that failed to load stays as it is.
    Page(QWebEngineProfile *profile, std::optional<std::chrono::milliseconds> reloadTimeout,
         QObject *parent = nullptr);

    void begin(const QUrl &url);

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message,
                                  int line, const QString &source) override;

private:
    void noteLoaded();
    void retryUnlessShown();

    struct Retry
    {
        QTimer timer;
        int loads = 0;
        bool wasShown = false;
    };
    std::shared_ptr<Retry> m_retry; ///< null without a timeout
    bool m_isFile = false;
};
