// SPDX-License-Identifier: MIT
// --help and --version, and that every other command line with two dashes in front is still that of a job.
#include "numerics/instruction_set.h"
#include "tests/program/child_process.h"
#include "tests/program/spectrum_inputs.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

// What the program says to one argument, in an empty directory that it must leave empty.
static std::string Answer(const std::string& argument) {
    TemporaryDirectory current;
    TemporaryDirectory output;
    ChildSettings settings = {{argument}, current.Path};
    settings.StandardOutput = output.Path + "/stdout";
    settings.StandardError = output.Path + "/stderr";
    EXPECT_EQ(RunProgram(settings), 0);
    EXPECT_EQ(ReadText(settings.StandardError), "");
    EXPECT_TRUE(std::filesystem::is_empty(current.Path));
    return ReadText(settings.StandardOutput);
}

// The rest of the line that begins with a label.
static std::string LineOf(const std::string& text, const std::string& label) {
    const std::string lines = "\n" + text;
    const std::size_t start = lines.find("\n" + label);
    if (start == std::string::npos) {
        return "(no line)";
    }
    const std::size_t rest = start + 1 + label.size();
    return lines.substr(rest, lines.find('\n', rest) - rest);
}

TEST(CommandLineVersion, IsThatOfTheProject) {
    const std::string project = ReadText(std::string(VELKORAN_TESTS) + "/../CMakeLists.txt");
    const std::string words = LineOf(project, "project(velkoran VERSION ");
    EXPECT_EQ(LineOf(Answer("--version"), "velkoran "), words.substr(0, words.find(' ')));
}

// The tests are built by the compiler of the program, with its options; what they see of it is the reference.
TEST(CommandLineVersion, TellsHowItWasBuilt) {
    const std::string text = Answer("--version");
#if defined(__clang__)
    const std::string compiler = "Clang " + std::to_string(__clang_major__) + "." + std::to_string(__clang_minor__);
#else
    const std::string compiler = "GNU " + std::to_string(__GNUC__) + "." + std::to_string(__GNUC_MINOR__);
#endif
    EXPECT_EQ(LineOf(text, "compiler: ").find(compiler + "."), 0u) << text;
#if defined(__OPTIMIZE__)
    const bool optimised = true;
#else
    const bool optimised = false;
#endif
    const std::string buildType = LineOf(text, "build type: ");
    const std::size_t level = buildType.find("-O");
    EXPECT_EQ(level != std::string::npos && buildType[level + 2] != '0', optimised) << text;
#if defined(__x86_64__)
    EXPECT_EQ(LineOf(text, "processor: "), "x86_64");
    const std::string kernels = "baseline, avx2, avx512";
#else
    const std::string kernels = "baseline";
#endif
    EXPECT_EQ(LineOf(text, "vector kernels: "), kernels + "; in use here: " + NameOf(InstructionSetInUse()));
}

TEST(CommandLineHelp, NamesFieldsFilesSignalsAndExitCode) {
    const std::string text = Answer("--help");
    EXPECT_EQ(text.find("Usage: velkoran PARAMDIR WORKDIR KIND LOGFILE\n"), 0u);
    for (const std::string part :
         {"\n  PARAMDIR  ", "\n  WORKDIR   ", "\n  KIND      ", "\n  LOGFILE   ", "PARAMDIR/nmrtype.txt",
          "PARAMDIR/nmr_shft.abp", "PARAMDIR/nmr_cupl.abp", "WORKDIR/nmrparam.in", "WORKDIR/nmrparam.out",
          "WORKDIR/nmrspect.in", "WORKDIR/nmrspect.out", "SIGTERM, SIGINT and SIGHUP", "\nExit code:\n  0 ",
          "ERRMSG: ", "\nExample:\n"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 80u) << line;
    }
}

TEST(CommandLineHelp, AnswerThatCannotBeWrittenIsAnError) {
    for (const std::string argument : {"--help", "--version"}) {
        ChildSettings settings = {{argument}};
        settings.StandardOutput = "/dev/full";
        EXPECT_EQ(RunProgram(settings), 1) << argument;
    }
}

TEST(CommandLineHelp, FurtherArgumentsCountForNothing) {
    const std::string help = Answer("--help");
    TemporaryDirectory work;
    ChildSettings settings = {{"--help", work.Path, "2"}};
    settings.StandardOutput = work.Path + "/stdout";
    EXPECT_EQ(RunProgram(settings), 0);
    EXPECT_EQ(ReadText(settings.StandardOutput), help);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "(no file)");
}

// Every other first argument is the parameter directory of a job, and so is the first field of one that holds all.
TEST(CommandLineHelp, OtherCommandLinesAreJobs) {
    for (const std::string first : {"--help", "--", "--helpful", "--Help", "--help=2", "-h"}) {
        for (const bool together : {true, false}) {
            if (first == "--help" && !together) {
                continue;
            }
            TemporaryDirectory work;
            WriteText(work.Path + "/nmrspect.in", OneSpin);
            ChildSettings settings = {{first, work.Path, "2"}, work.Path};
            if (together) {
                settings.Arguments = {first + " " + work.Path + " 2"};
            }
            settings.StandardOutput = work.Path + "/stdout";
            EXPECT_EQ(RunProgram(settings), 0) << first;
            EXPECT_EQ(ReadText(settings.StandardOutput), "") << first;
            EXPECT_EQ(ReadText(work.Path + "/nmrspect.out").find("This is a comment line.\n1\n"), 0u) << first;
        }
    }
}
