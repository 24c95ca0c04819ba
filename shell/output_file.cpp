// SPDX-License-Identifier: MIT
// Writes the output file so that it is never seen in parts.
#include "shell/output_file.h"

#include "shell/platform.h"
#include "shell/run_state.h"

static constexpr int NeighbourPathSize = FilePathSize + 48;

// The file being written; empty while it is the output file itself.
static char NeighbourPath[NeighbourPathSize];

std::FILE* OpenOutputFile() {
    const char* path = Run.OutputFilePath;
    NeighbourPath[0] = '\0';
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
    std::snprintf(NeighbourPath, NeighbourPathSize, "%s.%lu.%lld", path, ProcessNumber(), SystemTime());
    std::FILE* file = OpenFile(NeighbourPath, "w");
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
    const PathKind kind = KindOfPath(Run.OutputFilePath);
    if (kind == PathKind::Link || (kind == PathKind::OrdinaryFile && !RemoveFile(Run.OutputFilePath))) {
        std::FILE* file = OpenFile(Run.OutputFilePath, "w");
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
    std::FILE* to = OpenFile(Run.OutputFilePath, "wb");
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
    if (written && closed && (inPlace || MoveOver(NeighbourPath, Run.OutputFilePath) || CopyToOutput())) {
        return true;
    }
    DiscardOutput();
    return false;
}
