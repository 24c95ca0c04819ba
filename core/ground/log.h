// SPDX-License-Identifier: MIT
// The log: plain text lines, appended to LogFilePath. The file is opened and closed for every line, so that the front
// end can read it at any moment and a crash loses no line.
#pragma once

#include "ground/message_catalogue.h"

// Work of a line for PollMessages in a long listing: each opens and closes the file.
inline constexpr int ListedLineUnits = 64;

// Writes one line; nothing if LogEnabled is 0. A log that can't be opened ends the run: the output file then holds
// "Velkoran cannot open the log file." and the process exits with code 0.
void LogAppend(const char* text);

// Opens the file once for the lines up to CloseLog, for a long listing. Nothing between the two may poll or raise.
void KeepLogOpen();
void CloseLog();

// Writes a message of the catalogue with its arguments as one line. One without text gives an empty line.
void LogCatalogueText(Message id, const MessageArgument* arguments);

// One line of progress.
template <class... Values> void LogProgress(MessageIdFor<Values...> id, Values... values) {
    const MessageArgument arguments[sizeof...(Values) + 1] = {Argument(values)...};
    LogCatalogueText(id.Id, arguments);
}

// One line of a listing.
template <class... Values> void LogMessage(MessageIdFor<Values...> id, Values... values) {
    const MessageArgument arguments[sizeof...(Values) + 1] = {Argument(values)...};
    LogCatalogueText(id.Id, arguments);
}
