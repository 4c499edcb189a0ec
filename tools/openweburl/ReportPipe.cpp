// SPDX-License-Identifier: MIT
#include "ReportPipe.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool leadToTheSamePlace(int one, int other)
{
    struct stat first
    {
    };
    struct stat second
    {
    };
    return ::fstat(one, &first) == 0 && ::fstat(other, &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino &&
           first.st_rdev == second.st_rdev;
}

} // namespace

ReportPipe::ReportPipe() : m_descriptor(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1))
{
    const bool merged = leadToTheSamePlace(STDOUT_FILENO, STDERR_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDOUT_FILENO);
    if (merged)
        ::dup2(nowhere, STDERR_FILENO);
    if (nowhere > STDERR_FILENO) // else it has taken the place of one that was closed
        ::close(nowhere);
    std::signal(SIGPIPE, SIG_IGN);
}

ReportPipe::~ReportPipe()
{
    ::close(m_descriptor);
}

bool ReportPipe::write(const QByteArray &report) const
{
    ssize_t written = -1;
    do {
        written = ::write(m_descriptor, report.constData(), static_cast<size_t>(report.size()));
    } while (written < 0 && errno == EINTR);
    return written == report.size();
}
