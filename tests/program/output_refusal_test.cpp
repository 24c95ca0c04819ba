// SPDX-License-Identifier: MIT
// Runs whose output file can't take their message say so in one line on standard error; the exit code stays 0. And
// what stands where a run makes a file of its own: it is neither followed nor changed.
#include "tests/program/child_process.h"
#include "tests/program/spectrum_inputs.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

static constexpr char Older[] = "older result";
static constexpr char LogFailure[] = "Velkoran cannot open the log file.";
static constexpr uid_t Nobody = 65534;

// A work folder with an input. Standard error goes to a file beside it.
class OutputRefusal : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(Folder);
        WriteText(Folder + "/nmrspect.in", OneSpin);
    }

    void Start(const std::string& folder, const std::string& log = "") {
        ChildSettings settings = {{"p", folder, "2", log}};
        settings.StandardOutput = Top.Path + "/stdout";
        settings.StandardError = Top.Path + "/stderr";
        EXPECT_EQ(RunProgram(settings), 0);
        EXPECT_EQ(ReadText(Top.Path + "/stdout"), "");
    }

    std::string Said() const { return ReadText(Top.Path + "/stderr"); }

    // What is said of an output file in a folder.
    static std::string Cannot(const std::string& folder, const std::string& reason, const std::string& text) {
        return "velkoran: cannot write " + folder + "\\nmrspect.out (" + reason + "): " + text + "\n";
    }

    static std::string CannotCreate(const std::string& folder, const std::string& reason) {
        return Cannot(folder, reason, "Velkoran can not create its output file " + folder + "\\nmrspect.out.");
    }

    TemporaryDirectory Top;
    std::string Folder = Top.Path + "/w";
};

TEST_F(OutputRefusal, IsSilentWhereThereIsAnOutput) {
    Start(Folder);
    EXPECT_EQ(ReadText(Folder + "/nmrspect.out"), OneSpinResult);
    EXPECT_EQ(Said(), "");
    WriteText(Folder + "/nmrspect.in", "title\n");
    Start(Folder);
    EXPECT_EQ(ReadText(Folder + "/nmrspect.out").find("ERRMSG: "), 0u);
    EXPECT_EQ(Said(), "");
}

// The input's name is a character shorter than the output's: at 116 it is the output's that doesn't fit.
TEST_F(OutputRefusal, PathThatIsTooLong) {
    for (const std::size_t length : {116u, 117u, 300u}) {
        std::string folder = Top.Path;
        while (folder.size() < length) {
            folder += '/';
            folder.append(std::min<std::size_t>(length - folder.size(), 100), 'd');
        }
        fs::create_directories(folder);
        WriteText(folder + "/nmrspect.in", OneSpin);
        WriteText(folder + "/nmrspect.out", Older);
        Start(folder);
        EXPECT_EQ(Said(), "velkoran: cannot write an output file (File name too long): The length of the file name (" +
                              std::string(length == 116u ? "nmrspect.out" : "nmrspect.in") + ") plus its path (" +
                              folder + "\\) is too big.\n");
        EXPECT_EQ(ReadText(folder + "/nmrspect.out"), Older);
    }
}

TEST_F(OutputRefusal, FolderThatIsNotThere) {
    const std::string missing = Top.Path + "/missing";
    Start(missing);
    EXPECT_EQ(Said(), Cannot(missing, "No such file or directory",
                             "Velkoran can not open the input file " + missing + "\\nmrspect.in."));
}

TEST_F(OutputRefusal, FolderThatIsAFile) {
    const std::string file = Folder + "/nmrspect.in";
    Start(file);
    EXPECT_EQ(Said(),
              Cannot(file, "Not a directory", "Velkoran can not open the input file " + file + "\\nmrspect.in."));
}

TEST_F(OutputRefusal, OutputThatIsAFolder) {
    fs::create_directory(Folder + "/nmrspect.out");
    Start(Folder);
    EXPECT_EQ(Said(), CannotCreate(Folder, "Is a directory"));
}

TEST_F(OutputRefusal, OutputThatIsALinkToAFolder) {
    fs::create_directory_symlink(".", Folder + "/nmrspect.out");
    Start(Folder);
    EXPECT_EQ(Said(), CannotCreate(Folder, "Is a directory"));
}

TEST_F(OutputRefusal, OutputThatIsALinkIntoNowhere) {
    fs::create_symlink("missing/file", Folder + "/nmrspect.out");
    Start(Folder);
    EXPECT_EQ(Said(), CannotCreate(Folder, "No such file or directory"));
}

TEST_F(OutputRefusal, DiskThatIsFull) {
    fs::create_symlink("/dev/full", Folder + "/nmrspect.out");
    Start(Folder);
    EXPECT_EQ(Said(), CannotCreate(Folder, "No space left on device"));
}

TEST_F(OutputRefusal, LogThatCannotBeOpenedEither) {
    fs::create_directory(Folder + "/nmrspect.out");
    Start(Folder, Top.Path + "/missing/run.log");
    EXPECT_EQ(Said(), Cannot(Folder, "Is a directory", LogFailure));
}

// The path of the message may hold what steers a terminal.
TEST_F(OutputRefusal, PathWithAnEscapeSequence) {
    Start(Top.Path + "/\x1b[2J");
    const std::string shown = Top.Path + "/\\x1b[2J";
    EXPECT_EQ(Said(), Cannot(shown, "No such file or directory",
                             "Velkoran can not open the input file " + shown + "\\nmrspect.in."));
}

