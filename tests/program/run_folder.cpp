// SPDX-License-Identifier: MIT
// Fills and runs a temporary folder.
#include "tests/program/run_folder.h"

#include "tests/program/child_process.h"
#include "tests/support/molecule_support.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace fs = std::filesystem;

RunFolder::RunFolder() {
    fs::create_directory(Parameters());
    CopyParameterFiles(Parameters());
}

RunFolder::RunFolder(const std::string& caseFolder) {
    if (fs::path(caseFolder).parent_path().filename() != "parameter") {
        Kind = "2";
        Name = "nmrspect";
    }
    const std::string script = VELKORAN_TESTS "/support/parameter_folder.sh";
    if (std::system(("sh '" + script + "' '" + caseFolder + "' '" + Parameters() + "'").c_str()) != 0) {
        throw std::runtime_error("no parameter files for " + caseFolder);
    }
    const std::string input = caseFolder + "/" + Name + ".in";
    if (fs::exists(input)) {
        fs::copy(input, Input(), fs::copy_options::recursive);
    }
}

int RunFolder::Start() const {
    return RunProgram({{Parameters(), Work.Path, Kind, Work.Path + "/run.log"}});
}

std::string RunFolder::Output() const {
    const std::string text = ReadText(Work.Path + "/" + Name + ".out");
    return Replaced(Replaced(text, Work.Path + "\\" + Name + ".in", "<INPUT>"), Parameters(), "<PARAMETERS>");
}
