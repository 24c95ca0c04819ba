// SPDX-License-Identifier: MIT
// Stopping a run that reads or waits for a file: inputs without an end, FIFOs without an other end, logs and outputs
// that nobody reads. The output file stays as it was.
#include "tests/program/child_process.h"
#include "tests/support/molecule_support.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__)
static constexpr double StopSeconds = 5.0;
#else
static constexpr double StopSeconds = 0.5;
#endif
static constexpr double StartSeconds = 30.0;
static constexpr double QuietSeconds = 0.15;  // in which a run gets to where it waits

static const std::string Selection = "NMRSelectionBegin\n1\nmol 1 atom 1\nNMRSelectionEnd\n";
static const std::string Atoms =
    "AtomsBegin\n2\nmol 1\natom 1 H H H - 0 0 0 0 0\natom 2 H H H - 0 0 0 0.74 0\nAtomsEnd\n";
static const std::string SpectrumInput = "title\n1\n1\nMHz\n100\nppm\n1\nHz\n0\nintensity\n0.001\nweak\n0\n";

// A child that writes a text into a file, then another one again and again, until nobody reads any more.
static pid_t StartFeeder(const std::string& path, const std::string& once, const std::string& again) {
    const pid_t child = fork();
    if (child == 0) {
        const int file = open(path.c_str(), O_WRONLY);
        std::string block = again;
        while (!again.empty() && block.size() < 65536) {
            block += again;
        }
        bool taken = write(file, once.data(), once.size()) == static_cast<ssize_t>(once.size());
        while (taken) {
            if (again.empty()) {
                Sleep(1.0);
            } else {
                taken = write(file, block.data(), block.size()) > 0;
            }
        }
        _exit(0);
    }
    return child;
}

// A run of either kind with its own parameter files, in a directory with an older result.
class ReadingStop : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(Work.Path + "/p");
        CopyParameterFiles(Path("p"));
        WriteText(Path("nmrparam.in"), Selection + Atoms);
        WriteText(Path("nmrspect.in"), SpectrumInput);
        WriteText(Path("nmrparam.out"), "older result");
        WriteText(Path("nmrspect.out"), "older result");
    }

    std::string Path(const std::string& name) const { return Work.Path + "/" + name; }

    // The kind of run that reads a file.
    static bool IsOfSpectrum(const std::string& name) { return name == "nmrspect.in"; }

    pid_t Start(bool spectrum, const std::string& log = "") {
        ChildSettings settings = {{Path("p"), Work.Path, spectrum ? "2" : "1"}};
        if (!log.empty()) {
            settings.Arguments.push_back(log);
        }
        return StartProgram(settings);
    }

    void MakeFifo(const std::string& name) {
        fs::remove(Path(name));
        ASSERT_EQ(mkfifo(Path(name).c_str(), 0600), 0);
    }

    // Stops a run after it has gone on for a while.
    void ExpectStopped(pid_t child, const std::string& what, double after = QuietSeconds) {
        ASSERT_TRUE(WaitUntilStoppable(child, StartSeconds)) << what;
        Sleep(after);
        EXPECT_TRUE(IsRunning(child)) << what << ": too short a run for this test";
        kill(child, SIGTERM);
        EXPECT_EQ(WaitForProgram(child, StopSeconds), 0) << what;
    }

    void ExpectOlderResults(const std::string& what) {
        EXPECT_EQ(ReadText(Path("nmrparam.out")), "older result") << what;
        EXPECT_EQ(ReadText(Path("nmrspect.out")), "older result") << what;
        for (const fs::directory_entry& entry : fs::directory_iterator(Work.Path)) {
            EXPECT_EQ(entry.path().filename().string().find(".out."), std::string::npos) << what;
        }
    }

    // Stops a run whose file is fed without an end.
    void ExpectStoppedWhileFed(const std::string& name, const std::string& once, const std::string& again) {
        const std::string what = name + ": " + once.substr(0, 60) + " ... " + again.substr(0, 20);
        MakeFifo(name);
        const pid_t feeder = StartFeeder(Path(name), once, again);
        ExpectStopped(Start(IsOfSpectrum(name)), what);
        kill(feeder, SIGKILL);
        waitpid(feeder, nullptr, 0);
        ExpectOlderResults(what);
    }

    TemporaryDirectory Work;
};

