#include "web/WebTool_p.h"

namespace VelqorPassPort {

// The process object is never released, deliberately: its destructor would kill a tool that should
// still be running, and a page must not close under its user.
WebTool::WebTool(const QString &passportDir, const QString &program)
    : m_programPath(passportDir + QStringLiteral("/openweburl/") + program)
    , m_process(*new QProcess)
{
}

void WebTool::run(const QStringList &arguments)
{
    m_process.setReadChannel(QProcess::StandardOutput);
    m_process.start(m_programPath, arguments, QIODevice::ReadWrite);
    m_process.waitForFinished(-1);
}

} // namespace VelqorPassPort
