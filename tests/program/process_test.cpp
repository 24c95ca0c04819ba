// SPDX-License-Identifier: MIT
// The program as a process: its command line, its paths, its files.
#include "tests/program/child_process.h"
#include "tests/program/spectrum_inputs.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

static std::string Trouble(const std::string& path) {
    return "ERRMSG: Trouble has been occured when openning " + path + ".\n";
}

TEST(CommandLine, SpectrumRunWithALog) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", OneSpin);
    EXPECT_EQ(RunProgram({{work.Path, work.Path, "2", work.Path + "/run.log"}}), 0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), OneSpinResult);
    EXPECT_NE(ReadText(work.Path + "/run.log"), "(no file)");
}

TEST(CommandLine, WithoutAFourthFieldThereIsNoLog) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", OneSpin);
    EXPECT_EQ(RunProgram({{work.Path, work.Path, "2"}, work.Path}), 0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), OneSpinResult);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(work.Path), std::filesystem::directory_iterator()), 2);
}

TEST(CommandLine, NothingGoesToStandardOutput) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", OneSpin);
    ChildSettings settings = {{work.Path, work.Path, "2"}};
    settings.StandardOutput = work.Path + "/stdout";
    EXPECT_EQ(RunProgram(settings), 0);
    EXPECT_EQ(ReadText(work.Path + "/stdout"), "");
}

// Every kind but 2 is a parameter run, which looks for its type file first.
TEST(CommandLine, OtherKindsAreParameterRuns) {
    for (const std::string kind : {"1", "3", "0", "-1", "", "x", "22", "-2", "2147483648", "1.5"}) {
        TemporaryDirectory work;
        WriteText(work.Path + "/nmrspect.in", OneSpin);
        ChildSettings settings = {{work.Path, work.Path}};
        if (!kind.empty()) {
            settings.Arguments.push_back(kind);
        }
        EXPECT_EQ(RunProgram(settings), 0) << kind;
        EXPECT_EQ(ReadText(work.Path + "/nmrparam.out"), Trouble(work.Path + "\\nmrtype.txt")) << kind;
        EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "(no file)") << kind;
    }
}

// A kind beyond 32 bits isn't 2, whatever its lowest bits are.
TEST(CommandLine, KindBeyondItsRangeIsAParameterRun) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", OneSpin);
    EXPECT_EQ(RunProgram({{work.Path, work.Path, "4294967298"}}), 0);
    EXPECT_EQ(ReadText(work.Path + "/nmrparam.out"), Trouble(work.Path + "\\nmrtype.txt"));
}

TEST(CommandLine, WritingsOfTheSpectrumKind) {
    for (const std::string kind : {"2", "+2", "002", "2.7", "2 "}) {
        TemporaryDirectory work;
        WriteText(work.Path + "/nmrspect.in", OneSpin);
        EXPECT_EQ(RunProgram({{work.Path, work.Path, kind}, work.Path}), 0);
        EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), OneSpinResult) << kind;
    }
}

// The scan splits nowhere but at white space: "2x" is the kind 2 and the log "x".
TEST(CommandLine, LettersBehindTheKindAreTheLog) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", OneSpin);
    EXPECT_EQ(RunProgram({{work.Path, work.Path, "2x"}, work.Path}), 0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), OneSpinResult);
    EXPECT_EQ(ReadText(work.Path + "/x").find("\nComputing the NMR spectrum ...\n"), 0u);
}

TEST(CommandLine, OneArgumentMayHoldAllFields) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", OneSpin);
    EXPECT_EQ(RunProgram({{"  p\t" + work.Path + "  2   " + work.Path + "/run.log further fields"}}), 0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), OneSpinResult);
    EXPECT_NE(ReadText(work.Path + "/run.log"), "(no file)");
}

// Both directories become a single backslash, the root, where the parameter run finds no type file. What
// stands there already is put back.
TEST(CommandLine, EmptyCommandLineWorksInTheRoot) {
    static constexpr char Output[] = "/nmrparam.out";
    if (std::filesystem::exists("/nmrtype.txt") || access("/", W_OK) != 0) {
        GTEST_SKIP() << "the root can't be written, or holds a type file";
    }
    const std::string before = ReadText(Output);
    TemporaryDirectory current;
    EXPECT_EQ(RunProgram({{}, current.Path}), 0);
    EXPECT_EQ(ReadText(Output), Trouble("\\nmrtype.txt"));
    std::filesystem::remove(Output);
    if (before != "(no file)") {
        WriteText(Output, before);
    }
    EXPECT_TRUE(std::filesystem::is_empty(current.Path));
}

TEST(Paths, BackslashesAreSlashes) {
    TemporaryDirectory work;
    std::filesystem::create_directories(work.Path + "/a/b");
    WriteText(work.Path + "/a/b/nmrspect.in", OneSpin);
    const std::string directory = Replaced(work.Path, "/", "\\") + "\\a\\b";
    EXPECT_EQ(RunProgram({{"p", directory, "2", directory + "\\run.log"}}), 0);
    EXPECT_EQ(ReadText(work.Path + "/a/b/nmrspect.out"), OneSpinResult);
    EXPECT_NE(ReadText(work.Path + "/a/b/run.log"), "(no file)");
}

