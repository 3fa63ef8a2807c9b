// A disk that fills up part way: work run in a child process that may write files of at most a
// given size, as a full disk stops a file in the middle (writes beyond it fail with EFBIG).
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace plattmix::test {

// Runs work in a child process whose files cannot grow beyond maxFileBytes; true when the child
// ran to its end and work answered true. The child shares nothing back but that answer. A child
// still at work after five minutes (work that hangs) is ended by its alarm: false.
inline bool WithFileSizeLimit(rlim_t maxFileBytes, const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child < 0)
        return false;
    if (child == 0) {
        const rlimit limit{maxFileBytes, maxFileBytes};
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
        alarm(300);
        _exit(work() ? 0 : 1);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace plattmix::test
