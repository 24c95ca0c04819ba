// SPDX-License-Identifier: MIT
// Sets the instance up, delivers messages, and runs the job within the handling of the start message.
#include "shell/process_entry.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_catalogue.h"
#include "ground/platform.h"
#include "ground/recovery_frame.h"
#include "ground/run_state.h"
#include "shell/run_job.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

static constexpr int SocketsVersion = 257;  // 1.1
static constexpr char WindowClassName[] = "braisag";
static constexpr unsigned AboutCommand = 100;
static constexpr int AboutTextLimit = 30;
static constexpr unsigned FirstFormat = 49152;  // the range of registered formats
static constexpr unsigned LastFormat = 65535;

// The text fields and the directories get buffers that hold any field of this command line, a backslash and a
// terminator.
static void AllocateTextFields(const char* commandLine) {
    const std::size_t length = std::strlen(commandLine) + 2;
    for (char** field : {&Run.Job.ParameterField, &Run.Job.WorkField, &Run.Job.LogFilePath, &Run.Job.ParameterDirectory,
                         &Run.Job.WorkDirectory}) {
        *field = AllocateForProcess<char>(static_cast<long long>(length));
        if (*field == nullptr) {
            FatalError(Message::OutOfMemory);
        }
    }
}

// On purpose the name that is opened is the still empty work directory, the root of the user's key, where the value
// "UseSockets" hardly ever is; a path composed for the program's preferences was never used, and front ends rely on
// the value having no effect.
static void ReadUseSockets() {
    std::uint32_t value = 0;
    if (ReadRegistryWord(Run.Job.WorkDirectory, "UseSockets", &value)) {
        Run.Process.UseSockets = value != 0 ? 1 : 0;
    }
}

static void BuildSystemMenu(PlatformWindow* window) {
    PlatformMenu* menu = GetWindowMenu(window);
    if (menu == nullptr) {
        FatalError(Message::OutOfMemory);
    }
    for (const int position : {8, 7, 5, 4, 3, 2, 0}) {  // Move and Close stay
        DeleteMenuEntry(menu, position);
    }
    AppendMenuSeparator(menu);
    char text[AboutTextLimit] = "";
    LoadCatalogueText(Message::AboutVelkoran, text, AboutTextLimit);
    AppendMenuEntry(menu, AboutCommand, text);
}

// The formats of the scan split at white space only: a blank can't be part of a path, and "2x" is the kind 2 with the
// log "x".
static void ScanCommandLine(const char* commandLine) {
    long long kind = 0;
    std::sscanf(commandLine, "%s %s %lld %s", Run.Job.ParameterField, Run.Job.WorkField, &kind, Run.Job.LogFilePath);
    Run.Job.RunKind = kind == SpectrumRun ? SpectrumRun : ParameterRun;
}

static void InitInstance(const char* commandLine) {
    AllocateTextFields(commandLine);
    ReadUseSockets();
    if (!RegisterWindowClass(WindowClassName, MainWindowProc)) {
        FatalError(Message::OutOfMemory);
    }
    Run.Job.QuietFlag = 0;
    Run.Job.SystemCount = 1;
    if (Run.Process.UseSockets == 0) {
        Run.Process.PacketFormat = RegisterFormat("Packet");
        if (Run.Process.PacketFormat < FirstFormat || Run.Process.PacketFormat > LastFormat) {
            FatalError(Message::OutOfMemory);
        }
    }
    Run.Process.MainWindow = CreateMainWindow(WindowClassName, "Velkoran");
    if (Run.Process.MainWindow == nullptr) {
        FatalError(Message::OutOfMemory);
    }
    BuildSystemMenu(Run.Process.MainWindow);
    ShowWindowMinimised(Run.Process.MainWindow);
    ScanCommandLine(commandLine);
    PostWindowMessage(Run.Process.MainWindow, StartMessage);
}

// No test guards against a second start message during a run: on purpose it starts a nested run. That does the whole
// job with the data of the run that it interrupts, which is over once it returns and is unwound without a word.
static void HandleStartMessage(PlatformWindow* window) {
    const bool nested = Run.Process.RunActive != 0;
    Run.Process.ConsoleMode = 0;
    Run.Process.RunActive = 1;
    RunOneJob(Run.Job.RunKind);
    Run.Process.RunActive = 0;
    if (nested && !RaiseIsPending()) {
        // what passes the error on, from a reader's frame too
        Run.Report.LastErrorCode = static_cast<int>(Message::SilentStop);
        RaiseError();
    }
    if (!RaiseIsPending()) {
        PostWindowMessage(window, CloseMessage);
    }
}

static void HandleDestroy() {
    if (Run.Process.AboutDialog != nullptr) {
        DestroyPlatformWindow(Run.Process.AboutDialog);
        Run.Process.AboutDialog = nullptr;
    }
    PostQuit();
}

static std::intptr_t HandleWindowMessage(PlatformWindow* window, unsigned id, std::uintptr_t wParameter,
                                         std::intptr_t lParameter) {
    switch (id) {
    case StartMessage:
        HandleStartMessage(window);
        return 0;
    case ExternalEventMessage:
        Run.Process.ExternalEventSeen = 1;
        Run.Process.ExternalEventHigh = (static_cast<std::uint32_t>(lParameter) >> 16) & 0xffff;
        Run.Process.ExternalEventLow = static_cast<std::uint32_t>(lParameter) & 0xffff;
        return 0;
    case SystemCommandMessage:
        if (wParameter == AboutCommand) {
            RunAboutDialog(window);
            if (Run.Process.CloseAfterAbout) {
                DestroyPlatformWindow(window);
            }
            return 0;
        }
        break;
    case DestroyMessage:
        HandleDestroy();
        return 0;
    case CloseMessage:
        if (Run.Process.AboutDialog != nullptr) {
            Run.Process.CloseAfterAbout = 1;
            return 0;
        }
        break;
    case QueryOpenMessage:
        return 0;  // the icon refuses to be restored
    default:
        break;
    }
    return DefaultWindowProc(window, id, wParameter, lParameter);
}

std::intptr_t MainWindowProc(PlatformWindow* window, unsigned id, std::uintptr_t wParameter, std::intptr_t lParameter) {
    EnterWindowProcedure();
    const std::intptr_t result = HandleWindowMessage(window, id, wParameter, lParameter);
    LeaveWindowProcedure();
    return result;
}

// Delivers messages until the quit message, or until a poll within one of them has met it.
static void RunMessageLoop() {
    PlatformMessage message;
    while (WaitForMessage(&message)) {
        DeliverPendingRaise();
        DispatchPlatformMessage(&message);
        DeliverPendingRaise();
        if (Run.Process.QuitRequested) {
            return;
        }
    }
    DeliverPendingRaise();
}

int ProcessEntry(const char* commandLine) {
    if (StartSockets(SocketsVersion) != 0) {
        return 0;
    }
    InitInstance(commandLine);
    RecoveryFrame frame;
    PushRecoveryFrame(frame);
    if (SAVE_CONTEXT(frame)) {  // an error raised up to here is over; the frame is pushed again
        PopRecoveryFrame(1);
        PushRecoveryFrame(frame);
    }
    if (!Run.Process.QuitRequested) {
        RunMessageLoop();
    }
    return 0;
}
