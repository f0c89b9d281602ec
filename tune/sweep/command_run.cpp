// SPDX-License-Identifier: MIT
#include "tune/sweep/command_run.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using steady = std::chrono::steady_clock;

timespec as_timespec(steady::duration span) {
    const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(span).count();
    return timespec{static_cast<time_t>(ns / 1000000000), static_cast<long>(ns % 1000000000)};
}

// Whether the child has ended, leaving it unreaped so that its process group
// cannot be taken over by a new process yet.
bool has_ended(pid_t pid) {
    siginfo_t info{};
    return waitid(P_PID, pid, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == pid;
}

// Waits for the child to end, waking on SIGCHLD (blocked by the caller).
bool wait_for_end(pid_t pid, steady::time_point until) {
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    for (;;) {
        if (has_ended(pid))
            return true;
        const auto now = steady::now();
        if (now >= until)
            return false;
        const timespec left = as_timespec(until - now);
        sigtimedwait(&child, nullptr, &left);
    }
}

steady::time_point end_of_grace() {
    return steady::now() + std::chrono::duration_cast<steady::duration>(
                               std::chrono::duration<double>(kill_grace_seconds));
}

// The children of this process: as a subreaper it adopts what the command
// leaves behind outside its group (a daemon in a session of its own).
std::vector<pid_t> adopted() {
    std::vector<pid_t> children;
    DIR* proc = opendir("/proc");
    if (!proc)
        return children;
    const pid_t self = getpid();
    while (const dirent* entry = readdir(proc)) {
        if (entry->d_name[0] < '1' || entry->d_name[0] > '9')
            continue;
        std::FILE* stat =
            std::fopen(("/proc/" + std::string(entry->d_name) + "/stat").c_str(), "re");
        if (!stat)
            continue;
        // "pid (comm) state ppid ...": the name may hold blanks and parentheses.
        char line[512];
        const char* close = std::fgets(line, sizeof line, stat) ? std::strrchr(line, ')') : nullptr;
        int pid = 0, parent = 0;
        if (close && std::sscanf(line, "%d", &pid) == 1 &&
            std::sscanf(close + 1, " %*c %d", &parent) == 1 && parent == self)
            children.push_back(pid);
        std::fclose(stat);
    }
    closedir(proc);
    return children;
}

// Ends the adopted processes, and what they leave in turn, and reaps them.
void end_adopted() {
    for (std::vector<pid_t> left = adopted(); !left.empty(); left = adopted()) {
        for (pid_t pid : left) {
            kill(pid, SIGTERM);
            kill(pid, SIGCONT);
        }
        const auto until = end_of_grace();
        for (pid_t pid : left) {
            wait_for_end(pid, until);
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
        }
    }
}

// Ends whatever runs in the child's group and reaps the child, then ends
// what it left outside its group; gives its wait status. SIGCONT wakes a
// group stopped by job control, so that it sees the SIGTERM.
int end_group(pid_t pid) {
    kill(-pid, SIGTERM);
    kill(-pid, SIGCONT);
    wait_for_end(pid, end_of_grace());
    kill(-pid, SIGKILL);
    int status = 0;
    waitpid(pid, &status, 0);
    end_adopted();
    return status;
}

[[noreturn]] void exec_child(const std::vector<char*>& args, const environment& extra,
                             const stop_signals& stop, int error_pipe, int output) {
    setpgid(0, 0);
    // Its output is no part of the run's: a reader of that (| head) that goes
    // away must not fail the command.
    if (output >= 0)
        dup2(output, STDERR_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    for (const auto& [name, value] : extra)
        setenv(name.c_str(), value.c_str(), 1);
    sigprocmask(SIG_SETMASK, &stop.original_mask(), nullptr);
    restore_broken_pipe();
    execvp(args[0], args.data());
    const int error = errno;
    (void)!write(error_pipe, &error, sizeof error);
    _exit(127);
}

}  // namespace

command_result run_command(const std::vector<std::string>& argv, const environment& extra,
                           double timeout_seconds, const stop_signals& stop,
                           const std::function<void()>& every_second, int output) {
    // An inherited SIG_IGN for SIGCHLD would reap the child before us.
    signal(SIGCHLD, SIG_DFL);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    sigset_t wake = stop.set(), before;
    sigaddset(&wake, SIGCHLD);
    sigprocmask(SIG_BLOCK, &wake, &before);
    struct mask_restorer {
        const sigset_t& mask;
        ~mask_restorer() { sigprocmask(SIG_SETMASK, &mask, nullptr); }
    } restore{before};

    std::vector<char*> args;
    for (const std::string& arg : argv)
        args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    int error_pipe[2];
    if (pipe2(error_pipe, O_CLOEXEC) != 0)
        return {command_result::not_started, errno};
    const pid_t pid = fork();
    if (pid == 0)
        exec_child(args, extra, stop, error_pipe[1], output);
    const int fork_error = errno;
    close(error_pipe[1]);
    if (pid < 0) {
        close(error_pipe[0]);
        return {command_result::not_started, fork_error};
    }
    // Both sides set the group, so that it exists whichever runs first.
    setpgid(pid, pid);
    int exec_error = 0;
    const bool exec_failed =
        read(error_pipe[0], &exec_error, sizeof exec_error) == sizeof exec_error;
    close(error_pipe[0]);
    if (exec_failed) {
        waitpid(pid, nullptr, 0);
        return {command_result::not_started, exec_error};
    }

    const auto deadline = steady::now() + std::chrono::duration_cast<steady::duration>(
                                              std::chrono::duration<double>(timeout_seconds));
    // By the clock, whatever wakes the wait: an adopted orphan's SIGCHLD may
    // come more often than once a second.
    auto next_second = steady::now() + std::chrono::seconds(1);
    while (!has_ended(pid)) {
        const auto now = steady::now();
        if (now >= deadline) {
            end_group(pid);
            return {command_result::timed_out, 0};
        }
        if (now >= next_second) {
            if (every_second)
                every_second();
            next_second = now + std::chrono::seconds(1);
        }
        const timespec nap = as_timespec(std::min(deadline, next_second) - now);
        const int arrived = sigtimedwait(&wake, nullptr, &nap);
        if (arrived > 0 && arrived != SIGCHLD) {
            end_group(pid);
            return {command_result::interrupted, arrived};
        }
    }
    // What it left running in its group would overlap the next value.
    const int status = end_group(pid);
    return {WIFEXITED(status) && WEXITSTATUS(status) == 0 ? command_result::passed
                                                          : command_result::failed,
            0};
}

bool command_exists(const std::string& command) {
    auto executable = [](const std::string& path) {
        struct stat info {};
        return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
               access(path.c_str(), X_OK) == 0;
    };
    if (command.find('/') != std::string::npos)
        return executable(command);
    const char* path = getenv("PATH");
    std::string dirs = path ? path : "/bin:/usr/bin";
    for (std::string::size_type start = 0;;) {
        const std::string::size_type colon = dirs.find(':', start);
        const std::string dir = dirs.substr(start, colon - start);
        if (!command.empty() && executable((dir.empty() ? "." : dir) + "/" + command))
            return true;
        if (colon == std::string::npos)
            return false;
        start = colon + 1;
    }
}