// A closed standard error harms nothing.
TEST_F(OutputRefusal, NobodyListens) {
    fs::create_directory(Folder + "/nmrspect.out");
    EXPECT_EQ(ExitCodeOfChild([&] {
                  close(2);
                  _exit(RunProgram({{"p", Folder, "2"}}) == 0 ? 7 : 8);
              }),
              7);
}

// The program, for a user without special rights: a copy that this user can reach.
class OutputRights : public OutputRefusal {
protected:
    void StartAsNobody() {
        const std::string program = Top.Path + "/velkoran";
        fs::copy_file(VELKORAN_PROGRAM, program, fs::copy_options::overwrite_existing);
        fs::permissions(Top.Path, fs::perms(0755));
        EXPECT_EQ(ExitCodeOfChild([&] {
                      const rlimit limit = {LargestFile, LargestFile};
                      if (std::freopen((Top.Path + "/stderr").c_str(), "w", stderr) == nullptr ||
                          (geteuid() == 0 && setuid(Nobody) != 0) || setrlimit(RLIMIT_FSIZE, &limit) != 0) {
                          _exit(96);
                      }
                      execl(program.c_str(), "velkoran", "p", Folder.c_str(), "2", nullptr);
                      _exit(95);
                  }),
                  0);
    }

    void GiveAway(const std::string& path) {
        if (geteuid() == 0) {
            ASSERT_EQ(chown(path.c_str(), Nobody, Nobody), 0);
        }
    }

    rlim_t LargestFile = RLIM_INFINITY;
};

TEST_F(OutputRights, FolderThatTakesNoFiles) {
    GiveAway(Folder);
    fs::permissions(Folder, fs::perms(0555));
    StartAsNobody();
    EXPECT_EQ(Said(), CannotCreate(Folder, "Permission denied"));
    EXPECT_FALSE(fs::exists(Folder + "/nmrspect.out"));
    fs::permissions(Folder, fs::perms(0755));
}

TEST_F(OutputRights, OutputThatMustNotBeWritten) {
    WriteText(Folder + "/nmrspect.out", Older);
    GiveAway(Folder);
    GiveAway(Folder + "/nmrspect.out");
    fs::permissions(Folder + "/nmrspect.out", fs::perms(0444));
    StartAsNobody();
    EXPECT_EQ(Said(), CannotCreate(Folder, "Permission denied"));
    EXPECT_EQ(ReadText(Folder + "/nmrspect.out"), Older);
}

// The largest size holds for standard error too, where that is a file; a line that is cut off is all that is left.
TEST_F(OutputRights, RoomForNeitherResultNorMessage) {
    WriteText(Folder + "/nmrspect.out", Older);
    GiveAway(Folder);
    GiveAway(Folder + "/nmrspect.out");
    LargestFile = 40;
    StartAsNobody();
    EXPECT_EQ(Said(), CannotCreate(Folder, "File too large").substr(0, LargestFile));
    EXPECT_FALSE(fs::exists(Folder + "/nmrspect.out"));
}

// The neighbours' first names, known from the process number and the time.
class Neighbours : public OutputRefusal {
protected:
    std::string Name(int i) const { return Folder + "/nmrspect.out.4242." + std::to_string(1000000005 + i); }

    void StartWithFixedIdentity() {
        ChildSettings settings = {{"p", Folder, "2"}};
        settings.Environment = {{"LD_PRELOAD", FIXED_IDENTITY}, {"ASAN_OPTIONS", "verify_asan_link_order=0"}};
        EXPECT_EQ(RunProgram(settings), 0);
    }
};

TEST_F(Neighbours, PlantedLinksAreNotFollowed) {
    const std::string prey = Top.Path + "/prey";
    WriteText(prey, Older);
    fs::create_symlink(prey, Name(0));
    fs::create_symlink(Top.Path + "/nothing", Name(1));
    StartWithFixedIdentity();
    EXPECT_EQ(ReadText(prey), Older);
    EXPECT_FALSE(fs::exists(Top.Path + "/nothing"));
    EXPECT_EQ(fs::read_symlink(Name(0)), prey);
    EXPECT_EQ(ReadText(Folder + "/nmrspect.out"), OneSpinResult);
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(Folder + "/nmrspect.out")));
}

TEST_F(Neighbours, PlantedFilesAreNotEmptied) {
    WriteText(Name(0), Older);
    StartWithFixedIdentity();
    EXPECT_EQ(ReadText(Name(0)), Older);
    EXPECT_EQ(ReadText(Folder + "/nmrspect.out"), OneSpinResult);
    EXPECT_FALSE(fs::exists(Name(1)));
}

// Where every name is taken the output file is written in place.
TEST_F(Neighbours, AllNamesTaken) {
    const std::string prey = Top.Path + "/prey";
    WriteText(prey, Older);
    for (int i = 0; i < 100; ++i) {
        fs::create_symlink(prey, Name(i));
    }
    WriteText(Folder + "/nmrspect.out", Older);
    StartWithFixedIdentity();
    EXPECT_EQ(ReadText(prey), Older);
    EXPECT_EQ(ReadText(Folder + "/nmrspect.out"), OneSpinResult);
}
