// SPDX-License-Identifier: MIT
#include "TerminationSignals.h"

#include <QtCore/QtGlobal>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

// A signal handler may do little more than write to a descriptor, so it does just that.
int wakeDescriptor = -1;

void wake(int)
{
    const int savedErrno = errno;
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(wakeDescriptor, &byte, 1);
    errno = savedErrno;
}

constexpr int watched[] = {SIGINT, SIGTERM, SIGHUP};

// Under nohup a hang-up is ignored from the start, and stays so.
void handle(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    if (signal == SIGHUP && action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent) : QObject(parent)
{
    if (::pipe(m_pipe.data()) != 0)
        qFatal("no pipe for the termination signals");
    for (const int descriptor : m_pipe) {
        ::fcntl(descriptor, F_SETFL, O_NONBLOCK);
        ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
    wakeDescriptor = m_pipe[1];
    m_notifier = std::make_unique<QSocketNotifier>(m_pipe[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &TerminationSignals::drain);
    for (const int signal : watched)
        handle(signal, wake);
}

TerminationSignals::~TerminationSignals()
{
    for (const int signal : watched)
        handle(signal, SIG_DFL);
    m_notifier.reset();
    for (const int descriptor : m_pipe)
        ::close(descriptor);
}

void TerminationSignals::drain()
{
    char bytes[16];
    while (::read(m_pipe[0], bytes, sizeof bytes) > 0) {
    }
    Q_EMIT received();
}
