// SPDX-License-Identifier: MIT
// The output file is replaced as a whole or not at all: what stands there while a run computes, what a run without
// rights or without room leaves, and that nothing is ever left beside it.
#include "files/result_writer.h"
#include "ground/platform_linux.h"
#include "tests/program/child_process.h"
#include "tests/program/spectrum_inputs.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

static constexpr char Older[] = "older result";
static constexpr uid_t Nobody = 65534;
static constexpr int LongExactGroups = 13;
static constexpr double StartSeconds = 30.0;
static constexpr double StopSeconds = 10.0;

// A work folder; the output is nmrspect.out in it.
class OutputFile : public testing::Test {
protected:
    std::string Output() const { return Work.Path + "/nmrspect.out"; }

    int RunOnInput(const char* input) {
        WriteText(Work.Path + "/nmrspect.in", input);
        return RunProgram({{Work.Path, Work.Path, "2"}});
    }

    std::string CannotCreate() const {
        return "ERRMSG: Velkoran can not create its output file " + Work.Path + "/nmrspect.out.\n";
    }

    // Writes a result of one line within a child, as a user without special rights, with a largest size of files.
    int WriteWithout(rlim_t largestFile) {
        return ExitCodeOfChild([&] {
            InstallStopSignals();
            const rlimit limit = {largestFile, largestFile};
            if (setrlimit(RLIMIT_FSIZE, &limit) != 0 || (geteuid() == 0 && setuid(Nobody) != 0)) {
                _exit(96);
            }
            UseFilesIn(Work.Path);
            ::Run.Options.CalculateSpectra = 1;
            LoadLines({{125.0f, 1.0f, 1}});
            ::Run.Lines.SpectrumLineCount = 1;
            WriteResults();
        });
    }

    // Lets the user without special rights own a file or folder, where the test isn't run by that user's like.
    static void GiveAway(const std::string& path) {
        if (geteuid() == 0) {
            ASSERT_EQ(chown(path.c_str(), Nobody, Nobody), 0);
        }
    }

    ino_t OutputNode() const {
        struct stat status = {};
        stat(Output().c_str(), &status);
        return status.st_ino;
    }

    // Names of the folder's files beside the input and the log.
    std::vector<std::string> Results() const {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(Work.Path)) {
            const std::string name = entry.path().filename().string();
            if (name != "nmrspect.in" && name != "run.log") {
                names.push_back(name);
            }
        }
        return names;
    }

    TemporaryDirectory Work;
};

static constexpr int Written = 98;  // exit code of steps that come to their end
static const std::vector<std::string> OutputAlone = {"nmrspect.out"};
static const std::vector<std::string> Nothing;

TEST_F(OutputFile, IsReplacedByAnotherFile) {
    WriteText(Output(), Older);
    fs::create_hard_link(Output(), Work.Path + "/run.log");  // keeps the older file in being
    EXPECT_EQ(RunOnInput(OneSpin), 0);
    EXPECT_EQ(ReadText(Output()), OneSpinResult);
    EXPECT_EQ(ReadText(Work.Path + "/run.log"), Older);
    EXPECT_EQ(Results(), OutputAlone);
}

TEST_F(OutputFile, OlderOneStaysWhileTheRunComputesAndAfterAStop) {
    WriteText(Output(), Older);
    WriteText(Work.Path + "/nmrspect.in", ChainInput(LongExactGroups));
    const pid_t child = StartProgram({{Work.Path, Work.Path, "2", Work.Path + "/run.log"}});
    ASSERT_TRUE(WaitForText(Work.Path + "/run.log", "Number of SubMatrices = 1\n", StartSeconds));
    EXPECT_EQ(ReadText(Output()), Older);
    EXPECT_EQ(Results(), OutputAlone);
    kill(child, SIGTERM);
    EXPECT_EQ(WaitForProgram(child, StopSeconds), 0);
    EXPECT_EQ(ReadText(Output()), Older);
    EXPECT_EQ(Results(), OutputAlone);
}

TEST_F(OutputFile, FatalErrorLeavesItsLineAlone) {
    WriteText(Output(), Older);
    EXPECT_EQ(RunOnInput("title\n"), 0);
    EXPECT_EQ(ReadText(Output()).find("ERRMSG: "), 0u);
    EXPECT_EQ(Results(), OutputAlone);
}

