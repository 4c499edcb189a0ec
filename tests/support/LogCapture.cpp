// SPDX-License-Identifier: MIT
#include "support/LogCapture.h"

#include <QtCore/QMap>
#include <QtCore/QThread>

#include <mutex>

namespace {

std::mutex captureMutex; // guards what follows and its messages
LogCapture *current = nullptr;

bool isOwn(const QString &category)
{
    return category == QLatin1String("velqor.passport.lib");
}

} // namespace

LogCapture::LogCapture(std::function<void(const Message &)> onMessage)
    : m_onMessage(std::move(onMessage))
{
    const std::lock_guard<std::mutex> lock(captureMutex);
    current = this;
    m_previous = qInstallMessageHandler(&LogCapture::handle);
}

LogCapture::~LogCapture()
{
    const std::lock_guard<std::mutex> lock(captureMutex);
    qInstallMessageHandler(m_previous);
    current = nullptr;
}

QVector<LogCapture::Message> LogCapture::messages() const
{
    const std::lock_guard<std::mutex> lock(captureMutex);
    return m_messages;
}

QStringList LogCapture::lines() const
{
    const QMap<QtMsgType, QString> levels{{QtDebugMsg, "debug "},
                                          {QtInfoMsg, "info "},
                                          {QtWarningMsg, "warning "},
                                          {QtCriticalMsg, "critical "},
                                          {QtFatalMsg, "fatal "}};
    QStringList result;
    for (const Message &message : messages()) {
        if (isOwn(message.category))
            result += levels.value(message.level) + message.text;
    }
    return result;
}

void LogCapture::clear()
{
    const std::lock_guard<std::mutex> lock(captureMutex);
    m_messages.clear();
}

void LogCapture::handle(QtMsgType level, const QMessageLogContext &context, const QString &text)
{
    const Message message{QString::fromUtf8(context.category), level, text,
                          QThread::currentThread()};
    std::function<void(const Message &)> onMessage;
    QtMessageHandler forward = nullptr;
    {
        // A thread may have fetched this handler just before the last capture ended.
        const std::lock_guard<std::mutex> lock(captureMutex);
        if (!current)
            return;
        current->m_messages.append(message);
        onMessage = current->m_onMessage;
        if (!isOwn(message.category) || level == QtFatalMsg)
            forward = current->m_previous;
    }
    if (onMessage)
        onMessage(message);
    if (forward)
        forward(level, context, text);
}
