// keeper [--disk FOLDER BYTES UID GID] COMMAND [ARGUMENT...]
//
// Runs a command until it ends or standard input does, then ends everything that descends from it. Whoever
// holds the other end of standard input need only die for the servers below to be gone, whatever they did to
// their parentage and their user ids. With --disk a folder becomes a disk of the given size, for the command
// alone: it is mounted in a namespace of the command's own and so cannot outlive it.

#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "keeper: %s: %s\n", what, std::strerror(errno));
    _exit(126);
}

void MountDisk(const char* folder, const char* bytes, const char* uid, const char* gid) {
    const std::string options = std::string("size=") + bytes + ",mode=0755,uid=" + uid + ",gid=" + gid;
    if (unshare(CLONE_NEWNS) != 0) Fail("a mount namespace");
    if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) Fail("private mounts");
    if (mount("tmpfs", folder, "tmpfs", MS_NOSUID | MS_NODEV, options.c_str()) != 0) Fail("the disk");
}

void EndDescendants() {
    // Orphans come to the keeper, so killing children again and again reaches every generation.
    for (;;) {
        std::ifstream children("/proc/thread-self/children");
        for (pid_t child; children >> child;) kill(child, SIGKILL);
        if (waitpid(-1, nullptr, 0) < 0 && errno == ECHILD) return;
    }
}

/// True when the process was among those that ended.
bool Reap(pid_t awaited) {
    bool ended = false;
    for (pid_t pid; (pid = waitpid(-1, nullptr, WNOHANG)) > 0;) ended = ended || pid == awaited;
    return ended;
}

void WaitForEnd(pid_t child, int signals) {
    pollfd polls[] = {{STDIN_FILENO, POLLIN, 0}, {signals, POLLIN, 0}};
    while (poll(polls, 2, -1) >= 0 || errno == EINTR) {
        if (polls[0].revents) return;
        signalfd_siginfo info;
        if (polls[1].revents && read(signals, &info, sizeof info) > 0 &&
            (info.ssi_signo != SIGCHLD || Reap(child)))
            return;
    }
}

}  // namespace

int main(int argc, char** argv) {
    char** command = argv + 1;
    if (argc > 6 && std::strcmp(argv[1], "--disk") == 0) {
        MountDisk(argv[2], argv[3], argv[4], argv[5]);
        command += 5;
    }
    if (!*command) return 2;

    sigset_t watched, before;
    sigemptyset(&watched);
    for (const int number : {SIGCHLD, SIGTERM, SIGINT, SIGHUP}) sigaddset(&watched, number);
    sigprocmask(SIG_BLOCK, &watched, &before);
    const int signals = signalfd(-1, &watched, SFD_CLOEXEC);
    prctl(PR_SET_CHILD_SUBREAPER, 1);

    const pid_t child = fork();
    if (child < 0) Fail("fork");
    if (child == 0) {
        sigprocmask(SIG_SETMASK, &before, nullptr);
        setsid();
        (void)!std::freopen("/dev/null", "r", stdin);
        execvp(*command, command);
        Fail(*command);
    }
    WaitForEnd(child, signals);
    EndDescendants();
    return 0;
}
