// SPDX-License-Identifier: MIT
// Writes the output file so that it is never seen in parts.
#include "shell/output_file.h"

#include "shell/platform.h"
#include "shell/run_state.h"

static constexpr int NeighbourPathSize = FilePathSize + 16;

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
    std::snprintf(NeighbourPath, NeighbourPathSize, "%s.%lu", path, ProcessNumber());
    RemoveFile(NeighbourPath);
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

bool CloseOutputFile(std::FILE* file) {
    const bool written = std::ferror(file) == 0;
    const bool closed = std::fclose(file) == 0;
    const bool inPlace = NeighbourPath[0] == '\0';
    if (written && closed && (inPlace || MoveOver(NeighbourPath, Run.OutputFilePath))) {
        return true;
    }
    DiscardOutput();
    return false;
}
