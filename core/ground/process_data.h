// SPDX-License-Identifier: MIT
// What the ground floor itself keeps in the run state: the process and its window, the job of the command line, and
// what has to be known to report messages and to unwind.
#pragma once

struct PlatformWindow;
struct RecoveryFrame;

// Process and window. Filled by shell/process_entry.cpp.
struct ProcessData {
    int ConsoleMode = 1;                    // 1 until the start message: messages go to standard output
    int QuitRequested = 0;                  // 1 once a poll has met the quit message; ends the message loop
    int RunActive = 0;                      // 1 while RunOneJob runs
    int CloseAfterAbout = 0;                // 1 when a close request came while the About box was open
    PlatformWindow* AboutDialog = nullptr;  // the open About box
    PlatformWindow* MainWindow = nullptr;   // the one window
    unsigned UseSockets = 0;                // registry value of that name, 0 or 1
    unsigned PacketFormat = 0;              // clipboard format "Packet"; stored, and read by nothing
    int ExternalEventSeen = 0;              // message 1125 has come; this and the next two are read by nothing
    unsigned ExternalEventHigh = 0;         // high word of its second parameter
    unsigned ExternalEventLow = 0;          // low word of its second parameter
};

// The values of RunKind.
inline constexpr int ParameterRun = 1;
inline constexpr int SpectrumRun = 2;

// A composed file path and its terminator.
inline constexpr int FilePathSize = 256;

// The job, from the command line. Filled by shell/process_entry.cpp and shell/run_job.cpp; its texts belong to the
// process.
struct JobData {
    int RunKind = 0;                         // ParameterRun or SpectrumRun
    int ActiveRunKind = 0;                   // kind of the data that hang in Run; 0 before the first FreeRunData
    int QuietFlag = 0;                       // 1 silences the SCF driver
    int SystemCount = 1;                     // count of systems in the run
    char* ParameterField = nullptr;          // first field of the command line, as given
    char* WorkField = nullptr;               // second field
    char* LogFilePath = nullptr;             // fourth field; empty: no log
    char* ParameterDirectory = nullptr;      // first field with its backslash; buffers are longer than the command line
    char* WorkDirectory = nullptr;           // second field with its backslash
    char InputFilePath[FilePathSize] = "";   // nmrparam.in or nmrspect.in in WorkDirectory
    char OutputFilePath[FilePathSize] = "";  // nmrparam.out or nmrspect.out in WorkDirectory
};

// Messages and unwinding. Filled by log.cpp, fatal_error.cpp, recovery_frame.cpp and message_poll.cpp of this folder.
struct ReportData {
    int LogEnabled = 0;                        // non-zero: lines go to LogFilePath
    int LastErrorCode = 0;                     // id of the fatal error in flight
    unsigned Doubts = 0;                       // what the run was cautioned about, bits of wavefunction/run_cautions.h
    int ReportFatalFlag = 1;                   // 0: the next FatalError is silent, and sets it back to 1
    RecoveryFrame* ErrorFrameTop = nullptr;    // newest guarded scope
    RecoveryFrame* FatalGuardFrame = nullptr;  // non-null only while FatalError is reporting
    int PollCounter = 0;                       // work units since the last yield
    int PollShift = 0;                         // a yield is due once PollCounter >> PollShift is non-zero
};
