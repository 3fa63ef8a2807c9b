// Helpers of the benchmarks that set the program against another program: starting that program
// with its output thrown away, and the runs of each contestant with their median and fastest.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

extern char** environ;

namespace plattmix::bench {

inline double Seconds(std::chrono::steady_clock::duration elapsed) {
    return std::chrono::duration<double>(elapsed).count();
}

// Runs a program with its output thrown away; true when it exited with status 0.
inline bool Spawn(std::vector<std::string> args) {
    std::vector<char*> argv;
    for (auto& arg : args)
        argv.push_back(arg.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = 0;
    const int failed = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failed == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

// The runs of one contestant: their median and the fastest.
struct Runs {
    std::vector<double> seconds;
    void Add(double taken) { seconds.push_back(taken); }
    double Fastest() const { return *std::min_element(seconds.begin(), seconds.end()); }
    double Median() const {
        std::vector<double> sorted = seconds;
        std::sort(sorted.begin(), sorted.end());
        const size_t middle = sorted.size() / 2;
        return sorted.size() % 2 != 0 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
    }
};

}  // namespace plattmix::bench
