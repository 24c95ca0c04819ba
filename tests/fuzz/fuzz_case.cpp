// SPDX-License-Identifier: MIT
// Runs the cases of the fuzz targets, and keeps the book of their streams.
#include "tests/fuzz/fuzz_case.h"

#include "ground/memory.h"
#include "ground/platform.h"
#include "ground/recovery_frame.h"
#include "ground/run_state.h"

#include <algorithm>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <sys/types.h>

static constexpr int MostStreams = 8;            // that a run has open at a time
static constexpr std::uint8_t BreakByte = 0xff;  // the last byte of a stream whose end can't be read
static constexpr int AbnormalEnd = 3;            // exit code of an error that no frame takes, and not the fuzzer's own

static std::jmp_buf Return;
static bool Inside = false;
static std::FILE* Streams[MostStreams];  // open streams of the case, or null

// What is left of the bytes that OpenBytes has opened.
static struct {
    const std::uint8_t* Next;
    std::size_t Left;
    bool Broken;
} Bytes;

extern "C" void __real_exit(int code) __attribute__((noreturn));
extern "C" void __real__Exit(int code) __attribute__((noreturn));
extern "C" std::FILE* __real_fopen(const char* path, const char* mode);
extern "C" std::FILE* __real_fdopen(int descriptor, const char* mode);
extern "C" std::FILE* __real_fopencookie(void* cookie, const char* mode, cookie_io_functions_t functions);
extern "C" int __real_fclose(std::FILE* file);

void LeaveCase() {
    std::longjmp(Return, 1);
}

void Demand(bool holds, const char* claim) {
    if (!holds) {
        std::fprintf(stderr, "The case fails: %s\n", claim);
        std::abort();
    }
}

extern "C" __attribute__((noreturn)) void __wrap_exit(int code) {
    if (Inside) {
        LeaveCase();
    }
    __real_exit(code);
}

extern "C" __attribute__((noreturn)) void __wrap__Exit(int code) {
    Demand(!Inside || code != AbnormalEnd, "no run ends abnormally");
    __real__Exit(code);
}

static std::FILE* NoteStream(std::FILE* file) {
    if (file != nullptr) {
        std::FILE** const place = std::find(Streams, Streams + MostStreams, nullptr);
        Demand(place != Streams + MostStreams, "few streams are open at a time");
        *place = file;
    }
    return file;
}

extern "C" std::FILE* __wrap_fopen(const char* path, const char* mode) {
    std::FILE* const file = __real_fopen(path, mode);
    return Inside ? NoteStream(file) : file;
}

extern "C" std::FILE* __wrap_fdopen(int descriptor, const char* mode) {
    std::FILE* const file = __real_fdopen(descriptor, mode);
    return Inside ? NoteStream(file) : file;
}

extern "C" std::FILE* __wrap_fopencookie(void* cookie, const char* mode, cookie_io_functions_t functions) {
    std::FILE* const file = __real_fopencookie(cookie, mode, functions);
    return Inside ? NoteStream(file) : file;
}

extern "C" int __wrap_fclose(std::FILE* file) {
    if (Inside) {
        std::FILE** const place = std::find(Streams, Streams + MostStreams, file);
        Demand(place != Streams + MostStreams, "only open streams are closed");
        *place = nullptr;
    }
    return __real_fclose(file);
}

static ssize_t TakeBytes(void*, char* buffer, std::size_t size) {
    if (Bytes.Left == 0 && Bytes.Broken) {
        return -1;
    }
    const std::size_t length = std::min(size, Bytes.Left);
    std::copy(Bytes.Next, Bytes.Next + length, buffer);
    Bytes.Next += length;
    Bytes.Left -= length;
    return static_cast<ssize_t>(length);
}

std::FILE* OpenBytes(const std::uint8_t* data, std::size_t size) {
    const bool broken = size > 0 && data[size - 1] == BreakByte;
    Bytes = {data, broken ? size - 1 : size, broken};
    return fopencookie(nullptr, "r", {TakeBytes, nullptr, nullptr, nullptr});
}

const char* CaseDirectory() {
    static std::string directory;
    if (directory.empty()) {
        directory = (std::filesystem::temp_directory_path() / "velkoranXXXXXX").string();
        Demand(mkdtemp(directory.data()) != nullptr, "a temporary directory can be made");
        std::atexit([] {
            std::error_code error;
            std::filesystem::remove_all(directory, error);
        });
    }
    return directory.c_str();
}

