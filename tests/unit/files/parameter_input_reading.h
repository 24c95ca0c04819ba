// SPDX-License-Identifier: MIT
// Reads texts of nmrparam.in within the process, for the tests of its grammar.
#pragma once

#include "files/parameter_input.h"
#include "files/run_input.h"
#include "ground/memory.h"
#include "tests/support/test_support.h"

#include <cstring>
#include <gtest/gtest.h>

inline const std::string NMRBlock = "NMRSelectionBegin\n1\nmol 1 atom 1\nNMRSelectionEnd\n";
inline const std::string Water = "AtomsBegin\n3\nmol 1\n"
                                 "atom 1 O1 O O - -0.5 1.5 -2.5 3.5 2 2 s 3 d\n"
                                 "atom 2 H1 H H s 0.25 0 0 1 1 1 s\n"
                                 "atom 3 H2 H H - 0.25 0 1 0 1 1 s\n"
                                 "AtomsEnd\n";

// A bare system of count hydrogen atoms in molecules of the sizes that are given.
inline std::string Hydrogens(int count, const std::vector<int>& molecules) {
    std::string text = "AtomsBegin\n" + std::to_string(count) + "\n";
    for (const int size : molecules) {
        text += "mol\n";
        for (int i = 0; i < size; ++i) {
            text += "atom 1 H H H - 0 0 0 0 0\n";
        }
    }
    return text + "AtomsEnd\n";
}

inline void LoadTypes(const std::vector<std::string>& names) {
    ::Run.Parameters.AtomTypeCount = static_cast<int>(names.size());
    FreeArray(::Run.Parameters.AtomTypeNames);
    ::Run.Parameters.AtomTypeNames = AllocateForProcess<AtomTypeName>(::Run.Parameters.AtomTypeCount);
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::strcpy(::Run.Parameters.AtomTypeNames[i].Text, names[i].c_str());
    }
}

inline void PrepareReading(const std::string& directory) {
    UseFilesIn(directory);
    ::Run.Job.RunKind = ParameterRun;
}

// Warnings of the reading that has been taken.
inline std::string LogText;

// Reads a text; "" when it is taken, else the line in the output file.
inline std::string ReadInput(const std::string& text) {
    TemporaryDirectory work;
    const std::string path = work.Path + "/nmrspect.in";
    WriteText(path, text);
    const auto read = [&] {
        PrepareReading(work.Path);
        ReadRunInput();
    };
    const int exitCode = ExitCodeOfChild(read);
    LogText = ReadText(work.Path + "/run.log");
    if (exitCode == 98) {
        read();
        return "";
    }
    EXPECT_EQ(exitCode, 0);
    return Replaced(ReadText(work.Path + "/nmrspect.out"), path, "<INPUT>");
}

inline std::string AtomLine(const std::string& line) {
    return ReadInput(NMRBlock + "AtomsBegin\n2\nmol\n" + line + "\natom 2 H H H - 0 0 0 0 0\nAtomsEnd\n");
}

inline std::string BadRecord(int atom) {
    return "ERRMSG: Input file <INPUT> has a bad record for atom " + std::to_string(atom) + ".\n";
}

inline std::string Unknown(const std::string& line) {
    return "Unknown initialization: " + line + " in nmrparam.in.\n";
}

class ParameterInput : public testing::Test {
protected:
    void SetUp() override {
        ResetRun();
        LoadTypes({"H", "C", "O", "CT", "H"});
    }
    void TearDown() override {
        FreeArray(::Run.Parameters.AtomTypeNames);
        ResetRun();
    }
};
