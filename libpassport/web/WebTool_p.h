#pragma once

#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace VelqorPassPort {

/// One run of the web tool, the separate program that shows a page of the account service.
///
/// Construct it, connect to the process what reads its output, then run() it. All of it happens on
/// the thread that calls run(), which is blocked for the whole life of the page.
class WebTool
{
public:
    /// `program` is the tool's path below the openweburl directory of the passport directory.
    WebTool(const QString &passportDir, const QString &program);
    Q_DISABLE_COPY(WebTool)

    QString programPath() const { return m_programPath; }

    /// Never released: it outlives this object, for as long as the program lives.
    QProcess &process() { return m_process; }

    /// Starts the program and waits for its end without a time limit. A program that cannot be
    /// started ends at once; nothing is reported.
    void run(const QStringList &arguments);

private:
    QString m_programPath;
    QProcess &m_process;
};

} // namespace VelqorPassPort
