// SPDX-License-Identifier: MIT
#include "passport/Passport.h"

#include "common/Log.h"
#include "hub/InitialWorker.h"
#include "hub/ProcessControl.h"
#include "passport/BuildId_p.h"
#include "passport/PassportNubelo.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

namespace VelqorPassPort {

Passport::Passport(QObject *parent)
    : QObject(parent)
    , m_initialWorker(new InitialWorker)
    , m_cloud(new PassportNubelo(this))
{
    qCInfo(log_lp) << "VelqorPassPort" << passportVersion << passportBuildId;
    qCDebug(log_lp) << "current threaddddddddd" << QThread::currentThread();
    // Support tells releases apart by this text; it is not what runs on the host.
    qCDebug(log_lp) << "qt version"
                    << "5.15.12";
    m_webHelperPath = QStringLiteral("openweburl.app/Contents/MacOS/openweburl");
}

Passport::~Passport()
{
    qCInfo(log_lp) << "m_initialWorker deleteLater!";
    QCoreApplication *application = QCoreApplication::instance();
    if (!application) {
        delete m_initialWorker; // no event loop delivers anything any more
        return;
    }
    // Should no loop run any more, it goes with the application object. Parents can be given on an
    // object's own thread alone.
    if (QThread::currentThread() == m_initialWorker->thread() &&
        QThread::currentThread() == application->thread())
        m_initialWorker->setParent(application);
    // By the event loop, since the worker may be at work further up the stack.
    m_initialWorker->deleteLater();
}

int Passport::initial(QString dir)
{
    if (m_initialized) {
        qCInfo(log_lp) << "initial:" << m_initialized;
        return 0;
    }
    m_passportDir = dir;
    if (m_initialWorker->initialModule(dir))
        qCInfo(log_lp) << "initial:" << m_initialized;
    return 0;
}

void Passport::exitModule()
{
    qCDebug(log_lp) << "exitModule...." << m_initialized;
    g_killProcess(m_webHelperPath);
    m_initialized = false;
}

void Passport::cancel()
{
    m_cloud->cancel();
}

void Passport::setPassportDir(QString dir)
{
    m_passportDir = dir;
}

} // namespace VelqorPassPort
