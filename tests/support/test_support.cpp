// SPDX-License-Identifier: MIT
// What the tests share.
#include "tests/support/test_support.h"

#include "ground/memory.h"
#include "spectrum/compute_spectrum.h"
#include "spectrum/line_list.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

static constexpr unsigned ChildSeconds = 20;

SpinSystem LikeSpins(const std::vector<double>& shifts, const std::vector<double>& upperCouplings) {
    const std::size_t n = shifts.size();
    SpinSystem system = {
        std::vector<int>(n, 1), std::vector<int>(n, 1), shifts, std::vector<double>(n * n, 0.0), 100.0, 1e-7, 0};
    std::size_t next = 0;
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = i + 1; j < n; ++j) {
            system.Couplings[i * n + j] = system.Couplings[j * n + i] = upperCouplings.at(next++);
        }
    }
    return system;
}

template <class Record> static void CopyToArray(const std::vector<Record>& values, Record*& array) {
    AllocateArray(array, static_cast<long long>(values.size()));
    std::copy(values.begin(), values.end(), array);
}

static void FreeRunArrays() {
    Run.Job.ActiveRunKind = SpectrumRun;  // the first call of a process would free nothing
    FreeRunData();
}

void LoadSpinSystem(const SpinSystem& system) {
    FreeRunArrays();
    Run.Options.CalculateSpectra = 1;
    Run.Spins.SpinGroupCount = static_cast<int>(system.Nuclei.size());
    CopyToArray(system.Isotopes, Run.Spins.IsotopicNumbers);
    CopyToArray(system.Nuclei, Run.Spins.NucleiInGroup);
    CopyToArray(system.Shifts, Run.Spins.ChemicalShifts);
    CopyToArray(system.Couplings, Run.Spins.CouplingMatrix);
    Run.Options.NMRFrequency = system.Frequency;
    Run.Options.MinimalIntensity = system.MinimalIntensity;
    Run.Options.UseWeakCoupling = system.Weak;
}

std::vector<SpectrumLine> Simulate(const SpinSystem& system) {
    LoadSpinSystem(system);
    ComputeSpectrum();
    const std::vector<SpectrumLine> lines = FinishedLines();
    FreeRunArrays();
    return lines;
}

void LoadLines(const std::vector<SpectrumLine>& lines) {
    FreeArray(Run.Lines.SpectrumLines);
    ReserveLines(static_cast<long long>(lines.size()));
    std::copy(lines.begin(), lines.end(), Run.Lines.SpectrumLines);
}

std::vector<SpectrumLine> FinishedLines() {
    return {Run.Lines.SpectrumLines, Run.Lines.SpectrumLines + Run.Lines.SpectrumLineCount};
}

double TotalIntensity(const std::vector<SpectrumLine>& lines) {
    double sum = 0.0;
    for (const SpectrumLine& line : lines) {
        sum += static_cast<double>(line.Intensity);
    }
    return sum;
}

double FirstMoment(const std::vector<SpectrumLine>& lines) {
    double sum = 0.0;
    for (const SpectrumLine& line : lines) {
        sum += static_cast<double>(line.Intensity) * static_cast<double>(line.Frequency);
    }
    return sum;
}

TemporaryDirectory::TemporaryDirectory() {
    char name[] = "/tmp/velkoranXXXXXX";
    Path = mkdtemp(name);
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code error;
    std::filesystem::remove_all(Path, error);
}

std::string ReadText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file || std::filesystem::is_directory(path)) {
        return "(no file)";
    }
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string Replaced(std::string text, const std::string& part, const std::string& by) {
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + by.size())) {
        text.replace(at, part.size(), by);
    }
    return text;
}

static ssize_t ReadDamaged(void* cookie, char* buffer, std::size_t size) {
    auto* stream = static_cast<DamagedStream*>(cookie);
    const std::size_t length = std::min(size, stream->Text.size() - stream->Place);
    if (length == 0) {
        errno = EIO;
        return -1;
    }
    std::memcpy(buffer, stream->Text.data() + stream->Place, length);
    stream->Place += length;
    return static_cast<ssize_t>(length);
}

std::FILE* DamagedStream::Open() {
    return fopencookie(this, "r", {ReadDamaged, nullptr, nullptr, nullptr});
}

int ExitCodeOfChild(const std::function<void()>& steps) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        alarm(ChildSeconds);
        steps();
        std::fflush(nullptr);
        _exit(98);  // the steps came back
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void UseFilesIn(const std::string& directory) {
    static char logPath[FilePathSize];
    std::snprintf(Run.Job.InputFilePath, FilePathSize, "%s/nmrspect.in", directory.c_str());
    std::snprintf(Run.Job.OutputFilePath, FilePathSize, "%s/nmrspect.out", directory.c_str());
    std::snprintf(logPath, FilePathSize, "%s/run.log", directory.c_str());
    Run.Job.LogFilePath = logPath;
    Run.Report.LogEnabled = 1;
    Run.Process.ConsoleMode = 0;
    Run.Job.RunKind = SpectrumRun;
}

void ResetRun() {
    FreeRunArrays();
    ::Run = RunState();
}
