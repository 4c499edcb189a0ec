// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <functional>

class QThread;

/// Collects every message that is logged while it lives, from all threads.
///
/// The message handler that was installed before is put back at the end. Messages that are not the
/// library's own, and fatal ones, also reach that handler, so that a warning of Qt stays visible.
/// One at a time.
class LogCapture
{
public:
    struct Message
    {
        QString category;
        QtMsgType level;
        QString text;
        QThread *thread; ///< the logging thread, for comparing only
    };

    /// `onMessage` is called for each message once it is collected, on the logging thread.
    explicit LogCapture(std::function<void(const Message &)> onMessage = {});
    ~LogCapture();
    Q_DISABLE_COPY(LogCapture)

    /// Everything collected so far, in the order of arrival.
    QVector<Message> messages() const;

    /// The library's own messages as "level text", such as "debug initial: false": made for
    /// comparing a whole sequence with one QCOMPARE.
    QStringList lines() const;

    void clear();

private:
    static void handle(QtMsgType level, const QMessageLogContext &context, const QString &text);

    const std::function<void(const Message &)> m_onMessage;
    QVector<Message> m_messages;
    QtMessageHandler m_previous;
};