TEST_F(ReadingStop, FifoThatNobodyWrites) {
    for (const std::string name : {"nmrspect.in", "nmrparam.in", "p/nmr_cupl.abp", "p/nmr_shft.abp", "p/nmrtype.txt"}) {
        MakeFifo(name);
        ExpectStopped(Start(IsOfSpectrum(name)), name);
        ExpectOlderResults(name);
    }
}

// A FIFO is still an input: the run waits for who writes it, and for what comes late.
TEST_F(ReadingStop, FifoThatIsWrittenIsRead) {
    MakeFifo("nmrspect.in");
    const pid_t child = Start(true);
    ASSERT_TRUE(WaitUntilStoppable(child, StartSeconds));
    Sleep(QuietSeconds);
    const int file = open(Path("nmrspect.in").c_str(), O_WRONLY);
    const std::size_t half = SpectrumInput.size() / 2;
    EXPECT_EQ(write(file, SpectrumInput.data(), half), static_cast<ssize_t>(half));
    Sleep(QuietSeconds);
    EXPECT_GT(write(file, SpectrumInput.data() + half, SpectrumInput.size() - half), 0);
    close(file);
    EXPECT_EQ(WaitForProgram(child, StartSeconds), 0);
    EXPECT_EQ(ReadText(Path("nmrspect.out")).find("This is a comment line."), 0u);
}

TEST_F(ReadingStop, WriterThatFallsSilent) {
    ExpectStoppedWhileFed("nmrspect.in", "title\n2\n1", "");
    ExpectStoppedWhileFed("nmrparam.in", "TotalCharge = ", "");
    ExpectStoppedWhileFed("nmrparam.in", Atoms + "NMRSelectionBegin\n1\nmol", "");
    ExpectStoppedWhileFed("p/nmrtype.txt", "heading\nH 1\n", "");
}

// Every place where a reader asks for more, fed with what keeps it asking.
TEST_F(ReadingStop, InputsWithoutAnEnd) {
    ExpectStoppedWhileFed("nmrparam.in", "", "TotalCharge = 1\n");
    ExpectStoppedWhileFed("nmrparam.in", "", "a line that never ends ");
    ExpectStoppedWhileFed("nmrparam.in", "NMRSelectionBegin\n", " ");
    ExpectStoppedWhileFed("nmrparam.in", "NMRSelectionBegin\n", "1");
    ExpectStoppedWhileFed("nmrparam.in", "NMRSelectionBegin\n1\n", "word");
    ExpectStoppedWhileFed("nmrparam.in", "NMRSelectionBegin\n1000000000\n", "mol 1 atom 1\n");
    ExpectStoppedWhileFed("nmrparam.in", Selection + "NMRSelectionBegin\n1\nmol 1 atom 1\n", "no end\n");
    ExpectStoppedWhileFed("nmrparam.in", "AtomsBegin\n2\n", "mol 1\n");
    ExpectStoppedWhileFed("nmrparam.in", "", Selection);
    ExpectStoppedWhileFed("nmrspect.in", "title\n", "0");
    ExpectStoppedWhileFed("nmrspect.in", "title\n", "\n");
    ExpectStoppedWhileFed("nmrspect.in", "title\n2\n1 1\nMHz\n100\nppm\n1 2\nHz\n0 0\n0 0\nintensity\n0.", "1");
    ExpectStoppedWhileFed("p/nmr_shft.abp", "", "word");
    ExpectStoppedWhileFed("p/nmr_shft.abp", "H", "\n");
    ExpectStoppedWhileFed("p/nmrtype.txt", "heading\n", "H 1\n");
}