void WriteCaseFile(const char* name, const void* data, std::size_t size) {
    const std::string path = std::string(CaseDirectory()) + "/" + name;
    std::FILE* const file = std::fopen(path.c_str(), "w");
    Demand(file != nullptr, "a file can be written");
    if (size > 0) {  // an empty input is no array
        std::fwrite(data, 1, size, file);
    }
    std::fclose(file);
}

void WriteFixedParameterFiles() {
    static constexpr char types[] = "heading\nH 1\nC 12\nN 14\nO 16\nF 19\nS 32\n";
    static constexpr char records[] = "H 1.2 0 0 -7.2 0 0 9 0 0 .37 5.6 -17.4 -17.4 52.1\n"
                                      "-H 1.95 1.95 0 -7.2 -7.2 0 9 .001 .001 0 0 -522.5 -522.6 19\n"
                                      "C 1.625 1.625 0 -14 -5.6 0 21 .17 .27 4 1.4 -167.8 -161.5 171.3\n"
                                      "-C 1.625 1.625 0 -14 -5.6 0 9 .001 .001 0 0 -449.5 -449.6 19\n"
                                      "N 1.95 1.95 0 -19.3 -7.3 0 25 .22 .35 6.9 -.57 -301.4 -290.4 113\n"
                                      "O 2.275 2.275 0 -25.4 -9.1 0 31 .27 .43 12 -.76 -492 -470.5 59.6\n"
                                      "-O 2.275 2.275 0 -25.4 -9.1 0 31 .001 .001 0 0 -647.3 -647.4 19\n"
                                      "F 2.6 2.6 0 -32.3 -11 0 39 .32 .53 21 5.3 -749.6 -714.5 19\n"
                                      "S 1.8 1.8 1.8 -17.6 -7 -.7 18 .001 .001 7.9 .43 -292.9 -293 66.2\n";
    WriteCaseFile("nmrtype.txt", types, sizeof types - 1);
    WriteCaseFile("nmr_shft.abp", records, sizeof records - 1);
    WriteCaseFile("nmr_cupl.abp", records, sizeof records - 1);
}

bool TakePart(const std::uint8_t*& data, std::size_t& size, const std::uint8_t*& part, std::size_t& partSize) {
    if (size == 0) {
        return false;
    }
    part = data;
    const std::uint8_t* const end = std::find(data, data + size, '\f');
    partSize = static_cast<std::size_t>(end - data);
    const std::size_t taken = std::min(partSize + 1, size);
    data += taken;
    size -= taken;
    return true;
}

void StartRun(int kind) {
    Run.Process.ConsoleMode = 0;
    Run.Job.LogFilePath = strdup("/dev/null");
    Run.Report.LogEnabled = 1;
    Run.Job.RunKind = Run.Job.ActiveRunKind = kind;
    const std::string directory = std::string(CaseDirectory()) + "\\";
    Run.Job.ParameterDirectory = strdup(directory.c_str());
    std::snprintf(Run.Job.InputFilePath, FilePathSize, "input");
    std::snprintf(Run.Job.OutputFilePath, FilePathSize, "/dev/null");
}

// What hangs on the process and not on the run, and the messages that nobody has taken.
static void FreeProcessData() {
    for (char** field : {&Run.Job.ParameterField, &Run.Job.WorkField, &Run.Job.LogFilePath, &Run.Job.ParameterDirectory,
                         &Run.Job.WorkDirectory}) {
        FreeArray(*field);
    }
    FreeArray(Run.Parameters.AtomTypeNames);
    FreeArray(Run.Parameters.ParameterFileShielding);
    FreeArray(Run.Parameters.ParameterFileCoupling);
    FreeArray(Run.Parameters.CouplingConstants);
    PlatformMessage message;
    while (TakeMessage(&message)) {
    }
}

void RunCase(void (*steps)()) {
    Run = RunState();
    Inside = true;
    if (setjmp(Return) == 0) {
        steps();
        Demand(Run.Process.QuitRequested || std::count(Streams, Streams + MostStreams, nullptr) == MostStreams,
               "no stream is left open but by a stop");
    } else if (Run.Process.RunActive) {
        LeaveWindowProcedure();  // the run was within the handling of its start message
    }
    Inside = false;
    for (std::FILE*& file : Streams) {
        if (file != nullptr) {
            std::fclose(file);
            file = nullptr;
        }
    }
    Run.Job.ActiveRunKind = SpectrumRun;  // the first call of a process would free nothing
    FreeRunData();
    FreeProcessData();
}
