// SPDX-License-Identifier: MIT
// The platform where there is no window system: a message queue in memory, one window that is only a name in it,
// signals that ask for what a close message asks, and paths whose backslashes become slashes as a file is opened.
#include "ground/platform_linux.h"

#include "ground/message_catalogue.h"
#include "ground/message_poll.h"
#include "ground/platform.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <initializer_list>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

struct PlatformWindow {
    bool Alive;  // created and not yet destroyed
};

struct PlatformMenu {
    int Entries;  // entries appended by the program; there is nobody to see them
};

static constexpr int QueueSize = 16;

// Posted messages in their order, filled by PostWindowMessage and emptied by TakeMessage.
static struct {
    PlatformMessage Messages[QueueSize];
    int First;        // index of the oldest
    int Count;        // messages held
    bool QuitPosted;  // QuitMessage comes once the others are gone
} Queue;

static PlatformWindow Window;
static WindowProc* Procedure = nullptr;  // of the window
static PlatformMenu Menu;
static constexpr int StopSignals[] = {SIGTERM, SIGINT, SIGHUP};
static volatile std::sig_atomic_t StopSignalled = 0;  // a signal asks for a close message
static volatile std::sig_atomic_t Stopping = 0;       // such a signal has come: nothing waits for a file any more

static void NoteStopSignal(int) {
    StopSignalled = 1;
    Stopping = 1;
}

void InstallStopSignals() {
    struct sigaction action = {};
    action.sa_handler = NoteStopSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : StopSignals) {
        struct sigaction inherited;
        const bool ignored = sigaction(signal, nullptr, &inherited) == 0 && inherited.sa_handler == SIG_IGN;
        if (signal == SIGTERM || !ignored) {  // nohup and a shell's background jobs ignore the other two
            sigaction(signal, &action, nullptr);
        }
    }
    std::signal(SIGXFSZ, SIG_IGN);  // a limit on the size of files is an error of writing, not the end of the process
    std::signal(SIGPIPE, SIG_IGN);  // and so is a FIFO that nobody reads any more
}

int StartSockets(int) {
    return 0;
}

int ReadRegistryWord(const char*, const char*, std::uint32_t*) {
    return 0;
}

int RegisterWindowClass(const char*, WindowProc* procedure) {
    Procedure = procedure;
    return 1;
}

unsigned RegisterFormat(const char*) {
    return 49152;
}

PlatformWindow* CreateMainWindow(const char*, const char*) {
    Window.Alive = true;
    return &Window;
}

PlatformMenu* GetWindowMenu(PlatformWindow*) {
    return &Menu;
}

void DeleteMenuEntry(PlatformMenu*, int) {}

void AppendMenuSeparator(PlatformMenu* menu) {
    ++menu->Entries;
}

void AppendMenuEntry(PlatformMenu* menu, unsigned, const char*) {
    ++menu->Entries;
}

void ShowWindowMinimised(PlatformWindow*) {}

void DestroyPlatformWindow(PlatformWindow* window) {
    if (window->Alive) {
        window->Alive = false;
        Procedure(window, DestroyMessage, 0, 0);
    }
}

void RunAboutDialog(PlatformWindow*) {}

std::intptr_t DefaultWindowProc(PlatformWindow* window, unsigned id, std::uintptr_t, std::intptr_t) {
    if (id == CloseMessage) {
        DestroyPlatformWindow(window);
    }
    return 0;
}

void PostWindowMessage(PlatformWindow* window, unsigned id) {
    if (Queue.Count < QueueSize) {
        Queue.Messages[(Queue.First + Queue.Count++) % QueueSize] = {window, id, 0, 0, {}};
    }
}

void PostQuit() {
    Queue.QuitPosted = true;
}

int TakeMessage(PlatformMessage* message) {
    if (StopSignalled) {
        StopSignalled = 0;
        *message = {&Window, CloseMessage, 0, 0, {}};
        return 1;
    }
    if (Queue.Count > 0) {
        *message = Queue.Messages[Queue.First];
        Queue.First = (Queue.First + 1) % QueueSize;
        --Queue.Count;
        return 1;
    }
    if (Queue.QuitPosted) {
        Queue.QuitPosted = false;
        *message = {nullptr, QuitMessage, 0, 0, {}};
        return 1;
    }
    return 0;
}

