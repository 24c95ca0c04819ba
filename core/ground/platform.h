// SPDX-License-Identifier: MIT
// The narrow interface to the platform: a message queue, one window with its system menu, one registry value, the
// string resources, files by path, memory. platform_linux.cpp and the Windows build each implement it; everything
// above it is common to both.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

enum class Message : int;  // of the catalogue, see ground/message_catalogue.h
struct PlatformWindow;
struct PlatformMenu;

// Window messages that the program handles, by their numbers on the wire.
inline constexpr unsigned DestroyMessage = 2;
inline constexpr unsigned CloseMessage = 16;
inline constexpr unsigned QuitMessage = 18;
inline constexpr unsigned QueryOpenMessage = 19;
inline constexpr unsigned SystemCommandMessage = 274;
inline constexpr unsigned StartMessage = 1024;
inline constexpr unsigned ExternalEventMessage = 1125;

// A message as the queue hands it out.
struct PlatformMessage {
    PlatformWindow* Window;     // addressee, or null
    unsigned Id;                // one of the numbers above, or any other
    std::uintptr_t WParameter;  // first parameter
    std::intptr_t LParameter;   // second parameter
    std::uint64_t Native[8];    // the platform's own record, for dispatching
};

// Starts the sockets library in the given version (257 is 1.1); non-zero on failure.
int StartSockets(int version);

// Reads a four-byte value under the current user's key keyName ("" is the root); 1 if it was read.
int ReadRegistryWord(const char* keyName, const char* valueName, std::uint32_t* value);

// What handles the messages of a window.
using WindowProc = std::intptr_t(PlatformWindow* window, unsigned id, std::uintptr_t wParameter,
                                 std::intptr_t lParameter);

// Registers the window class with its procedure and the icon resource "BackendIcon"; 0 on failure.
int RegisterWindowClass(const char* className, WindowProc* procedure);

// Registers a clipboard format; its id, or 0.
unsigned RegisterFormat(const char* name);

// Creates the overlapped main window, or null.
PlatformWindow* CreateMainWindow(const char* className, const char* title);

// System menu of a window, or null; deletion by position and appending never report anything.
PlatformMenu* GetWindowMenu(PlatformWindow* window);
void DeleteMenuEntry(PlatformMenu* menu, int position);
void AppendMenuSeparator(PlatformMenu* menu);
void AppendMenuEntry(PlatformMenu* menu, unsigned command, const char* text);

// Shows the window minimised and not activated, and updates it.
void ShowWindowMinimised(PlatformWindow* window);

// Destroys a window; its procedure gets DestroyMessage within the call.
void DestroyPlatformWindow(PlatformWindow* window);

// Runs the About box over its owner until it is closed.
void RunAboutDialog(PlatformWindow* owner);

// Default handling of a message; for CloseMessage that is DestroyPlatformWindow.
std::intptr_t DefaultWindowProc(PlatformWindow* window, unsigned id, std::uintptr_t wParameter,
                                std::intptr_t lParameter);

// Puts a message without parameters into the queue.
void PostWindowMessage(PlatformWindow* window, unsigned id);

// Makes the queue hand out QuitMessage after the messages that it holds.
void PostQuit();

// Waits for the next message and removes it; 0 when it is QuitMessage.
int WaitForMessage(PlatformMessage* message);

// Removes the next message if there is one, QuitMessage included; 0 if there is none.
int TakeMessage(PlatformMessage* message);

// Translates a message and hands it to the procedure of its window.
void DispatchPlatformMessage(const PlatformMessage* message);

// Gives back a captured mouse, where there is one.
void ReleaseMouseCapture();

// Copies at most limit - 1 characters of a catalogue text; the length, 0 for a message without text.
int LoadCatalogueText(Message id, char* buffer, int limit);

// Bytes of the printable character beyond ASCII that a text begins with, in the encoding of the system's paths and
// texts; 0 if it begins with none.
int LengthBeyondAscii(const char* text);

// Opens a file by a path with backslashes; null, with the reason in errno, on failure, and for a directory. Where the
// system lets a file wait for its other end, as a FIFO does, a stop unwinds the run from an opening that waits, and is
// an error of reading or writing afterwards.
std::FILE* OpenFile(const char* path, const char* mode);

// Creates a file for writing; null, with the reason in errno, on failure. What stands there, a link too, is neither
// followed nor changed: the reason is EEXIST.
std::FILE* CreateNewFile(const char* path);

// What stands at a path with backslashes.
enum class PathKind { Absent, OrdinaryFile, Link, Other };
PathKind KindOfPath(const char* path);

// Moves a file to another path of its directory, over a file that stands there; false on failure.
bool MoveOver(const char* from, const char* to);

// Removes a file; false on failure.
bool RemoveFile(const char* path);

// Ends the process: the regular way out, by code 0, closes what is open, any other code ends it at once.
[[noreturn]] void EndProcess(int code);

// Number of this process in the system, which containers share, and the time in the platform's smallest units.
unsigned long ProcessNumber();
long long SystemTime();

// Asks for large pages behind a block of memory, where the system has them: they are given back in a fraction of the
// time.
void PreferLargePages(void* block, std::size_t bytes);

// Bytes of memory that the machine can still give to this process.
std::uint64_t AvailableMemory();