TEST_F(ReadingStop, DevicesWithoutAnEnd) {
    for (const std::string device : {"/dev/zero", "/dev/urandom"}) {
        for (const std::string name : {"nmrparam.in", "p/nmrtype.txt"}) {
            const std::string kept = ReadText(Path(name));
            fs::remove(Path(name));
            fs::create_symlink(device, Path(name));
            ExpectStopped(Start(false), device + " as " + name);
            ExpectOlderResults(device + " as " + name);
            fs::remove(Path(name));
            WriteText(Path(name), kept);
        }
    }
}

TEST_F(ReadingStop, LogFifoThatNobodyReads) {
    MakeFifo("log");
    ExpectStopped(Start(true, Path("log")), "spectrum");
    ExpectStopped(Start(false, Path("log")), "parameters");
    WriteText(Path("nmrparam.in"), "x = 1\n" + Selection + Atoms);
    ExpectStopped(Start(false, Path("log")), "while reading");
    ExpectOlderResults("log");
}

static std::string UnknownOptions(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += "an unknown option = " + std::to_string(i) + "\n";
    }
    return text;
}

// The FIFO fills, and the run waits in the middle of a line. When its reader goes, it waits for another one.
TEST_F(ReadingStop, LogFifoThatFills) {
    WriteText(Path("nmrparam.in"), UnknownOptions(100000) + Selection + Atoms);
    for (const bool readerStays : {true, false}) {
        fs::remove(Path("log"));
        MakeFifo("log");
        const int reader = open(Path("log").c_str(), O_RDONLY | O_NONBLOCK);
        ASSERT_GE(reader, 0);
        const pid_t child = Start(false, Path("log"));
        ASSERT_TRUE(WaitUntilStoppable(child, StartSeconds));
        Sleep(1.0);  // 64 kB are full after a thousand lines
        if (!readerStays) {
            close(reader);
        }
        ExpectStopped(child, readerStays ? "reader that doesn't read" : "reader that has gone");
        ExpectOlderResults("log");
        if (readerStays) {
            close(reader);
        }
    }
}

TEST_F(ReadingStop, LogTerminalThatNobodyReads) {
    WriteText(Path("nmrparam.in"), UnknownOptions(100000) + Selection + Atoms);
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(grantpt(terminal), 0);
    ASSERT_EQ(unlockpt(terminal), 0);
    const std::string name = ptsname(terminal);
    const int kept = open(name.c_str(), O_RDWR | O_NOCTTY);
    const pid_t child = Start(false, name);
    ASSERT_TRUE(WaitUntilStoppable(child, StartSeconds));
    Sleep(1.0);
    ExpectStopped(child, name);
    ExpectOlderResults(name);
    close(kept);
    close(terminal);
}

TEST_F(ReadingStop, LogDeviceThatTakesAll) {
    WriteText(Path("nmrparam.in"), UnknownOptions(1000000) + Selection + Atoms);
    ExpectStopped(Start(false, "/dev/null"), "/dev/null");
    ExpectStopped(Start(false, Path("log")), "an ordinary log");
    ExpectOlderResults("log");
}

// A result and a message of error alike.
TEST_F(ReadingStop, OutputFifoThatNobodyReads) {
    MakeFifo("nmrspect.out");
    ExpectStopped(Start(true), "result");
    WriteText(Path("nmrspect.in"), "title\n0\n");
    ExpectStopped(Start(true), "message");
    MakeFifo("nmrparam.out");
    MakeFifo("log");
    WriteText(Path("nmrparam.in"), "");
    ExpectStopped(Start(false, Path("log")), "message of a parameter run");
}

TEST_F(ReadingStop, SignalsBeforeAndDuringTheWait) {
    MakeFifo("nmrparam.in");
    for (const double after : {0.0, 0.001, 0.002, 0.004, 0.008, 0.016, 0.032}) {
        for (const int signal : {SIGINT, SIGHUP, SIGTERM}) {
            const pid_t child = Start(false);
            ASSERT_TRUE(WaitUntilStoppable(child, StartSeconds));
            Sleep(after);
            kill(child, signal);
            EXPECT_EQ(WaitForProgram(child, StopSeconds + 0.5), 0) << after << " " << signal;
        }
    }
    ExpectOlderResults("signals");
}

