// SPDX-License-Identifier: MIT
// The log, warnings and fatal errors, and which file each text reaches.
#include "ground/fatal_error.h"
#include "ground/log.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <unistd.h>

static int InChild(const std::string& directory, const std::function<void()>& steps) {
    return ExitCodeOfChild([&] {
        UseFilesIn(directory);
        steps();
    });
}

// Lets a stream of a child go to a file.
static void RedirectTo(const std::string& path, std::FILE* stream) {
    if (std::freopen(path.c_str(), "w", stream) == nullptr) {
        _exit(90);
    }
}

// A listing opens the file once; the lines before and after it stand where they belong.
TEST(Log, LinesOfAListingStayInOrder) {
    TemporaryDirectory work;
    InChild(work.Path, [] {
        LogAppend("before");
        KeepLogOpen();
        LogAppend("one");
        LogMessage(Message::EmptyLine);
        CloseLog();
        CloseLog();  // harmless
        LogAppend("after");
        KeepLogOpen();
        LogAppend("lost by nothing but the closing");
        CloseLog();
        _exit(0);  // without what a regular end of a process writes
    });
    EXPECT_EQ(ReadText(work.Path + "/run.log"), "before\none\n\nafter\nlost by nothing but the closing\n");
}

TEST(Log, IsAppendedLineByLine) {
    TemporaryDirectory work;
    WriteText(work.Path + "/run.log", "an earlier run\n");
    InChild(work.Path, [] {
        LogAppend("one");
        LogAppend("");
        LogMessage(Message::EmptyLine);  // an id without text
        LogProgress(Message::ComputingSpectrum);
        LogMessage(Message::SpinHalfNucleusCount, 3);
    });
    EXPECT_EQ(ReadText(work.Path + "/run.log"),
              "an earlier run\none\n\n\nComputing the NMR spectrum ...\n\nNumber of spin-1/2 nuclei = 3\n");
}

TEST(Log, DisabledLogWritesNothingAndLosesWarnings) {
    TemporaryDirectory work;
    EXPECT_EQ(InChild(work.Path,
                      [] {
                          ::Run.Report.LogEnabled = 0;
                          LogAppend("one");
                          LogProgress(Message::ComputingSpectrum);
                          LogMessage(Message::SpinHalfNucleusCount, 3);
                          Warning(Message::RestraintsIgnored);
                      }),
              98);
    EXPECT_TRUE(std::filesystem::is_empty(work.Path));
}

TEST(Log, CanBeReadAtAnyMoment) {
    TemporaryDirectory work;
    EXPECT_EQ(InChild(work.Path,
                      [&] {
                          LogAppend("one");
                          _exit(ReadText(work.Path + "/run.log") == "one\n" ? 7 : 8);
                      }),
              7);
}

// On purpose without "ERRMSG: " and without a newline.
TEST(Log, UnopenableLogEndsTheRun) {
    TemporaryDirectory work;
    std::filesystem::create_directory(work.Path + "/run.log");
    EXPECT_EQ(InChild(work.Path, [] { LogAppend("one"); }), 0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "Velkoran cannot open the log file.");
}

// What no file can take goes to standard error.
TEST(Log, UnopenableLogAndOutputEndTheRun) {
    TemporaryDirectory work;
    EXPECT_EQ(InChild(work.Path,
                      [&] {
                          RedirectTo(work.Path + "/stderr", stderr);
                          std::strcpy(::Run.Job.OutputFilePath, "/no/such/place");
                          ::Run.Job.LogFilePath = ::Run.Job.OutputFilePath;
                          LogAppend("one");
                      }),
              0);
    EXPECT_EQ(ReadText(work.Path + "/stderr"), "velkoran: cannot write /no/such/place (No such file or directory): "
                                               "Velkoran cannot open the log file.\n");
}

TEST(Log, ShowsControlCharacters) {
    TemporaryDirectory work;
    InChild(work.Path, [] {
        LogAppend("\nh\x1b[2J\x80\n");
        const char* word = "\x07\r\xc3\xa9";
        Warning(Message::UnknownOption, word);
    });
    EXPECT_EQ(ReadText(work.Path + "/run.log"),
              "\nh\\x1b[2J\\x80\n\nUnknown initialization: \\x07\\x0d\xc3\xa9 in nmrparam.in.\n");
}

