// SPDX-License-Identifier: MIT
// A second process for the tests of the Windows program: it finds the program's window and talks to it, and reads the
// resources of the executable. Usage: window_tool COMMAND [ARGUMENT]; exit code 0 when it did what was asked.
#include <windows.h>

#include <winver.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

static constexpr int Patience = 20000;  // milliseconds to wait for a window
static constexpr int Nap = 2;           // milliseconds between two looks

static HWND WaitForWindow(const char* className, const char* title) {
    for (int waited = 0; waited < Patience; waited += Nap) {
        HWND window = FindWindowA(className, title);
        if (window != nullptr) {
            return window;
        }
        Sleep(Nap);
    }
    std::printf("no window \"%s\"\n", title);
    std::exit(1);
}

static HWND MainWindow() {
    return WaitForWindow("braisag", "Velkoran");
}

static HWND AboutBox() {
    return WaitForWindow("#32770", "About Velkoran");
}

// Prints what can be seen of the main window: class, title, style, state, answer to WM_QUERYOPEN.
static void DescribeWindow() {
    HWND window = MainWindow();
    char text[256] = "";
    GetClassNameA(window, text, sizeof text);
    std::printf("class %s\n", text);
    GetWindowTextA(window, text, sizeof text);
    std::printf("title %s\n", text);
    std::printf("style %08lx\n", static_cast<unsigned long>(GetWindowLongA(window, GWL_STYLE)));
    std::printf("minimised %d\n", IsIconic(window) ? 1 : 0);
    std::printf("foreground %d\n", GetForegroundWindow() == window ? 1 : 0);
    std::printf("queryopen %ld\n", static_cast<long>(SendMessageA(window, WM_QUERYOPEN, 0, 0)));
}

static BOOL CALLBACK PrintChild(HWND child, LPARAM) {
    char className[64] = "";
    char text[256] = "";
    GetClassNameA(child, className, sizeof className);
    GetWindowTextA(child, text, sizeof text);
    std::printf("%s %s\n", className, text);
    return TRUE;
}

// Prints every text of the executable's string table, newlines as "\n".
static void PrintStrings(const char* path) {
    HMODULE module = LoadLibraryExA(path, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    for (UINT id = 0; id < 65536; ++id) {
        char text[1024];
        const int length = LoadStringA(module, id, text, sizeof text);
        if (length > 0) {
            std::printf("%u ", id);
            for (const char* c = text; *c != '\0'; ++c) {
                std::printf(*c == '\n' ? "\\n" : "%c", *c);
            }
            std::printf("\n");
        }
    }
}

static void PrintResources(const char* path) {
    HMODULE module = LoadLibraryExA(path, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    std::printf("icon %d\n", FindResourceA(module, "BackendIcon", RT_GROUP_ICON) != nullptr ? 1 : 0);
    std::printf("dialog %d\n", FindResourceA(module, MAKEINTRESOURCEA(1), RT_DIALOG) != nullptr ? 1 : 0);
    static char data[65536];
    void* value = nullptr;
    UINT length = 0;
    if (GetFileVersionInfoA(path, 0, sizeof data, data) &&
        VerQueryValueA(data, "\\StringFileInfo\\040904E4\\ProductName", &value, &length)) {
        std::printf("product %s\n", static_cast<const char*>(value));
    }
}

// 0 if a clipboard format of this name is registered in the session, which asking by name would bring about.
static int FindFormat(const char* wanted) {
    for (UINT id = 0xC000; id <= 0xFFFF; ++id) {
        char name[256] = "";
        if (GetClipboardFormatNameA(id, name, sizeof name) > 0 && std::strcmp(name, wanted) == 0) {
            return 0;
        }
    }
    return 1;
}

int main(int argc, char** argv) {
    const char* command = argc > 1 ? argv[1] : "";
    const char* argument = argc > 2 ? argv[2] : "";
    if (std::strcmp(command, "close") == 0) {
        return PostMessageA(MainWindow(), WM_CLOSE, 0, 0) ? 0 : 1;
    }
    if (std::strcmp(command, "about") == 0) {
        PostMessageA(MainWindow(), WM_SYSCOMMAND, 100, 0);
        HWND box = AboutBox();
        Sleep(300);  // until it has its controls
        EnumChildWindows(box, PrintChild, 0);
        return 0;
    }
    if (std::strcmp(command, "ok") == 0) {
        return PostMessageA(AboutBox(), WM_COMMAND, IDOK, 0) ? 0 : 1;
    }
    if (std::strcmp(command, "describe") == 0) {
        DescribeWindow();
        return 0;
    }
    if (std::strcmp(command, "strings") == 0) {
        PrintStrings(argument);
        return 0;
    }
    if (std::strcmp(command, "resources") == 0) {
        PrintResources(argument);
        return 0;
    }
    if (std::strcmp(command, "format") == 0) {
        return FindFormat(argument);
    }
    std::printf("no such command: %s\n", command);
    return 2;
}
