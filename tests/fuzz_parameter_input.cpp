// SPDX-License-Identifier: MIT
// Fuzz target for libFuzzer: the text inputs of a parameter run. Behind a first byte "p" stand the three parameter
// files, separated by form feeds, those that are missing being the fixed ones below; behind any other first byte stands
// nmrparam.in. What is accepted goes on to the lists of atoms and to the checks, up to the wavefunction. A fatal error
// calls exit(0); the linker hands that call to __wrap_exit, which returns to the target.
//
//   CXX=clang++ cmake -B build/fuzz -DCMAKE_CXX_FLAGS="-fsanitize=fuzzer-no-link,address,undefined"
//   cmake --build build/fuzz --target velkoran_parameter_fuzz
//   export ASAN_OPTIONS=allocator_may_return_null=1:max_allocation_size_mb=100
//   build/fuzz/tests/velkoran_parameter_fuzz -max_len=3000 -rss_limit_mb=0 -malloc_limit_mb=100000
//       tests/fuzz_parameter_corpus
#include "files/atom_selection.h"
#include "files/parameter_files.h"
#include "files/parameter_input.h"
#include "shell/run_state.h"
#include "wavefunction/prepare_system.h"

#include <algorithm>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

// The files that a case doesn't hold itself: hydrogen, carbon without a record as a capping atom, oxygen.
static const char TypeFile[] = "heading\nH 1\nC 12\nO 16\n";
static const char RecordFile[] = "h 1.2 0 0 -7 0 0 9 0 0 5.6 .4 -17 -17 52\n"
                                 "-H 1.2 1.2 0 -7 -5 0 9 0 0 5.6 .4 -17 -17 52\n"
                                 "C 1.6 1.6 0 -14 -5 0 21 .2 .3 1.4 3 -167 -161 171\n"
                                 "O 2.3 2.3 0 -25 -9 0 31 .3 .4 -.8 6 -492 -470 59\n"
                                 "-O 2.3 2.3 0 -25 9 0 0 .3 .4 -.8 6 -492 -470 59\n";
static const char InputFile[] = "NMRSelectionBegin\n1\nmol 1 atom 3\nNMRSelectionEnd\n"
                                "QuantumSelectionBegin\n2\nmol 1 atom 1\nmol 1 atom 3\nQuantumSelectionEnd\n"
                                "AtomsBegin\n3\nmol 1\natom 1 O O O - 0 0 0 0 2 2 s 3 s\n"
                                "atom 2 H H H - .4 0 0 1 1 1 s\natom 3 H H H - .4 0 1 0 1 1 s\nAtomsEnd\n";

static std::jmp_buf Return;
static bool Inside = false;
static bool StandardFiles = false;  // the tables in Run are those of the files above

// nmrparam.in as a stream that remembers whether the reader has closed it.
static struct {
    const char* Next;
    std::size_t Left;
    bool Open;
} Input;

extern "C" void __real_exit(int code) __attribute__((noreturn));
extern "C" void __wrap_exit(int code) __attribute__((noreturn));

extern "C" void __wrap_exit(int code) {
    if (Inside) {
        std::longjmp(Return, 1);
    }
    __real_exit(code);
}

static ssize_t TakeInput(void*, char* buffer, std::size_t size) {
    const std::size_t length = std::min(size, Input.Left);
    std::memcpy(buffer, Input.Next, length);
    Input.Next += length;
    Input.Left -= length;
    return static_cast<ssize_t>(length);
}

static int CloseInput(void*) {
    Input.Open = false;
    return 0;
}

static std::FILE* OpenInput(const char* text, std::size_t size) {
    Input = {text, size, true};
    return fopencookie(nullptr, "r", {TakeInput, nullptr, nullptr, CloseInput});
}

static const std::string& Directory() {
    static std::string directory;
    if (directory.empty()) {
        char name[] = "/tmp/velkoranXXXXXX";
        directory = mkdtemp(name);
        std::atexit([] {
            for (const char* file : {"nmrtype.txt", "nmr_shft.abp", "nmr_cupl.abp", ""}) {
                std::remove((Directory() + "/" + file).c_str());
            }
        });
    }
    return directory;
}

static void WriteFile(const char* name, const std::string& text) {
    std::FILE* file = std::fopen((Directory() + "/" + name).c_str(), "w");
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
}

// Takes the text up to the next form feed; the fixed text when nothing is left.
static std::string TakePart(const char*& text, const char* end, const char* fixed) {
    if (text > end) {
        return fixed;
    }
    const char* stop = std::find(text, end, '\f');
    std::string part(text, stop);
    text = stop + 1;
    return part;
}

static void WriteParameterFiles(const char* text, const char* end) {
    WriteFile("nmrtype.txt", TakePart(text, end, TypeFile));
    WriteFile("nmr_shft.abp", TakePart(text, end, RecordFile));
    WriteFile("nmr_cupl.abp", TakePart(text, end, RecordFile));
}

static void ReadAndPrepare(std::FILE* input) {
    if (!StandardFiles) {
        ReadParameterFiles();
    }
    ReadParameterInput(input);
    BuildCappingAtoms();
    BuildSelectedAtomList();
    PrepareSystem();
}

static void SetUpRun() {
    static char devNull[] = "/dev/null";
    static std::string directory = Directory() + "\\";
    Run.ConsoleMode = 0;
    Run.LogFilePath = devNull;
    Run.LogEnabled = 1;
    Run.RunKind = Run.ActiveRunKind = ParameterRun;
    Run.LevelShiftStartIteration = 0;
    Run.ParameterDirectory = directory.data();
    std::snprintf(Run.InputFilePath, FilePathSize, "nmrparam.in");
    std::snprintf(Run.OutputFilePath, FilePathSize, "/dev/null");
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    SetUpRun();
    const char* text = reinterpret_cast<const char*>(data);
    const bool parameterFiles = text[0] == 'p';
    if (parameterFiles) {
        WriteParameterFiles(text + 1, text + size);
        StandardFiles = false;
    } else if (!StandardFiles) {
        WriteFile("nmrtype.txt", TypeFile);
        WriteFile("nmr_shft.abp", RecordFile);
        WriteFile("nmr_cupl.abp", RecordFile);
    }
    std::FILE* input = parameterFiles ? OpenInput(InputFile, sizeof InputFile - 1) : OpenInput(text + 1, size - 1);
    Inside = true;
    if (setjmp(Return) == 0) {
        ReadAndPrepare(input);
    }
    Inside = false;
    StandardFiles = !parameterFiles;
    Run.FatalGuardFrame = nullptr;
    if (Input.Open) {
        std::fclose(input);
    }
    FreeRunData();
    return 0;
}
