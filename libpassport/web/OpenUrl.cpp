#include "passport/Passport.h"

#include "common/Log.h"
#include "hub/InitialWorker.h"
#include "web/WebTool_p.h"

#include <QtCore/QUrl>

namespace VelqorPassPort {

void Passport::openURL(QUrl url, QString text)
{
    const int timeout = m_initialWorker->reloadTiemout();
    qCDebug(log_lp) << "reload____" << timeout;
    WebTool tool(m_passportDir, m_webHelperPath);
    qCDebug(log_lp) << "start openurl::::" << m_webHelperPath << url;
    qCDebug(log_lp) << "start openurl::::" << tool.programPath();
    tool.run({url.toString(), text, QString::number(timeout)});
    Q_EMIT webpageClosed();
}

} // namespace VelqorPassPort
