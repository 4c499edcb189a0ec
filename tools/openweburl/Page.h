#pragma once

#include <QtCore/QTimer>
#include <QtWebEngineWidgets/QWebEnginePage>

#include <chrono>
#include <optional>

/// A page in the browser engine that asks for itself again after it failed to load.
///
/// It goes to web pages alone, and to files when it began with one; opens no further windows, keeps
/// what pages write to the console to itself, and answers an account's password prompts with
/// nothing.
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
    void retryLater();

    std::optional<std::chrono::milliseconds> m_reloadTimeout;
    QTimer m_retry;
    bool m_isFile = false;
};
