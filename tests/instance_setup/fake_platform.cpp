// SPDX-License-Identifier: MIT
// The platform for tests.
#include "tests/instance_setup/fake_platform.h"

#include "ground/message_catalogue.h"
#include "ground/platform.h"
#include "ground/run_state.h"
#include "shell/process_entry.h"

struct PlatformWindow {
    bool Alive;
};

struct PlatformMenu {
    int Unused;
};

FakePlatformState Fake;

static PlatformWindow Window;
static PlatformWindow Dialog;
static PlatformMenu Menu;

static bool Ask(const std::string& operation, const std::string& arguments = "") {
    Fake.Calls.push_back(arguments.empty() ? operation : operation + " " + arguments);
    return Fake.Failing != operation;
}

void EndProcess(int code) {
    std::exit(code);
}

int StartSockets(int version) {
    return Ask("StartSockets", std::to_string(version)) ? 0 : 1;
}

int ReadRegistryWord(const char* keyName, const char* valueName, std::uint32_t* value) {
    Ask("ReadRegistryWord", "\"" + std::string(keyName) + "\" " + valueName);
    *value = Fake.RegistryValue;
    return Fake.RegistryAnswer;
}

int RegisterWindowClass(const char* className, WindowProc*) {
    return Ask("RegisterWindowClass", className) ? 1 : 0;
}

unsigned RegisterFormat(const char* name) {
    Ask("RegisterFormat", name);
    return Fake.FormatId;
}

PlatformWindow* CreateMainWindow(const char* className, const char* title) {
    Window.Alive = true;
    return Ask("CreateMainWindow", std::string(className) + " " + title) ? &Window : nullptr;
}

PlatformMenu* GetWindowMenu(PlatformWindow*) {
    return Ask("GetWindowMenu") ? &Menu : nullptr;
}

void DeleteMenuEntry(PlatformMenu*, int position) {
    Ask("DeleteMenuEntry", std::to_string(position));
}

void AppendMenuSeparator(PlatformMenu*) {
    Ask("AppendMenuSeparator");
}

void AppendMenuEntry(PlatformMenu*, unsigned command, const char* text) {
    Ask("AppendMenuEntry", std::to_string(command) + " " + text);
}

void ShowWindowMinimised(PlatformWindow*) {
    Ask("ShowWindowMinimised");
}

void DestroyPlatformWindow(PlatformWindow* window) {
    Ask("DestroyPlatformWindow", window == &Dialog ? "dialog" : "main");
    if (window->Alive) {
        window->Alive = false;
        if (window == &Window) {
            MainWindowProc(window, DestroyMessage, 0, 0);
        }
    }
}

void RunAboutDialog(PlatformWindow* owner) {
    Ask("RunAboutDialog");
    Dialog.Alive = true;
    Run.Process.AboutDialog = &Dialog;
    for (const unsigned id : Fake.DialogMessages) {
        MainWindowProc(owner, id, 0, 0);
    }
    Run.Process.AboutDialog = nullptr;
}

std::intptr_t DefaultWindowProc(PlatformWindow* window, unsigned id, std::uintptr_t, std::intptr_t) {
    Ask("DefaultWindowProc", std::to_string(id));
    if (id == CloseMessage) {
        DestroyPlatformWindow(window);
    }
    return 77;  // tells the default answer from the program's own
}

void PostWindowMessage(PlatformWindow*, unsigned id) {
    Ask("PostWindowMessage", std::to_string(id));
}

void PostQuit() {
    Ask("PostQuit");
    Fake.Messages.push_back(QuitMessage);
}

int TakeMessage(PlatformMessage* message) {
    if (Fake.Messages.empty()) {
        return 0;
    }
    *message = {&Window, Fake.Messages.front(), 0, 0, {}};
    Fake.Messages.erase(Fake.Messages.begin());
    return 1;
}

int WaitForMessage(PlatformMessage* message) {
    return TakeMessage(message) && message->Id != QuitMessage;
}

void DispatchPlatformMessage(const PlatformMessage* message) {
    if (message->Window->Alive) {
        MainWindowProc(message->Window, message->Id, message->WParameter, message->LParameter);
    }
}

void ReleaseMouseCapture() {
    Ask("ReleaseMouseCapture");
}

int LoadCatalogueText(Message id, char* buffer, int limit) {
    const char* text = CatalogueText(id);
    return text == nullptr ? 0 : std::snprintf(buffer, static_cast<std::size_t>(limit), "%s", text);
}

int LengthBeyondAscii(const char*) {
    return 1;
}

std::FILE* OpenFile(const char* path, const char* mode) {
    Ask("OpenFile", std::string(path) + " " + mode);
    return nullptr;
}

std::FILE* CreateNewFile(const char* path) {
    Ask("CreateNewFile", path);
    return nullptr;
}

PathKind KindOfPath(const char* path) {
    Ask("KindOfPath", path);
    return PathKind::Absent;
}

bool MoveOver(const char* from, const char* to) {
    return Ask("MoveOver", std::string(from) + " " + to);
}

bool RemoveFile(const char* path) {
    return Ask("RemoveFile", path);
}

unsigned long ProcessNumber() {
    return 1;
}

long long SystemTime() {
    return 1;
}

void PreferLargePages(void*, std::size_t) {}

std::uint64_t AvailableMemory() {
    return std::uint64_t(1) << 30;
}
