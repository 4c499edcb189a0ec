// SPDX-License-Identifier: MIT
#include "web/WebTool_p.h"

#include "common/Log.h"
#include "config/PassportDirectory_p.h"

#include <utility>

namespace VelqorPassPort {

// The process object is never released: its destructor would kill a tool that should
// still be running, and a page must not close under its user.
WebTool::WebTool(const QString &passportDir, const QString &program)
    : m_programPath(PassportDirectory(passportDir).webTool(program))
    , m_process(*new QProcess)
{
}

void WebTool::setReceiver(Receiver receive)
{
    QProcess *process = &m_process;
    QObject::connect(
        process, &QProcess::readyReadStandardOutput, process,
        [process, receive = std::move(receive)] { receive(*process); }, Qt::DirectConnection);
}

void WebTool::mergeStandardError()
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
}

void WebTool::start(const QStringList &arguments)
{
    m_process.setReadChannel(QProcess::StandardOutput);
    m_process.start(m_programPath, arguments, QIODevice::ReadWrite);
}

void WebTool::waitForEnd()
{
    m_process.waitForFinished(-1);
}

QByteArray readChunk(QProcess &tool)
{
    QByteArray chunk = tool.readAllStandardOutput();
    qCDebug(log_lp) << "resultTest res::::" << chunk;
    return chunk;
}

} // namespace VelqorPassPort
