// SPDX-License-Identifier: MIT
// Paths joined of directories and names.
#include "ground/file_path.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

static std::string Composed(const char* name, const std::string& directory) {
    char path[FilePathSize] = "left from before";
    ComposePath(name, directory.c_str(), path);
    return path;
}

TEST(ComposePath, InsertsNothing) {
    EXPECT_EQ(Composed("nmrspect.in", "C:\\wo\\"), "C:\\wo\\nmrspect.in");
    EXPECT_EQ(Composed("nmrspect.in", "C:\\wo"), "C:\\wonmrspect.in");
    EXPECT_EQ(Composed("nmrspect.in", ""), "nmrspect.in");
}

TEST(ComposePath, LeadingBackslashIgnoresTheDirectory) {
    EXPECT_EQ(Composed("\\abs.txt", "C:\\wo\\"), "\\abs.txt");
    EXPECT_EQ(Composed("\\abs.txt", std::string(500, 'd')), "\\abs.txt");
    const std::string slash = Composed("/abs.txt", "C:\\wo\\");
    EXPECT_EQ(slash, "C:\\wo\\/abs.txt");  // a slash is no backslash
}

// 11 characters of the name and 117 of the directory are 128 and pass; one more is refused.
TEST(ComposePath, LimitOf128Characters) {
    const std::string longest(117, 'd');
    EXPECT_EQ(Composed("nmrspect.in", longest), longest + "nmrspect.in");
    TemporaryDirectory work;
    const std::string tooLong(118, 'd');
    EXPECT_EQ(ExitCodeOfChild([&] {
                  UseFilesIn(work.Path);
                  Composed("nmrspect.in", tooLong);
              }),
              0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"),
              "ERRMSG: The length of the file name (nmrspect.in) plus its path (" + tooLong + ") is too big.\n");
}

// If the path of the output file is the one that fails, it is empty already, and the process ends silently.
TEST(ComposePath, RefusalOfTheOutputPathItselfIsSilent) {
    TemporaryDirectory work;
    EXPECT_EQ(ExitCodeOfChild([&] {
                  UseFilesIn(work.Path);
                  ComposePath("nmrspect.out", std::string(117, 'd').c_str(), ::Run.Job.OutputFilePath);
              }),
              0);
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), "(no file)");
}
