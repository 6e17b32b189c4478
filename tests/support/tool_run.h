// SPDX-License-Identifier: MIT
#pragma once

#include "platform/platform.h"
#include "support/scratch_folder.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace korvalite::core::test {

// The real executable at work, started with one argument. Its standard output and error are kept.
class RunningTool {
public:
    explicit RunningTool(const std::string& argument, const std::string& workingFolder = "/") {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addchdir_np(&actions, workingFolder.c_str());
        redirect(actions, STDOUT_FILENO, output_ / u8"out");
        redirect(actions, STDERR_FILENO, output_ / u8"err");
        std::string program = KORVALITE_TOOL_PATH;
        std::string tail = argument;
        char* arguments[] = {program.data(), tail.data(), nullptr};
        const int failed =
            posix_spawn(&process_, program.c_str(), &actions, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        if (failed != 0) throw std::runtime_error("cannot start " + program);
    }
    ~RunningTool() { wait(); }
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;

    bool isRunning() {
        if (!ended_) ended_ = waitpid(process_, &status_, WNOHANG) == process_;
        return !ended_;
    }

    void wait() {
        if (!ended_) ended_ = waitpid(process_, &status_, 0) == process_;
    }

    // Suspends it, which delays whatever it does next.
    void suspendFor(int milliseconds) const {
        kill(process_, SIGSTOP);
        platform::sleepMilliseconds(milliseconds);
        kill(process_, SIGCONT);
    }

    // After wait(): the exit status, or -1 if the process did not end by itself.
    int exitStatus() const { return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1; }
    std::string output() const { return readWhole(output_ / u8"out"); }
    std::string errors() const { return readWhole(output_ / u8"err"); }

private:
    static void redirect(posix_spawn_file_actions_t& actions, int stream, const std::string& path) {
        posix_spawn_file_actions_addopen(&actions, stream, path.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
    }

    ScratchFolder output_;
    pid_t process_ = 0;
    int status_ = 0;
    bool ended_ = false;
};

}  // namespace korvalite::core::test
