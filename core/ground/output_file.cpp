// SPDX-License-Identifier: MIT
// Writes the output file so that it is never seen in parts.
#include "ground/output_file.h"

#include "ground/platform.h"
#include "ground/printable_text.h"
#include "ground/run_state.h"

#include <cerrno>
#include <cstring>

static constexpr int NeighbourPathSize = FilePathSize + 48;
static constexpr int NeighbourNames = 16;  // tried before the output file is written in place

// The file being written; empty while it is the output file itself.
static char NeighbourPath[NeighbourPathSize];

// Creates the neighbour under a name that nothing has: what somebody has put there is neither followed nor emptied.
static std::FILE* CreateNeighbour(const char* path) {
    for (int i = 0; i < NeighbourNames; ++i) {
        std::snprintf(NeighbourPath, NeighbourPathSize, "%s.%lu.%lld", path, ProcessNumber(), SystemTime() + i);
        std::FILE* file = CreateNewFile(NeighbourPath);
        if (file != nullptr || errno != EEXIST) {
            return file;
        }
    }
    return nullptr;
}

std::FILE* OpenOutputFile() {
    const char* path = Run.Job.OutputFilePath;
    NeighbourPath[0] = '\0';
    if (path[0] == '\0') {  // it was too long to be composed
        errno = ENAMETOOLONG;
        return nullptr;
    }
    const PathKind kind = KindOfPath(path);
    if (kind == PathKind::Link || kind == PathKind::Other) {
        return OpenFile(path, "w");
    }
    if (kind == PathKind::OrdinaryFile) {  // one that mustn't be written isn't replaced either
        std::FILE* present = OpenFile(path, "r+");
        if (present == nullptr) {
            return nullptr;
        }
        std::fclose(present);
    }
    std::FILE* file = CreateNeighbour(path);
    if (file == nullptr) {
        NeighbourPath[0] = '\0';
        file = OpenFile(path, "w");
    }
    return file;
}

// Leaves nothing that could be taken for a result.
static void DiscardOutput() {
    if (NeighbourPath[0] != '\0') {
        RemoveFile(NeighbourPath);
    }
    const PathKind kind = KindOfPath(Run.Job.OutputFilePath);
    if (kind == PathKind::Link || (kind == PathKind::OrdinaryFile && !RemoveFile(Run.Job.OutputFilePath))) {
        std::FILE* file = OpenFile(Run.Job.OutputFilePath, "w");
        if (file != nullptr) {
            std::fclose(file);
        }
    }
}

// Where the file can't be moved (the output file is a mount of its own, or, on Windows, somebody reads it), its bytes
// are written over those of the output file.
static bool CopyToOutput() {
    std::FILE* from = OpenFile(NeighbourPath, "rb");
    if (from == nullptr) {
        return false;
    }
    std::FILE* to = OpenFile(Run.Job.OutputFilePath, "wb");
    bool copied = to != nullptr;
    if (to != nullptr) {
        char block[BUFSIZ];
        for (std::size_t length; copied && (length = std::fread(block, 1, sizeof block, from)) > 0;) {
            copied = std::fwrite(block, 1, length, to) == length;
        }
        copied = copied && std::ferror(from) == 0;
        copied = std::fclose(to) == 0 && copied;
    }
    std::fclose(from);
    return copied && RemoveFile(NeighbourPath);
}

bool CloseOutputFile(std::FILE* file) {
    const bool written = std::ferror(file) == 0;
    const bool closed = std::fclose(file) == 0;
    const bool inPlace = NeighbourPath[0] == '\0';
    if (written && closed && (inPlace || MoveOver(NeighbourPath, Run.Job.OutputFilePath) || CopyToOutput())) {
        return true;
    }
    const int reason = errno;
    DiscardOutput();
    errno = reason;
    return false;
}

// The line that is left to say where there is no file to say it in. Its buffer makes it one piece among the lines of
// other processes, and takes no memory where that is what is lacking.
static void SayOnStandardError(const char* text) {
    const char* reason = std::strerror(errno);
    static char buffer[BUFSIZ];
    std::setvbuf(stderr, buffer, _IOFBF, sizeof buffer);
    std::fprintf(stderr, "velkoran: cannot write %s", Run.Job.OutputFilePath[0] != '\0' ? "" : "an output file");
    PutPrintable(stderr, Run.Job.OutputFilePath);
    std::fprintf(stderr, " (%s): ", reason);
    PutPrintable(stderr, text);
    std::fprintf(stderr, "\n");
}

void EndWithOutput(const char* before, const char* text, const char* behind) {
    std::FILE* file = OpenOutputFile();
    bool written = file != nullptr;
    if (written) {
        std::fputs(before, file);
        PutPrintable(file, text);
        std::fputs(behind, file);
        written = CloseOutputFile(file);
    }
    if (!written) {
        SayOnStandardError(text);
    }
    EndProcess(0);
}
