// SPDX-License-Identifier: MIT
// A run whose result is too long for a limit on file sizes, while the message about it is short enough.
#include "tests/program/child_process.h"
#include "tests/program/spectrum_inputs.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

static constexpr rlim_t MostBytes = 1000;

// Holds for the children that are started within its scope.
struct FileSizeLimit {
    rlimit Before;

    FileSizeLimit() {
        getrlimit(RLIMIT_FSIZE, &Before);
        const rlimit limit = {MostBytes, Before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &Before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
};

static pid_t StartLimited(const std::string& directory) {
    const FileSizeLimit limit;
    return StartProgram({{directory, directory, "2"}});
}

TEST(OutputLimit, MessageTakesThePlaceOfTheResult) {
    const TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", ManyLinesInput(8));
    ASSERT_EQ(RunProgram({{work.Path, work.Path, "2"}}), 0);
    ASSERT_GT(ReadText(work.Path + "/nmrspect.out").size(), MostBytes);
    EXPECT_EQ(WaitForProgram(StartLimited(work.Path), 30.0), 0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"),
              "ERRMSG: Velkoran can not create its output file " + work.Path + "\\nmrspect.out.\n");
}
