// SPDX-License-Identifier: MIT
// A run of the program in a temporary folder: what goes in is an input and parameter files, what comes out result and
// log.
#pragma once

#include "tests/support/test_support.h"

#include <string>

// The parameter files stand in p. The paths differ in length, so that neither is taken for the other.
struct RunFolder {
    TemporaryDirectory Work;
    std::string Kind = "1";         // field of the command line: 1 a parameter run, 2 a spectrum
    std::string Name = "nmrparam";  // of input and result, without their ends

    // A parameter run with the files of parameters/published/, without an input.
    RunFolder();
    // What a folder of cases/ holds: its input, if there is any, and its parameter files.
    explicit RunFolder(const std::string& caseFolder);

    std::string Parameters() const { return Work.Path + "/p"; }
    std::string Input() const { return Work.Path + "/" + Name + ".in"; }
    // Runs the program, with a log; its exit code.
    int Start() const;
    std::string Log() const { return ReadText(Work.Path + "/run.log"); }
    // The result file, with <INPUT> and <PARAMETERS> for the paths.
    std::string Output() const;
};
