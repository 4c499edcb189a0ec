// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace VelqorPassPort {

/// One run of the web tool, the separate program that shows a page of the account service.
///
/// Construct it, say who receives its output, start() it and wait. All of it happens on the calling
/// thread, which needs no event loop and is blocked for the whole life of the page.
class WebTool
{
public:
    /// Called inside waitForEnd() whenever there is standard output to be read.
    using Receiver = std::function<void(QProcess &tool)>;

    /// `program` is the tool's path below the openweburl directory of the passport directory.
    WebTool(const QString &passportDir, const QString &program);
    Q_DISABLE_COPY(WebTool)

    QString programPath() const { return m_programPath; }

    /// Without a receiver standard output is not read.
    void setReceiver(Receiver receive);
    /// Standard error reaches the receiver too.
    void mergeStandardError();

    /// A program that cannot be started ends at once; nothing is reported.
    void start(const QStringList &arguments);
    /// Waits for the program's end without a time limit.
    void waitForEnd();

private:
    QString m_programPath;
    QProcess &m_process; // outlives this object
};

/// Reads, and logs, all the standard output that there is.
QByteArray readChunk(QProcess &tool);

} // namespace VelqorPassPort