TEST(Warning, GoesToTheLogAndTheRunGoesOn) {
    TemporaryDirectory work;
    EXPECT_EQ(InChild(work.Path,
                      [] {
                          const char* name = "Unheard";
                          if (Warning(Message::UnknownOption, name) == 0) {
                              _exit(5);
                          }
                      }),
              5);
    EXPECT_EQ(ReadText(work.Path + "/run.log"), "Unknown initialization: Unheard in nmrparam.in.\n");
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "(no file)");
}

TEST(FatalError, ReplacesTheOutputFileAndNotTheLog) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.out", "an older and longer result, of which nothing stays\nline\nline\n");
    EXPECT_EQ(InChild(work.Path,
                      [] {
                          LogAppend("so far");
                          const char* path = ::Run.Job.InputFilePath;
                          FatalError(Message::UnreadableLine, 7, path);
                      }),
              0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"),
              "ERRMSG: Velkoran has met troubles at line 7 when reading the input "
              "file " +
                  work.Path + "/nmrspect.in.\n");
    EXPECT_EQ(ReadText(work.Path + "/run.log"), "so far\n");
}

TEST(FatalError, IdWithoutTextLeavesThePrefixAlone) {
    TemporaryDirectory work;
    EXPECT_EQ(InChild(work.Path, [] { FatalError(Message::SilentStop); }), 0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "ERRMSG: \n");
}

TEST(FatalError, ShowsControlCharacters) {
    TemporaryDirectory work;
    InChild(work.Path, [] {
        const char* path = "/tmp/\x1b]0;title\x07";
        FatalError(Message::InputFileNotOpened, path);
    });
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"),
              "ERRMSG: Velkoran can not open the input file /tmp/\\x1b]0;title\\x07.\n");
}

TEST(FatalError, OutputThatCannotBeCreatedIsToldOnStandardError) {
    TemporaryDirectory work;
    std::filesystem::create_directory(work.Path + "/nmrspect.out");
    EXPECT_EQ(InChild(work.Path,
                      [&] {
                          RedirectTo(work.Path + "/stderr", stderr);
                          FatalError(Message::OutOfMemory);
                      }),
              0);
    EXPECT_EQ(ReadText(work.Path + "/stderr"),
              "velkoran: cannot write " + work.Path +
                  "/nmrspect.out (Is a directory): This application has exhausted all available memory.\n");
    EXPECT_EQ(ReadText(work.Path + "/run.log"), "(no file)");
    EXPECT_TRUE(std::filesystem::is_empty(work.Path + "/nmrspect.out"));
}

// During instance set-up texts go to standard output, and a fatal error finds no frame: an abnormal end.
TEST(FatalError, DuringSetUpGoesToStandardOutput) {
    TemporaryDirectory work;
    EXPECT_EQ(InChild(work.Path,
                      [&] {
                          ::Run.Process.ConsoleMode = 1;
                          RedirectTo(work.Path + "/stdout", stdout);
                          FatalError(Message::OutOfMemory);
                      }),
              3);
    EXPECT_EQ(ReadText(work.Path + "/stdout"), "This application has exhausted all available memory.\n");
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "(no file)");
}

TEST(FatalError, ConsoleModeShowsWarningsToo) {
    TemporaryDirectory work;
    InChild(work.Path, [&] {
        ::Run.Process.ConsoleMode = 1;
        RedirectTo(work.Path + "/stdout", stdout);
        Warning(Message::RestraintsIgnored);
        const char* word = "\x1b[31m";
        Warning(Message::UnknownOption, word);
    });
    EXPECT_EQ(ReadText(work.Path + "/stdout"), "Velkoran will ignore the restraint(s) for NMR calculation.\n"
                                               "Unknown initialization: \\x1b[31m in nmrparam.in.\n");
    EXPECT_EQ(ReadText(work.Path + "/run.log"), "(no file)");
}

// A path of 255 characters fits into the 400 of a message.
TEST(FatalError, LongPathIsNotCut) {
    TemporaryDirectory work;
    const std::string path(255, 'p');
    InChild(work.Path, [&] {
        const char* name = path.c_str();
        FatalError(Message::InputFileNotOpened, name);
    });
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "ERRMSG: Velkoran can not open the input file " + path + ".\n");
}
