// SPDX-License-Identifier: MIT
// Whole runs of the program for the benchmarks: a work folder of their own, and the processor time (user and system)
// and the largest memory of one process. The program is started in the work folder, where paths are short.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <initializer_list>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// What one process took.
struct ProgramCost {
    double Seconds;    // processor time
    double Megabytes;  // largest resident memory
};

[[noreturn]] inline void EndBenchmark(const std::string& reason) {
    std::fprintf(stderr, "%s\n", reason.c_str());
    std::exit(1);
}

// A new folder; the caller removes it with RemoveWorkFolder.
inline std::string MakeWorkFolder() {
    char folder[] = "/tmp/velkoran_benchmark_XXXXXX";
    if (mkdtemp(folder) == nullptr) {
        EndBenchmark("no work folder can be made");
    }
    return folder;
}

inline int RemoveWorkFolder(const std::string& folder) {
    return std::system(("rm -rf " + folder).c_str());
}

inline std::FILE* OpenOrEnd(const std::string& path, const char* mode) {
    std::FILE* file = std::fopen(path.c_str(), mode);
    if (file == nullptr) {
        EndBenchmark("cannot open " + path);
    }
    return file;
}

// Runs the program in the folder with these arguments; ends the benchmark if it fails.
inline ProgramCost RunProgram(const std::string& folder, std::initializer_list<const char*> arguments) {
    std::vector<char*> list = {const_cast<char*>("velkoran")};
    for (const char* argument : arguments) {
        list.push_back(const_cast<char*>(argument));
    }
    list.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        if (chdir(folder.c_str()) != 0) {
            _exit(126);
        }
        unlink("run.log");
        execv(VELKORAN_PROGRAM, list.data());
        _exit(127);
    }
    int status = 0;
    rusage usage = {};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        EndBenchmark("the program failed");
    }
    return {static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                1e-6 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec),
            static_cast<double>(usage.ru_maxrss) / 1024.0};
}
