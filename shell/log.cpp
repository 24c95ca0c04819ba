// SPDX-License-Identifier: MIT
// Writes the log, line by line.
#include "shell/log.h"

#include "shell/output_file.h"
#include "shell/platform.h"
#include "shell/run_state.h"

#include <cstdio>
#include <cstdlib>

static constexpr int TextLimit = 400;     // characters loaded of a catalogue text
static constexpr int ExpandedLimit = 800;  // characters of a filled line

// On purpose without the "ERRMSG: " of other failures and without a newline: front ends know the text as it is.
[[noreturn]] static void WriteLogFailure() {
    std::FILE* file = OpenOutputFile();
    if (file != nullptr) {
        std::fputs("Velkoran cannot open the log file.", file);
        CloseOutputFile(file);
    }
    std::exit(0);
}

void LogAppend(const char* text) {
    if (!Run.LogEnabled) {
        return;
    }
    std::FILE* file = OpenFile(Run.LogFilePath, "a");
    if (file == nullptr) {
        WriteLogFailure();
    }
    std::fprintf(file, "%s\n", text);
    std::fclose(file);
}

void LogCatalogueText(int id, const MessageArgument* arguments) {
    if (!Run.LogEnabled) {
        return;
    }
    char line[ExpandedLimit];
    ExpandCatalogueText(id, arguments, TextLimit, line, ExpandedLimit);
    LogAppend(line);
}
