// SPDX-License-Identifier: MIT
// Entry point of the Linux build: the arguments joined with blanks are the command line, unless they ask for help.
#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/platform_linux.h"
#include "shell/command_line_help.h"
#include "shell/process_entry.h"

#include <cstring>

int main(int argc, char** argv) {
    int answerCode = 0;
    if (AnswerCommandLine(argc, argv, &answerCode)) {
        return answerCode;
    }
    InstallStopSignals();
    std::size_t length = 1;
    for (int i = 1; i < argc; ++i) {
        length += std::strlen(argv[i]) + 1;
    }
    char* commandLine = AllocateForProcess<char>(static_cast<long long>(length));
    if (commandLine == nullptr) {
        FatalError(Message::OutOfMemory);
    }
    char* end = commandLine;
    for (int i = 1; i < argc; ++i) {
        const std::size_t argument = std::strlen(argv[i]);
        std::memcpy(end, argv[i], argument);
        end += argument;
        *end++ = ' ';
    }
    *end = '\0';
    const int exitCode = ProcessEntry(commandLine);
    FreeArray(commandLine);
    return exitCode;
}
