// SPDX-License-Identifier: MIT
#include "support/ChildProcess.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int onAFullDisk(const std::function<int()> &check)
{
    const pid_t child = fork();
    if (child == 0) {
        const rlimit fullDisk{4096, 4096};
        std::signal(SIGXFSZ, SIG_IGN);
        _exit(setrlimit(RLIMIT_FSIZE, &fullDisk) == 0 ? check() : 255);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status)
               ? WEXITSTATUS(status)
               : -1;
}
