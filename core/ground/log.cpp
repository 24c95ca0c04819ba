// SPDX-License-Identifier: MIT
// Writes the log, line by line.
#include "ground/log.h"

#include "ground/output_file.h"
#include "ground/platform.h"
#include "ground/printable_text.h"
#include "ground/run_state.h"

#include <cstdio>

static constexpr int TextLimit = 400;      // characters loaded of a catalogue text
static constexpr int ExpandedLimit = 800;  // characters of a filled line

static std::FILE* KeptFile = nullptr;  // between KeepLogOpen and CloseLog

static std::FILE* OpenLog() {
    std::FILE* file = OpenFile(Run.Job.LogFilePath, "a");
    if (file == nullptr) {
        // On purpose without the "ERRMSG: " of other failures and without a newline: front ends know the text as it is.
        EndWithOutput("", "Velkoran cannot open the log file.", "");
    }
    return file;
}

void LogAppend(const char* text) {
    if (!Run.Report.LogEnabled) {
        return;
    }
    std::FILE* file = KeptFile != nullptr ? KeptFile : OpenLog();
    PutPrintable(file, text);
    std::fputc('\n', file);
    if (KeptFile == nullptr) {
        std::fclose(file);
    }
}

void KeepLogOpen() {
    if (Run.Report.LogEnabled) {
        KeptFile = OpenLog();
    }
}

void CloseLog() {
    if (KeptFile != nullptr) {
        std::fclose(KeptFile);
        KeptFile = nullptr;
    }
}

void LogCatalogueText(Message id, const MessageArgument* arguments) {
    if (!Run.Report.LogEnabled) {
        return;
    }
    char line[ExpandedLimit];
    ExpandCatalogueText(id, arguments, TextLimit, line, ExpandedLimit);
    LogAppend(line);
}
