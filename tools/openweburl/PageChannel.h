// SPDX-License-Identifier: MIT
#pragma once

#include "Start.h"

#include <QtWebEngineCore/QWebEngineUrlSchemeHandler>

#include <functional>

/// Answers a page's requests to the scheme "openweburl": what the tool was started with, and
/// reports.
///
/// Only pages of the origin that the tool was started with are answered; the browser engine says
/// which page asks, the page itself has no part in that. All others are denied, and so is a report
/// that cannot be printed as it is. "openweburl:arguments" is answered with
/// {"token","base","text","key"}, a report with {}. A report must carry the key: another server can
/// redirect what a page loads from it to an address of this scheme, but never sees the key.
class PageChannel : public QWebEngineUrlSchemeHandler
{
    Q_OBJECT

public:
    /// Prints a checked report; false when that failed.
    using Printer = std::function<bool(const QByteArray &report)>;

    /// Makes the scheme known to the browser engine; before the application object exists.
    static void registerScheme();
    static QByteArray scheme();

    PageChannel(Start start, Printer print, QObject *parent = nullptr);

    void requestStarted(QWebEngineUrlRequestJob *job) override;

Q_SIGNALS:
    /// A page reported that it is done.
    void closeRequested();

private:
    QByteArray arguments() const;

    bool print(const QUrl &request) const;

    Start m_start;
    Printer m_print;
    QString m_key; ///< of this run: 122 random bits
};
