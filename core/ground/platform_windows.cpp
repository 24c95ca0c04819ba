// SPDX-License-Identifier: MIT
// The platform on Windows: the system's message queue and window, its registry and string resources.
#include "ground/platform_windows.h"

#include "ground/platform.h"
#include "ground/run_state.h"

#include <winsock2.h>

#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

static constexpr int AboutDialogResource = 1;
static constexpr REGSAM RegistryAccess = 131097;  // read
static constexpr UINT WindowClassStyle = 3;       // redraw on a change of either size
static constexpr DWORD WindowStyle = 13565952;    // overlapped: caption, system menu, thick frame, both boxes
static constexpr int ShowMinimisedNotActivated = 7;

static_assert(sizeof(MSG) <= sizeof(PlatformMessage::Native));

static HINSTANCE Instance = nullptr;  // module of the program's resources

void KeepInstance(void* instance) {
    Instance = static_cast<HINSTANCE>(instance);
}

static HWND Native(PlatformWindow* window) {
    return reinterpret_cast<HWND>(window);
}

static HMENU Native(PlatformMenu* menu) {
    return reinterpret_cast<HMENU>(menu);
}

static PlatformWindow* Portable(HWND window) {
    return reinterpret_cast<PlatformWindow*>(window);
}

static WindowProc* Procedure = nullptr;  // of the main window

static LRESULT CALLBACK CallProcedure(HWND window, UINT id, WPARAM wParameter, LPARAM lParameter) {
    return Procedure(Portable(window), id, wParameter, lParameter);
}

static INT_PTR CALLBACK AboutDialogProc(HWND dialog, UINT id, WPARAM wParameter, LPARAM) {
    switch (id) {
    case WM_INITDIALOG:
        Run.Process.AboutDialog = Portable(dialog);
        return 1;
    case WM_COMMAND:
        if (wParameter == IDOK || wParameter == IDCANCEL) {
            EndDialog(dialog, 1);
            return 1;
        }
        return 0;
    case WM_DESTROY:
        Run.Process.AboutDialog = nullptr;
        return 0;
    default:
        return 0;
    }
}

int StartSockets(int version) {
    WSADATA data;
    return WSAStartup(static_cast<WORD>(version), &data);
}

int ReadRegistryWord(const char* keyName, const char* valueName, std::uint32_t* value) {
    HKEY key;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, keyName, 0, RegistryAccess, &key) != ERROR_SUCCESS) {
        return 0;
    }
    DWORD size = sizeof *value;  // the key stays open until the process ends, it is read once
    return RegQueryValueExA(key, valueName, nullptr, nullptr, reinterpret_cast<BYTE*>(value), &size) == ERROR_SUCCESS &&
           size == sizeof *value;
}

int RegisterWindowClass(const char* className, WindowProc* procedure) {
    Procedure = procedure;
    WNDCLASSA record = {};
    record.style = WindowClassStyle;
    record.lpfnWndProc = CallProcedure;
    record.hInstance = Instance;
    record.hIcon = LoadIconA(Instance, "BackendIcon");
    record.hCursor = LoadCursorA(nullptr, reinterpret_cast<const char*>(IDC_ARROW));
    record.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    record.lpszClassName = className;
    return RegisterClassA(&record);
}

unsigned RegisterFormat(const char* name) {
    return RegisterClipboardFormatA(name);
}

PlatformWindow* CreateMainWindow(const char* className, const char* title) {
    return Portable(CreateWindowExA(0, className, title, WindowStyle, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                                    CW_USEDEFAULT, nullptr, nullptr, Instance, nullptr));
}

PlatformMenu* GetWindowMenu(PlatformWindow* window) {
    return reinterpret_cast<PlatformMenu*>(GetSystemMenu(Native(window), FALSE));
}

// A position that a system's menu doesn't have is no failure.
void DeleteMenuEntry(PlatformMenu* menu, int position) {
    DeleteMenu(Native(menu), static_cast<UINT>(position), MF_BYPOSITION);
}

void AppendMenuSeparator(PlatformMenu* menu) {
    AppendMenuA(Native(menu), MF_SEPARATOR, 0, nullptr);
}