int WaitForMessage(PlatformMessage* message) {
    while (!TakeMessage(message)) {
        const std::timespec pause = {0, 20000000};
        nanosleep(&pause, nullptr);
    }
    return message->Id != QuitMessage;
}

void DispatchPlatformMessage(const PlatformMessage* message) {
    if (message->Window != nullptr && message->Window->Alive) {
        Procedure(message->Window, message->Id, message->WParameter, message->LParameter);
    }
}

void ReleaseMouseCapture() {}

int LoadCatalogueText(Message id, char* buffer, int limit) {
    const char* text = CatalogueText(id);
    if (text == nullptr) {
        return 0;
    }
    return std::snprintf(buffer, static_cast<std::size_t>(limit), "%s", text);
}

// UTF-8, and of it neither the control characters 128 to 159 nor what the standard rules out: longer forms than needed,
// surrogates, and codes beyond the last.
int LengthBeyondAscii(const char* text) {
    static constexpr unsigned SmallestCodes[] = {0xa0, 0x800, 0x10000};  // of two, three and four bytes
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0xc0 || first > 0xf7) {
        return 0;
    }
    const int length = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    unsigned code = first & (0x7fu >> length);
    for (int i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xc0) != 0x80) {
            return 0;
        }
        code = code << 6 | (next & 0x3f);
    }
    const bool surrogate = code >= 0xd800 && code <= 0xdfff;
    return code < SmallestCodes[length - 2] || surrogate || code > 0x10ffff ? 0 : length;
}

// A path with slashes; empty for one that is too long, which no file has.
struct TranslatedPath {
    char Text[PATH_MAX];
};

static TranslatedPath Translated(const char* path) {
    TranslatedPath result;
    const std::size_t length = std::strlen(path);
    if (length >= sizeof result.Text) {
        result.Text[0] = '\0';
        return result;
    }
    for (std::size_t i = 0; i <= length; ++i) {
        result.Text[i] = path[i] == '\\' ? '/' : path[i];
    }
    return result;
}

