// SPDX-License-Identifier: MIT
#include "hub/ProcessControl.h"

#include <QtCore/QProcess>

// The file name of the hub's program; which one is started, the configuration says. Not in the
// header, where the name could clash with a host's own.
[[maybe_unused]] static const QString g_hubName = QStringLiteral("passportHub.exe");

bool g_checkProcessRunning(const QString &name, QList<unsigned long long> &processIds)
{
    Q_UNUSED(processIds)
    constexpr int patienceMs = 30000;

    QProcess ps;
    ps.start(QStringLiteral("ps"), {QStringLiteral("-A")}, QIODevice::ReadWrite);
    ps.waitForFinished(patienceMs);
    const QByteArray listing = ps.readAll();
    // Without a listing nothing runs, not even the empty name that every listing contains.
    return !listing.isEmpty() && listing.contains(name.toUtf8());
}

void g_killProcess(QString name)
{
    QProcess::startDetached(QStringLiteral("killall"), {name});
}

void g_terminateProcess(QString name)
{
    g_killProcess(name);
}
