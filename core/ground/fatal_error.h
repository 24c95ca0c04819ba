// SPDX-License-Identifier: MIT
// Warnings, which go to the log, and fatal errors, which replace the output file with one "ERRMSG: " line and end the
// process with exit code 0: a caller judges a run by its output file alone.
#pragma once

#include "ground/message_catalogue.h"

// The one routing point of a finished text: standard output while ConsoleMode is set, else the output file (fatal,
// doesn't return) or the log.
void ShowMessage(bool isFatal, const char* text);

// Writes "ERRMSG: ", the text and a newline to the output file and ends the process with code 0.
[[noreturn]] void WriteFatalFile(const char* text);

// Reports a message of the catalogue and raises. With ReportFatalFlag at 0 nothing is shown: the run is only unwound.
[[noreturn]] void ReportFatalError(Message id, const MessageArgument* arguments);

// Shows a message of the catalogue as a warning; the run goes on.
void ReportWarning(Message id, const MessageArgument* arguments);

// A fatal error with a message of the catalogue and its arguments; never returns.
template <class... Values> [[noreturn]] void FatalError(MessageIdFor<Values...> id, Values... values) {
    const MessageArgument arguments[sizeof...(Values) + 1] = {Argument(values)...};
    ReportFatalError(id.Id, arguments);
}

// A warning with a message of the catalogue and its arguments; 0.
template <class... Values> int Warning(MessageIdFor<Values...> id, Values... values) {
    const MessageArgument arguments[sizeof...(Values) + 1] = {Argument(values)...};
    ReportWarning(id.Id, arguments);
    return 0;
}