// Waits until a file is ready, or for a time that isn't null; false once a stop was signalled. The signals are held
// back between the look at the flag and the wait, so that none is missed.
static bool WaitForFile(int file, short events, const std::timespec* time) {
    sigset_t stops;
    sigset_t before;
    sigemptyset(&stops);
    for (const int signal : StopSignals) {
        sigaddset(&stops, signal);
    }
    sigprocmask(SIG_BLOCK, &stops, &before);
    if (!Stopping) {
        pollfd wait = {file, events, 0};
        ppoll(&wait, 1, time, &before);
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return !Stopping;
}

// The streams of OpenFile. Their descriptors don't block, so that a wait can be ended by a stop: the C library's own
// streams would read on after a signal, or miss one that comes just before they wait. A stream is made before its file
// is opened: without memory for it no file is created or emptied.
struct OpenStream {
    bool Taken;
    int File;  // descriptor; -1 until the file is open
};

static OpenStream OpenStreams[64];  // a run has two or three at a time, nested runs theirs beside them

static int DescriptorOf(void* cookie) {
    return static_cast<OpenStream*>(cookie)->File;
}

static bool MustWait() {
    return errno == EAGAIN || errno == EINTR;
}

static ssize_t ReadDescriptor(void* cookie, char* buffer, std::size_t size) {
    ssize_t length = read(DescriptorOf(cookie), buffer, size);
    while (length < 0 && MustWait()) {
        if (!WaitForFile(DescriptorOf(cookie), POLLIN, nullptr)) {
            errno = EINTR;
            return -1;
        }
        length = read(DescriptorOf(cookie), buffer, size);
    }
    return length;
}

static ssize_t WriteDescriptor(void* cookie, const char* buffer, std::size_t size) {
    std::size_t written = 0;
    while (written < size) {
        const ssize_t length = write(DescriptorOf(cookie), buffer + written, size - written);
        if (length >= 0) {
            written += static_cast<std::size_t>(length);
        } else if (!MustWait() || !WaitForFile(DescriptorOf(cookie), POLLOUT, nullptr)) {
            break;
        }
    }
    return static_cast<ssize_t>(written);
}

static int CloseDescriptor(void* cookie) {
    OpenStream* stream = static_cast<OpenStream*>(cookie);
    stream->Taken = false;
    return stream->File < 0 ? 0 : close(stream->File);
}

static OpenStream* TakeStream() {
    for (OpenStream& stream : OpenStreams) {
        if (!stream.Taken) {
            stream = {true, -1};
            return &stream;
        }
    }
    errno = EMFILE;
    return nullptr;
}

static constexpr mode_t NewFileMode = 0666;  // less what the umask takes

static int FlagsOfMode(const char* mode) {
    if (mode[0] == 'r') {
        return std::strchr(mode, '+') != nullptr ? O_RDWR : O_RDONLY;
    }
    return O_WRONLY | O_CREAT | (mode[0] == 'a' ? O_APPEND : O_TRUNC);
}

// Opens a FIFO as soon as its other end is there; -1 on failure, and then stopped says whether a stop is why.
static int OpenFifo(const char* path, int flags, bool* stopped) {
    static constexpr std::timespec Pause = {0, 20000000};
    flags &= ~(O_CREAT | O_TRUNC);  // it is there
    int file = open(path, flags);
    while (file < 0 && errno == ENXIO) {  // nobody reads it yet
        if (!WaitForFile(-1, 0, &Pause)) {
            *stopped = true;
            return -1;
        }
        file = open(path, flags);
    }
    if (file >= 0 && (flags & O_ACCMODE) == O_RDONLY && !WaitForFile(file, POLLIN, nullptr)) {
        *stopped = true;
        close(file);
        return -1;
    }
    return file;
}

std::FILE* OpenFile(const char* path, const char* mode) {
    const TranslatedPath translated = Translated(path);
    struct stat status = {};
    if (stat(translated.Text, &status) == 0 && S_ISDIR(status.st_mode)) {
        errno = EISDIR;
        return nullptr;
    }
    OpenStream* stream = TakeStream();
    if (stream == nullptr) {
        return nullptr;
    }
    std::FILE* file = fopencookie(stream, mode, {ReadDescriptor, WriteDescriptor, nullptr, CloseDescriptor});
    if (file == nullptr) {
        stream->Taken = false;
        return nullptr;
    }
    const int flags = FlagsOfMode(mode) | O_NONBLOCK;
    bool stopped = false;
    stream->File = S_ISFIFO(status.st_mode) ? OpenFifo(translated.Text, flags, &stopped)
                                            : open(translated.Text, flags, NewFileMode);
    if (stream->File >= 0) {
        return file;
    }
    const int reason = errno;
    std::fclose(file);
    if (stopped) {
        YieldAllMessages();  // the run goes no further
    }
    errno = reason;
    return nullptr;
}

std::FILE* CreateNewFile(const char* path) {
    const TranslatedPath translated = Translated(path);
    const int descriptor = open(translated.Text, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, NewFileMode);
    if (descriptor < 0) {
        return nullptr;
    }
    std::FILE* file = fdopen(descriptor, "w");
    if (file == nullptr) {  // no memory
        const int reason = errno;
        close(descriptor);
        unlink(translated.Text);
        errno = reason;
    }
    return file;
}

PathKind KindOfPath(const char* path) {
    struct stat status;
    if (lstat(Translated(path).Text, &status) != 0) {
        return PathKind::Absent;
    }
    if (S_ISLNK(status.st_mode)) {
        return PathKind::Link;
    }
    return S_ISREG(status.st_mode) ? PathKind::OrdinaryFile : PathKind::Other;
}

bool MoveOver(const char* from, const char* to) {
    return std::rename(Translated(from).Text, Translated(to).Text) == 0;
}

bool RemoveFile(const char* path) {
    return unlink(Translated(path).Text) == 0;
}

void EndProcess(int code) {
    if (code == 0) {
        std::exit(0);
    }
    std::_Exit(code);
}

unsigned long ProcessNumber() {
    return static_cast<unsigned long>(getpid());
}

long long SystemTime() {
    std::timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return 1000000000LL * now.tv_sec + now.tv_nsec;
}

// The whole pages of the block: a part of them would split its mapping, and then it couldn't grow without a copy.
void PreferLargePages(void* block, std::size_t bytes) {
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<std::uintptr_t>(block) / page * page;
    const auto end = (reinterpret_cast<std::uintptr_t>(block) + bytes + page - 1) / page * page;
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);  // a wish: a refusal harms nothing
}
