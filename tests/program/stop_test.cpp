// SPDX-License-Identifier: MIT
// Stopping a run by signals: exit code 0, no output file written or touched, the log as far as it went.
#include "tests/program/child_process.h"
#include "tests/program/spectrum_inputs.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <csignal>
#include <ctime>
#include <sys/resource.h>

static constexpr int LongExactGroups = 13;    // seconds in every build
static constexpr double StartSeconds = 30.0;  // until the first lines are in the log
static constexpr double StopSeconds = 1.0;    // a stop is promised within 0.1 s; the machine may be busy
static constexpr char Progress[] = "\nComputing the NMR spectrum ...\n";
static constexpr char BlockTable[] = "Number of SubMatrices = 1\n";

// A run that goes on for seconds, in a directory with an older result.
class Stop : public testing::Test {
protected:
    void SetUp() override { WriteText(Work.Path + "/nmrspect.out", "older result"); }

    pid_t Start(const std::string& input, const std::vector<int>& ignored = {}) {
        WriteText(Work.Path + "/nmrspect.in", input);
        ChildSettings settings = {{Work.Path, Work.Path, "2", Work.Path + "/run.log"}};
        settings.IgnoredSignals = ignored;
        return StartProgram(settings);
    }

    bool LogHolds(const char* text) { return WaitForText(Work.Path + "/run.log", text, StartSeconds); }

    // Seconds of a child that may have ended but wasn't waited for; of all children that were.
    static double ProcessorTimeOf(pid_t child) {
        clockid_t clock;
        timespec time = {};
        if (clock_getcpuclockid(child, &clock) == 0) {
            clock_gettime(clock, &time);
        }
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    }
    static double ProcessorTimeOfChildren() {
        rusage usage = {};
        getrusage(RUSAGE_CHILDREN, &usage);
        return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
               1e-6 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
    }

    void ExpectStopped(pid_t child) {
        EXPECT_EQ(WaitForProgram(child, StopSeconds), 0);
        EXPECT_EQ(ReadText(Work.Path + "/nmrspect.out"), "older result");
        const std::string log = ReadText(Work.Path + "/run.log");
        EXPECT_EQ(log.find(Progress), 0u);
        EXPECT_EQ(log.find("NMR Spectrum ==="), std::string::npos) << "the run had ended already";
    }

    TemporaryDirectory Work;
};

TEST_F(Stop, ExactRunByEachSignal) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        std::remove((Work.Path + "/run.log").c_str());
        const pid_t child = Start(ChainInput(LongExactGroups));
        ASSERT_TRUE(LogHolds(BlockTable));
        ASSERT_TRUE(IsRunning(child)) << "too short a run for this test";
        kill(child, signal);
        ExpectStopped(child);
    }
}

TEST_F(Stop, ExactRunInTheMiddleOfItsMatrices) {
    const pid_t child = Start(ChainInput(LongExactGroups));
    ASSERT_TRUE(LogHolds(BlockTable));
    Sleep(0.3);
    ASSERT_TRUE(IsRunning(child)) << "too short a run for this test";
    kill(child, SIGTERM);
    ExpectStopped(child);
}

TEST_F(Stop, DoubledSignals) {
    const pid_t child = Start(ChainInput(LongExactGroups));
    ASSERT_TRUE(LogHolds(BlockTable));
    for (const int signal : {SIGTERM, SIGTERM, SIGINT, SIGHUP, SIGTERM}) {
        kill(child, signal);
    }
    ExpectStopped(child);
}

TEST_F(Stop, SignalsInTheEndlessShowerStillStop) {
    const pid_t child = Start(ChainInput(LongExactGroups));
    ASSERT_TRUE(LogHolds(BlockTable));
    const double end = Now() + StopSeconds;
    while (IsRunning(child) && Now() < end) {
        kill(child, SIGTERM);
        Sleep(0.002);
    }
    ExpectStopped(child);
}

// Many lines: 20 groups have 20 * 2^19 transitions, so that the run writes, sorts and merges for a while. The
// moments are parts of the processor time of a whole run, which other work on the machine hardly stretches. More than
// half of it can be the system's, for giving and taking back the memory, and so most of them lie early; a run that was
// through before its signal came isn't counted, and then its result must be whole.
TEST_F(Stop, WeakRun) {
    const std::string resultFile = Work.Path + "/nmrspect.out";
    const double before = ProcessorTimeOfChildren();
    ASSERT_EQ(WaitForProgram(Start(FilteredWeakInput(20)), 60.0), 0);
    const double whole = ProcessorTimeOfChildren() - before;
    const std::string wholeResult = ReadText(resultFile);
    int stopped = 0;
    for (const double part : {0.02, 0.05, 0.1, 0.15, 0.2, 0.35, 0.5, 0.65, 0.8}) {
        std::remove((Work.Path + "/run.log").c_str());
        WriteText(resultFile, "older result");
        const pid_t child = Start(FilteredWeakInput(20));
        ASSERT_TRUE(LogHolds("Computing"));
        while (IsRunning(child) && ProcessorTimeOf(child) < part * whole) {
            Sleep(0.001);
        }
        kill(child, SIGTERM);
        EXPECT_EQ(WaitForProgram(child, StopSeconds), 0);
        if (ReadText(resultFile) != wholeResult) {
            EXPECT_EQ(ReadText(resultFile), "older result");
            EXPECT_EQ(ReadText(Work.Path + "/run.log").find(Progress), 0u);
            ++stopped;
        }
    }
    EXPECT_GE(stopped, 3);
}

// The listing is stopped too: the log then breaks off within its table.
TEST_F(Stop, Listing) {
    const pid_t child = Start(ManyLinesInput(13));
    ASSERT_TRUE(LogHolds("Frequncy(in Hz)"));
    ASSERT_TRUE(IsRunning(child)) << "too short a run for this test";
    kill(child, SIGTERM);
    EXPECT_EQ(WaitForProgram(child, StopSeconds), 0);
    EXPECT_EQ(ReadText(Work.Path + "/nmrspect.out"), "older result");
}

// nohup and the background jobs of a shell hand the signals over as ignored: they stay so, and SIGTERM stops.
TEST_F(Stop, InheritedIgnoredSignals) {
    const pid_t child = Start(ChainInput(LongExactGroups), {SIGHUP, SIGINT, SIGTERM});
    ASSERT_TRUE(LogHolds(BlockTable));
    kill(child, SIGHUP);
    kill(child, SIGINT);
    Sleep(0.2);
    EXPECT_TRUE(IsRunning(child));
    kill(child, SIGTERM);
    ExpectStopped(child);
}

TEST_F(Stop, IgnoredSignalDoesNotHarmTheResult) {
    const pid_t child = Start(ChainInput(9), {SIGHUP, SIGINT});
    ASSERT_TRUE(LogHolds("Computing"));
    kill(child, SIGHUP);
    kill(child, SIGINT);
    EXPECT_EQ(WaitForProgram(child, 30.0), 0);
    EXPECT_EQ(ReadText(Work.Path + "/nmrspect.out").find("This is a comment line."), 0u);
}
