// SPDX-License-Identifier: MIT
// Starts and watches the program as a child.
#include "tests/program/child_process.h"

#include "tests/support/test_support.h"

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

static constexpr char Program[] = VELKORAN_PROGRAM;
static constexpr double PauseSeconds = 0.001;  // between two looks

double Now() {
    std::timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

void Sleep(double seconds) {
    const double whole = std::floor(seconds);
    const std::timespec pause = {static_cast<std::time_t>(whole), static_cast<long>(1e9 * (seconds - whole))};
    nanosleep(&pause, nullptr);
}

static void Redirect(int descriptor, const std::string& path) {
    dup2(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), descriptor);
}

pid_t StartProgram(const ChildSettings& settings) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    std::vector<char*> arguments = {const_cast<char*>(Program)};
    for (const std::string& argument : settings.Arguments) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    for (const auto& [name, value] : settings.Environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    for (const int signal : settings.IgnoredSignals) {
        std::signal(signal, SIG_IGN);
    }
    Redirect(1, settings.StandardOutput);
    if (!settings.StandardError.empty()) {
        Redirect(2, settings.StandardError);
    }
    if (!settings.Directory.empty() && chdir(settings.Directory.c_str()) != 0) {
        _exit(96);
    }
    execv(Program, arguments.data());
    _exit(95);
}

int WaitForProgram(pid_t child, double seconds) {
    const double end = Now() + seconds;
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (Now() > end) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return -1000;
        }
        Sleep(PauseSeconds);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

int RunProgram(const ChildSettings& settings, double seconds) {
    return WaitForProgram(StartProgram(settings), seconds);
}

bool WaitForText(const std::string& path, const std::string& text, double seconds) {
    const double end = Now() + seconds;
    while (ReadText(path).find(text) == std::string::npos) {
        if (Now() > end) {
            return false;
        }
        Sleep(PauseSeconds);
    }
    return true;
}

bool IsRunning(pid_t child) {
    siginfo_t info = {};
    waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT);
    return info.si_pid == 0;
}

// The mask of the signals that a process handles stands in its status file, hexadecimal, SIGHUP in the last bit.
bool WaitUntilStoppable(pid_t child, double seconds) {
    const std::string status = "/proc/" + std::to_string(child) + "/status";
    const double end = Now() + seconds;
    for (;;) {
        const std::string text = ReadText(status);
        const std::size_t mask = text.find("SigCgt:");
        const unsigned long long handled =
            mask == std::string::npos ? 0 : std::strtoull(text.c_str() + mask + 7, nullptr, 16);
        if ((handled >> (SIGTERM - 1) & 1) != 0) {
            return true;
        }
        if (Now() > end) {
            return false;
        }
        Sleep(PauseSeconds);
    }
}
