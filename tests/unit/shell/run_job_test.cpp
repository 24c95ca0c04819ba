// SPDX-License-Identifier: MIT
// Paths and directories of a job, and what becomes of the run's data.
#include "ground/memory.h"
#include "shell/run_job.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <sys/resource.h>
#include <unistd.h>

struct DirectoryCase {
    const char* Parameter;          // field 1
    const char* Work;               // field 2
    const char* ParameterExpected;  // with what the test appends
    const char* WorkExpected;
};

// On purpose the end of the parameter directory is looked for in the work directory, at the length of the
// former.
static constexpr DirectoryCase DirectoryCases[] = {
    {"", "", "\\", "\\"},
    {"same", "same", "same\\", "same\\"},
    {"same\\", "same\\", "same\\", "same\\"},
    {"C:\\par", "C:\\wo\\k", "C:\\par", "C:\\wo\\k\\"},      // none: position 5 of field 2 holds one
    {"C:\\par\\", "C:\\work", "C:\\par\\\\", "C:\\work\\"},  // two: position 6 of field 2 holds none
    {"C:\\par\\", "C:\\wor\\x", "C:\\par\\", "C:\\wor\\x\\"},
    {"longer\\", "w", "longer\\\\", "w\\"},  // field 2 ends before that position
    {"p", "\\work\\", "p", "\\work\\"},
    {"", "\\work", "\\", "\\work\\"},
    {"par/", "work/", "par/\\", "work/\\"},  // a slash terminates nothing
};

// The job stops at its input, which it can't open; the child's exit code tells what it did to the fields.
TEST(RunOneJob, TerminatesItsDirectories) {
    for (const DirectoryCase& one : DirectoryCases) {
        char parameter[64];
        char work[64];
        static DirectoryCase expected;
        std::strcpy(parameter, one.Parameter);
        std::strcpy(work, one.Work);
        expected = one;
        const int exitCode = ExitCodeOfChild([&] {
            static char noLog[] = "";
            ::Run.Process.ConsoleMode = 0;
            static char parameterDirectory[64];
            static char workDirectory[64];
            ::Run.Job.ParameterField = parameter;
            ::Run.Job.WorkField = work;
            ::Run.Job.ParameterDirectory = parameterDirectory;
            ::Run.Job.WorkDirectory = workDirectory;
            ::Run.Job.LogFilePath = noLog;
            std::atexit([] {
                const bool right = std::strcmp(::Run.Job.ParameterDirectory, expected.ParameterExpected) == 0 &&
                                   std::strcmp(::Run.Job.WorkDirectory, expected.WorkExpected) == 0;
                const std::string output = std::string(expected.WorkExpected) + "nmrspect.out";
                _exit(!right ? 21 : ::Run.Job.OutputFilePath != output ? 22 : 20);
            });
            const rlimit none = {0, 0};
            if (setrlimit(RLIMIT_NOFILE, &none) == 0) {  // no file is opened, none is created
                RunOneJob(SpectrumRun);
            }
        });
        EXPECT_EQ(exitCode, 20) << one.Parameter << " " << one.Work;
    }
}

TEST(FreeRunData, FirstCallOfAProcessFreesNothing) {
    ResetRun();
    ::Run.Job.ActiveRunKind = 0;
    AllocateArray(::Run.Lines.SpectrumLines, 1);
    SpectrumLine* lines = ::Run.Lines.SpectrumLines;
    FreeRunData();
    EXPECT_EQ(::Run.Job.ActiveRunKind, ParameterRun);
    EXPECT_EQ(::Run.Lines.SpectrumLines, lines);
    FreeRunData();
    EXPECT_EQ(::Run.Lines.SpectrumLines, nullptr);
    EXPECT_EQ(::Run.Job.ActiveRunKind, ParameterRun);
}

TEST(FreeRunData, IsSafeAtAnyStage) {
    LoadSpinSystem(LikeSpins({1.0, 2.0}, {3.0}));
    FreeRunData();
    EXPECT_EQ(::Run.Spins.IsotopicNumbers, nullptr);
    EXPECT_EQ(::Run.Spins.NucleiInGroup, nullptr);
    EXPECT_EQ(::Run.Spins.ChemicalShifts, nullptr);
    EXPECT_EQ(::Run.Spins.CouplingMatrix, nullptr);
    FreeRunData();
    ResetRun();
}

TEST(Memory, RefusesWhatTheMachineDoesNotHave) {
    double* none = nullptr;
    EXPECT_FALSE(AllocateArray(none, 1LL << 50));
    EXPECT_FALSE(AllocateArray(none, -1));
    ASSERT_TRUE(AllocateArray(none, 0));
    EXPECT_NE(none, nullptr);
    FreeArray(none);
    EXPECT_EQ(none, nullptr);
    FreeArray(none);
}
