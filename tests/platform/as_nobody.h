#pragma once
// Runs a check without the superuser's rights, which know no closed doors.

#include <sys/wait.h>
#include <unistd.h>

inline constexpr uid_t kNobody = 65534;

/// `check` runs in a child process (as the user nobody when the tests run as root); its result comes back.
template <typename Check>
bool AsNobody(Check check) {
    const pid_t child = fork();
    if (child == 0) {
        const bool dropped = geteuid() != 0 || (setegid(kNobody) == 0 && seteuid(kNobody) == 0);
        _exit(dropped && check() ? 0 : 1);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