TEST_F(OutputFile, LinkIsWrittenThrough) {
    WriteText(Work.Path + "/run.log", "an older and longer result, of which nothing stays\n" + std::string(200, '-'));
    fs::create_symlink("run.log", Output());
    EXPECT_EQ(RunOnInput(OneSpin), 0);
    EXPECT_TRUE(fs::is_symlink(Output()));
    EXPECT_EQ(ReadText(Work.Path + "/run.log"), OneSpinResult);
    EXPECT_EQ(Results(), OutputAlone);
}

TEST_F(OutputFile, LinkToNothingCreatesItsFile) {
    fs::create_symlink("run.log", Output());
    EXPECT_EQ(RunOnInput(OneSpin), 0);
    EXPECT_TRUE(fs::is_symlink(Output()));
    EXPECT_EQ(ReadText(Work.Path + "/run.log"), OneSpinResult);
}

TEST_F(OutputFile, WithoutRightsIsLeftAlone) {
    WriteText(Output(), Older);
    GiveAway(Work.Path);
    GiveAway(Output());
    fs::permissions(Output(), fs::perms(0444));
    EXPECT_EQ(WriteWithout(RLIM_INFINITY), 0);
    EXPECT_EQ(ReadText(Output()), Older);
    EXPECT_EQ(Results(), OutputAlone);
}

TEST_F(OutputFile, ReadOnlyFolderTakesNone) {
    GiveAway(Work.Path);
    fs::permissions(Work.Path, fs::perms(0555));
    EXPECT_EQ(WriteWithout(RLIM_INFINITY), 0);
    EXPECT_EQ(Results(), Nothing);
    fs::permissions(Work.Path, fs::perms(0755));
}

TEST_F(OutputFile, InAReadOnlyFolderIsWrittenInPlace) {
    WriteText(Output(), Older);
    const ino_t node = OutputNode();
    GiveAway(Work.Path);
    GiveAway(Output());
    fs::permissions(Work.Path, fs::perms(0555));
    EXPECT_EQ(WriteWithout(RLIM_INFINITY), Written);
    fs::permissions(Work.Path, fs::perms(0755));
    EXPECT_EQ(ReadText(Output()), OneSpinResult);
    EXPECT_EQ(OutputNode(), node);
    EXPECT_EQ(Results(), OutputAlone);
}

// In a folder with the sticky bit somebody else's file can't be replaced, even where everybody may write to it.
TEST_F(OutputFile, ThatCannotBeReplacedIsOverwritten) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs a file of another user";
    }
    WriteText(Output(), "an older and longer result, of which nothing stays\n" + std::string(200, '-'));
    const ino_t node = OutputNode();
    fs::permissions(Output(), fs::perms(0666));
    fs::permissions(Work.Path, fs::perms(01777));
    EXPECT_EQ(WriteWithout(RLIM_INFINITY), Written);
    EXPECT_EQ(ReadText(Output()), OneSpinResult);
    EXPECT_EQ(OutputNode(), node);
    EXPECT_EQ(Results(), OutputAlone);
}

// Each size below that of the result is an error of writing; where the error line fits it stands alone, older result
// or not.
TEST_F(OutputFile, ThatCannotBeWrittenWholeHoldsTheErrorLineOrIsGone) {
    GiveAway(Work.Path);
    const rlim_t errorSize = CannotCreate().size();
    const rlim_t resultSize = sizeof OneSpinResult - 1;
    for (const bool older : {false, true}) {
        for (rlim_t limit = 0; limit <= std::max(errorSize, resultSize) + 1; ++limit) {
            fs::remove(Output());
            if (older) {
                WriteText(Output(), Older);
                GiveAway(Output());
            }
            EXPECT_EQ(WriteWithout(limit), limit < resultSize ? 0 : Written) << limit;
            const std::string failure = limit < errorSize ? "(no file)" : CannotCreate();
            EXPECT_EQ(ReadText(Output()), limit < resultSize ? failure : OneSpinResult) << limit;
            EXPECT_EQ(Results(), ReadText(Output()) == "(no file)" ? Nothing : OutputAlone) << limit;
        }
    }
}

TEST_F(OutputFile, FullDeviceBehindALinkEndsTheRun) {
    fs::create_symlink("/dev/full", Output());
    EXPECT_EQ(RunOnInput(OneSpin), 0);
    EXPECT_EQ(fs::read_symlink(Output()), "/dev/full");
    EXPECT_EQ(Results(), OutputAlone);
}

TEST_F(OutputFile, FullDeviceAsLogDoesNotHarmIt) {
    WriteText(Work.Path + "/nmrspect.in", OneSpin);
    EXPECT_EQ(RunProgram({{Work.Path, Work.Path, "2", "/dev/full"}}), 0);
    EXPECT_EQ(ReadText(Output()), OneSpinResult);
}