TEST(Paths, TrailingSlashTerminatesNothing) {
    TemporaryDirectory work;
    EXPECT_EQ(RunProgram({{"p", work.Path + "/", "2"}}), 0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"),
              "ERRMSG: Velkoran can not open the input file " + work.Path + "/\\nmrspect.in.\n");
}

// The directory with its backslash and "nmrspect.out": 12 characters of the name, 116 of the directory.
TEST(Paths, LimitOf128Characters) {
    TemporaryDirectory work;
    for (const std::size_t length : {115u, 116u, 117u}) {
        const std::string directory = work.Path + "/" + std::string(length - work.Path.size() - 1, 'd');
        std::filesystem::create_directory(directory);
        WriteText(directory + "/nmrspect.in", OneSpin);
        EXPECT_EQ(RunProgram({{"p", directory, "2", work.Path + "/run.log"}}), 0);
        EXPECT_EQ(ReadText(directory + "/nmrspect.out"), length == 115u ? OneSpinResult : "(no file)") << length;
    }
}

// The type file's path is composed when the output path is known already: the refusal has a file to go to.
TEST(Paths, TooLongAParameterDirectoryIsToldInTheOutput) {
    TemporaryDirectory work;
    const std::string fits(116, 'p');  // with its backslash and nmrtype.txt 128 characters
    RunProgram({{fits, work.Path, "1"}});
    EXPECT_EQ(ReadText(work.Path + "/nmrparam.out"), Trouble(fits + "\\nmrtype.txt"));
    const std::string tooLong = fits + "p";
    RunProgram({{tooLong, work.Path, "1"}});
    EXPECT_EQ(ReadText(work.Path + "/nmrparam.out"),
              "ERRMSG: The length of the file name (nmrtype.txt) plus its path (" + tooLong + "\\) is too big.\n");
}

// On purpose: where a parameter directory ends is looked for in the work directory.
TEST(Paths, CrookedTestOfTheParameterDirectory) {
    TemporaryDirectory work;
    const std::string directory = Replaced(work.Path, "/", "\\");  // its second backslash stands at position 4
    ASSERT_EQ(directory.find('\\', 1), 4u);
    RunProgram({{"C:pa1", directory, "1"}});
    EXPECT_EQ(ReadText(work.Path + "/nmrparam.out"), Trouble("C:pa1nmrtype.txt"));
    RunProgram({{"C:pa", directory, "1"}});
    EXPECT_EQ(ReadText(work.Path + "/nmrparam.out"), Trouble("C:pa\\nmrtype.txt"));
    RunProgram({{"C:p\\", directory, "1"}});
    EXPECT_EQ(ReadText(work.Path + "/nmrparam.out"), Trouble("C:p\\\\nmrtype.txt"));
}

TEST(Files, LogIsAppendedFromRunToRun) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", OneSpin);
    RunProgram({{"p", work.Path, "2", work.Path + "/run.log"}});
    const std::string once = ReadText(work.Path + "/run.log");
    RunProgram({{"p", work.Path, "2", work.Path + "/run.log"}});
    EXPECT_EQ(ReadText(work.Path + "/run.log"), once + once);
}

TEST(Files, LogThatCannotBeOpenedEndsTheRun) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", OneSpin);
    for (const std::string& log : {work.Path + "/missing/run.log", work.Path}) {
        WriteText(work.Path + "/nmrspect.out", "old");
        EXPECT_EQ(RunProgram({{"p", work.Path, "2", log}}), 0);
        EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "Velkoran cannot open the log file.");
    }
}

TEST(Files, OutputThatCannotBeCreatedLeavesNoFile) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", OneSpin);
    std::filesystem::create_directory(work.Path + "/nmrspect.out");
    ChildSettings settings = {{"p", work.Path, "2"}};
    settings.StandardOutput = work.Path + "/stdout";
    settings.StandardError = "/dev/null";
    EXPECT_EQ(RunProgram(settings), 0);
    EXPECT_EQ(ReadText(work.Path + "/stdout"), "");
    EXPECT_TRUE(std::filesystem::is_empty(work.Path + "/nmrspect.out"));
}

TEST(Files, MissingWorkDirectoryLeavesNoFile) {
    TemporaryDirectory work;
    ChildSettings settings = {{"p", work.Path + "/missing", "2", work.Path + "/run.log"}};
    settings.StandardError = "/dev/null";
    EXPECT_EQ(RunProgram(settings), 0);
    EXPECT_TRUE(std::filesystem::is_empty(work.Path));
}

// The same input gives the same bytes.
TEST(Files, RunsAreReproducible) {
    TemporaryDirectory work;
    WriteText(work.Path + "/nmrspect.in", ChainInput(8));
    RunProgram({{"p", work.Path, "2"}});
    const std::string first = ReadText(work.Path + "/nmrspect.out");
    RunProgram({{"p", work.Path, "2"}});
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), first);
    EXPECT_EQ(first.find("This is a comment line."), 0u);
}
