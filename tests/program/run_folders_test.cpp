// SPDX-License-Identifier: MIT
// Runs the program on every folder of cases/spectrum/ and cases/regression/ and compares the whole output file and the
// whole log with the expected ones, byte for byte. A new case is a new folder.
#include "tests/program/child_process.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

static std::vector<std::string> CaseFolders() {
    std::vector<std::string> folders;
    for (const char* group : {"cases/spectrum", "cases/regression"}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(std::string(VELKORAN_TESTS) + "/" + group)) {
            if (entry.is_directory()) {
                folders.push_back(std::string(group) + "/" + entry.path().filename().string());
            }
        }
    }
    std::sort(folders.begin(), folders.end());
    return folders;
}

static std::string CaseName(const testing::TestParamInfo<std::string>& info) {
    return Replaced(Replaced(info.param, "/", "_"), "-", "_");
}

class RunFolder : public testing::TestWithParam<std::string> {};

// Expected texts: "<INPUT>" stands for the path of the input file; a missing expected.log for no log at all.
TEST_P(RunFolder, GivesTheExpectedFiles) {
    const std::string folder = std::string(VELKORAN_TESTS) + "/" + GetParam();
    TemporaryDirectory work;
    if (fs::exists(folder + "/nmrspect.in")) {
        fs::copy(folder + "/nmrspect.in", work.Path + "/nmrspect.in", fs::copy_options::recursive);
    }
    ASSERT_EQ(RunProgram({{work.Path, work.Path, "2", work.Path + "/run.log"}}), 0);
    const std::string input = work.Path + "\\nmrspect.in";
    EXPECT_EQ(ReadText(work.Path + "/nmrspect.out"), Replaced(ReadText(folder + "/expected.out"), "<INPUT>", input));
    EXPECT_EQ(ReadText(work.Path + "/run.log"), ReadText(folder + "/expected.log"));
}

INSTANTIATE_TEST_SUITE_P(All, RunFolder, testing::ValuesIn(CaseFolders()), CaseName);
