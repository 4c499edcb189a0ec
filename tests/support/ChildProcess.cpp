#include "support/ChildProcess.h"

#include <csignal>
#include <grp.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int inChildProcess(const std::function<int()> &check)
{
    const pid_t child = fork();
    if (child < 0)
        return -1;
    if (child == 0)
        _exit(check());
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int onAFullDisk(const std::function<int()> &check)
{
    return inChildProcess([&check] {
        const rlimit fullDisk{4096, 4096};
        std::signal(SIGXFSZ, SIG_IGN);
        return setrlimit(RLIMIT_FSIZE, &fullDisk) == 0 ? check() : -1;
    });
}

bool dropRoot()
{
    constexpr id_t nobody = 65534;
    return geteuid() != 0 ||
           (setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0);
}
