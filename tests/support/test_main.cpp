// SPDX-License-Identifier: MIT
// The main function of the test programs. A fatal error of the code under test ends the process with code 0;
// outside of a child that was meant to end so, this turns it into a failure.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

static pid_t MainProcess = 0;
static bool Finished = false;

static void CheckFinished() {
    if (!Finished && getpid() == MainProcess) {
        std::fprintf(stderr, "The code under test has ended the process of the tests.\n");
        std::fflush(nullptr);
        _exit(97);
    }
}

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    MainProcess = getpid();
    std::atexit(CheckFinished);
    const int result = RUN_ALL_TESTS();
    Finished = true;
    return result;
}