void AppendMenuEntry(PlatformMenu* menu, unsigned command, const char* text) {
    AppendMenuA(Native(menu), MF_STRING, command, text);
}

void ShowWindowMinimised(PlatformWindow* window) {
    ShowWindow(Native(window), ShowMinimisedNotActivated);
    UpdateWindow(Native(window));
}

void DestroyPlatformWindow(PlatformWindow* window) {
    DestroyWindow(Native(window));
}

void RunAboutDialog(PlatformWindow* owner) {
    DialogBoxParamA(Instance, MAKEINTRESOURCEA(AboutDialogResource), Native(owner), AboutDialogProc, 0);
}

std::intptr_t DefaultWindowProc(PlatformWindow* window, unsigned id, std::uintptr_t wParameter,
                                std::intptr_t lParameter) {
    return DefWindowProcA(Native(window), id, wParameter, lParameter);
}

void PostWindowMessage(PlatformWindow* window, unsigned id) {
    PostMessageA(Native(window), id, 0, 0);
}

void PostQuit() {
    PostQuitMessage(0);
}

static void Keep(const MSG& native, PlatformMessage* message) {
    *message = {Portable(native.hwnd), native.message, native.wParam, native.lParam, {}};
    std::memcpy(message->Native, &native, sizeof native);
}

int WaitForMessage(PlatformMessage* message) {
    MSG native = {};
    const BOOL result = GetMessageA(&native, nullptr, 0, 0);
    Keep(native, message);
    return result;  // on purpose a failure (-1) counts as a message
}

int TakeMessage(PlatformMessage* message) {
    MSG native = {};
    const BOOL there = PeekMessageA(&native, nullptr, 0, 0, PM_REMOVE);
    Keep(native, message);
    return there;
}

void DispatchPlatformMessage(const PlatformMessage* message) {
    MSG native;
    std::memcpy(&native, message->Native, sizeof native);
    TranslateMessage(&native);
    DispatchMessageA(&native);
}

void ReleaseMouseCapture() {
    ReleaseCapture();
}

int LoadCatalogueText(Message id, char* buffer, int limit) {
    return LoadStringA(Instance, static_cast<UINT>(id), buffer, limit);
}

// The texts are in the code page of the system, which knows what is beyond ASCII.
int LengthBeyondAscii(const char*) {
    return 1;
}

std::FILE* OpenFile(const char* path, const char* mode) {
    return std::fopen(path, mode);
}

std::FILE* CreateNewFile(const char* path) {
    const int descriptor = _open(path, _O_WRONLY | _O_CREAT | _O_EXCL | _O_TEXT, _S_IREAD | _S_IWRITE);
    if (descriptor < 0) {
        return nullptr;
    }
    std::FILE* file = _fdopen(descriptor, "w");
    if (file == nullptr) {  // no memory
        _close(descriptor);
        DeleteFileA(path);
        errno = ENOMEM;
    }
    return file;
}

PathKind KindOfPath(const char* path) {
    const DWORD attributes = GetFileAttributesA(path);
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return PathKind::Absent;
    }
    if (attributes & FILE_ATTRIBUTE_REPARSE_POINT) {
        return PathKind::Link;
    }
    return attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE) ? PathKind::Other : PathKind::OrdinaryFile;
}

bool MoveOver(const char* from, const char* to) {
    return MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING) != 0;
}

bool RemoveFile(const char* path) {
    return DeleteFileA(path) != 0;
}

void EndProcess(int code) {
    if (code == 0) {
        std::exit(0);
    }
    std::_Exit(code);
}

unsigned long ProcessNumber() {
    return GetCurrentProcessId();
}

long long SystemTime() {
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    return static_cast<long long>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
}

void PreferLargePages(void*, std::size_t) {}

std::uint64_t AvailableMemory() {
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof status;
    if (!GlobalMemoryStatusEx(&status)) {
        return UINT64_MAX;
    }
    return std::min({status.ullAvailPhys, status.ullAvailPageFile, status.ullAvailVirtual});
}
