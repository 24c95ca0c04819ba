// SPDX-License-Identifier: MIT
// Lets the first, second, third ... allocation of a run fail until the run succeeds: no run may crash, and
// each that fails says so in its output file, unless it can't write one.
#include "tests/program/child_process.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#if defined(__SANITIZE_ADDRESS__)
static constexpr bool Sanitized = true;  // brings its own allocator
#else
static constexpr bool Sanitized = false;
#endif

static constexpr int MostAllocations = 1000;
static constexpr int SetUpAllocations = 6;  // the command line, its fields, and the C library's own
static constexpr int LeastFailures = 10;    // the arrays of a run alone are more
static constexpr char SetUpText[] = "This application has exhausted all available memory.\n";

static const std::string Exact = "title\n3\n1 1 19 3 2 1\nh\n60\nh\n1 2 3\nh\n0 7 1\n7 0 5\n1 5 0\nh\n0.001\nh\n0\n";

static std::string Weak() {
    return Exact.substr(0, Exact.size() - 2) + "1\n";
}

// True for the texts that a run without memory may leave: out of memory, or a file that couldn't be opened
// since the C library had no memory for it.
static bool IsFailureText(const std::string& output, const std::string& directory) {
    return output == "ERRMSG: The molecule selected for calculation is too large and has consumed all "
                     "available memory.\n" ||
           output == "ERRMSG: This application has exhausted all available memory.\n" ||
           output == "ERRMSG: Velkoran can not open the input file " + directory + "\\nmrspect.in.\n" ||
           output == "ERRMSG: Velkoran can not create its output file " + directory + "\\nmrspect.out.\n" ||
           output == "Velkoran cannot open the log file.";
}

// Runs with allocation 1, 2, 3 ... failing until none fails any more. A failure that the C library makes up
// for (a stream without a buffer of its own) may leave a full result.
static void FailOneByOne(const std::string& input, bool all) {
    if (Sanitized) {
        GTEST_SKIP() << "the sanitizer brings its own allocator";
    }
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", input);
    ChildSettings settings = {{work.Path, work.Path, "2", work.Path + "/run.log"}};
    settings.StandardOutput = work.Path + "/stdout";
    settings.StandardError = work.Path + "/stderr";
    ASSERT_EQ(RunProgram(settings), 0);
    const std::string result = ReadText(work.Path + "/nmrspect.out");
    ASSERT_EQ(result.find("This is a comment line."), 0u);
    int told = 0;
    for (int failing = 1; failing < MostAllocations; ++failing) {
        std::filesystem::remove(work.Path + "/nmrspect.out");
        settings.Environment = {{"LD_PRELOAD", FAILING_MALLOC}, {"FAILING_ALLOCATION", std::to_string(failing)}};
        if (all) {
            settings.Environment.push_back({"FAILING_ALL", "1"});
        }
        const int exitCode = RunProgram(settings);
        const std::string output = ReadText(work.Path + "/nmrspect.out");
        if (ReadText(work.Path + "/stderr").empty()) {
            EXPECT_EQ(exitCode, 0);
            EXPECT_EQ(output, result);
            EXPECT_GT(all ? failing : told, LeastFailures);
            return;
        }
        if (exitCode == 3) {  // set-up has neither an output file nor a frame: the abnormal end
            EXPECT_EQ(ReadText(work.Path + "/stdout"), SetUpText) << failing;
            EXPECT_EQ(output, "(no file)") << failing;
            EXPECT_LE(failing, SetUpAllocations) << failing;
            continue;
        }
        EXPECT_EQ(exitCode, 0) << failing;
        if (output == "(no file)") {  // with all failing, the C library opens no file any more
            EXPECT_TRUE(all || failing <= SetUpAllocations) << failing << ": silent";
            EXPECT_NE(ReadText(work.Path + "/stderr").find("(Cannot allocate memory): "), std::string::npos) << failing;
        } else if (output != result) {
            EXPECT_TRUE(IsFailureText(output, work.Path)) << failing << ": " << output;
            ++told;
        }
    }
    FAIL() << "the run never succeeded";
}

TEST(AllocationFailure, OneInAnExactRun) {
    FailOneByOne(Exact, false);
}

TEST(AllocationFailure, OneInAWeakRun) {
    FailOneByOne(Weak(), false);
}

TEST(AllocationFailure, AllFromOneOnInAnExactRun) {
    FailOneByOne(Exact, true);
}

TEST(AllocationFailure, AllFromOneOnInAWeakRun) {
    FailOneByOne(Weak(), true);
}