static std::string Entries(int count) {
    std::string text = std::to_string(count) + "\n";
    for (int i = 0; i < count; ++i) {
        text += "mol 1 atom " + std::to_string(count - i % 2) + "\n";
    }
    return text;
}

static std::string ManyAtoms(int count) {
    std::string text = "AtomsBegin\n" + std::to_string(count) + "\nmol 1\n";
    for (int i = 0; i < count; ++i) {
        text += "atom 1 H H H - 0 0 0 0 0\n";
    }
    return text;
}

// Processor seconds of all children so far.
static double ChildrenSeconds() {
    rusage usage = {};
    getrusage(RUSAGE_CHILDREN, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec) + 1e-6 * static_cast<double>(usage.ru_utime.tv_usec);
}

// Runs that end directly behind their readers take a time that grows with their input, not with its square. With a
// search for each entry or name they would take ten times the limit.
TEST_F(ReadingStop, ReadersAreLinear) {
    static constexpr double LinearSeconds = 2.0;
    const std::string lastAtom = "atom 1 H H H - 0 0 0 0 1 -2000000000 s\nAtomsEnd\n";
    double before = ChildrenSeconds();
    WriteText(Path("nmrparam.in"), "NMRSelectionBegin\n" + Entries(100000) + "NMRSelectionEnd\n" +
                                       "QuantumSelectionBegin\n" + Entries(100000) + "QuantumSelectionEnd\n" +
                                       Replaced(ManyAtoms(100000), "\n100000\n", "\n100001\n") + lastAtom);
    ASSERT_EQ(WaitForProgram(Start(false), 100.0), 0);
    EXPECT_NE(ReadText(Path("nmrparam.out")).find("has a bad record for atom 100001"), std::string::npos);
    EXPECT_LT(ChildrenSeconds() - before, LinearSeconds) << "selections";

    std::string types = "heading\n";
    std::string records;
    for (int i = 0; i < 30000; ++i) {
        char name[4] = {static_cast<char>('A' + i % 26), static_cast<char>('!' + i / 26 % 40),
                        static_cast<char>('!' + i / 1040), '\0'};
        types += std::string(name) + " 1\n";
        records += std::string("-") + name + " 1 1 0 1 1 0 1 1 1 1 1 1 1 1\n";
    }
    WriteText(Path("p/nmrtype.txt"), types);
    WriteText(Path("p/nmr_shft.abp"), records);
    WriteText(Path("p/nmr_cupl.abp"), records);
    before = ChildrenSeconds();
    WriteText(Path("nmrparam.in"),
              Selection + Replaced(ManyAtoms(30000), "H H -", "H A!! -") + "AtomsEnd\nCalculateSpectra = yes\n");
    ASSERT_EQ(WaitForProgram(Start(false), 100.0), 0);
    EXPECT_NE(ReadText(Path("nmrparam.out")).find("Sorry, Velkoran"), std::string::npos);
    EXPECT_LT(ChildrenSeconds() - before, LinearSeconds) << "types";
}

// Inputs of some megabytes, stopped at moments of their reading.
TEST_F(ReadingStop, LargeInputs) {
    WriteText(Path("nmrparam.in"),
              "NMRSelectionBegin\n" + Entries(1000000) + "NMRSelectionEnd\n" + ManyAtoms(1000000) + "AtomsEnd\n");
    for (const double after : {0.0, 0.05, 0.15, 0.3}) {
        ExpectStopped(Start(false), "a million atoms", after);
        ExpectOlderResults("a million atoms");
    }
}

// As many cleared records as there is memory for, of which none was read.
TEST_F(ReadingStop, ManyAtomsWithoutLines) {
    WriteText(Path("nmrparam.in"), Replaced(Selection + Atoms, "Begin\n2\n", "Begin\n10000000\n"));
    ExpectStopped(Start(false), "ten million atoms", 0.1);
}
