// SPDX-License-Identifier: MIT
// The memory that Linux can still give: what the machine has, and what the limits of the process's control groups leave
// of it. A batch system or a service manager sets such a limit on a group or on one above it, and the system kills a
// process that touches more.
#include "ground/memory_linux.h"

#include "ground/platform.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

static constexpr std::uint64_t NoLimit = std::uint64_t(1) << 60;  // the first version has such a number for none
static constexpr int LongestLine = 4096;  // of the lists; a longer line comes in parts, and none of them is a mount

// The files of a version of control groups. Hard and Soft are limits: beyond the hard one the system kills, beyond the
// soft one it lets the process crawl, so that both count.
struct GroupFiles {
    const char* Hard;          // bytes
    const char* Soft;          // bytes; "" where there is none
    const char* Use;           // bytes in use, with the copies of files that the system keeps in memory
    const char* InactiveFile;  // of memory.stat: copies of files that the system drops when memory runs short
    const char* ActiveFile;    // the same, of files that were used again
};

static constexpr GroupFiles FirstVersion = {"memory.limit_in_bytes", "", "memory.usage_in_bytes",
                                            "total_inactive_file ", "total_active_file "};
static constexpr GroupFiles SecondVersion = {"memory.max", "memory.high", "memory.current", "inactive_file ",
                                             "active_file "};

// The number in the first line of a file that begins with label; limitless where there is no such line or the text
// "max" stands for no limit.
static std::uint64_t NumberInFile(const char* path, const char* label) {
    std::uint64_t number = UINT64_MAX;
    std::FILE* file = std::fopen(path, "r");
    if (file == nullptr) {
        return number;
    }
    char line[256];
    while (std::fgets(line, sizeof line, file) != nullptr) {
        unsigned long long value;
        if (std::strncmp(line, label, std::strlen(label)) == 0) {
            if (std::sscanf(line + std::strlen(label), "%llu", &value) == 1) {
                number = value;
            }
            break;
        }
    }
    std::fclose(file);
    return number;
}

static std::uint64_t NumberOfGroup(const char* folder, const char* name, const char* label) {
    char path[2 * LongestLine];
    std::snprintf(path, sizeof path, "%s/%s", folder, name);
    return NumberInFile(path, label);
}

// What one group leaves of its limit. Copies of files count as free.
static std::uint64_t RestOfGroup(const char* folder, const GroupFiles& files) {
    const std::uint64_t hard = NumberOfGroup(folder, files.Hard, "");
    const std::uint64_t soft = files.Soft[0] != '\0' ? NumberOfGroup(folder, files.Soft, "") : UINT64_MAX;
    const std::uint64_t limit = std::min(hard, soft);
    const std::uint64_t use = limit < NoLimit ? NumberOfGroup(folder, files.Use, "") : UINT64_MAX;
    if (use == UINT64_MAX) {
        return UINT64_MAX;
    }
    std::uint64_t needed = use;
    for (const char* label : {files.InactiveFile, files.ActiveFile}) {
        const std::uint64_t copies = NumberOfGroup(folder, "memory.stat", label);
        needed -= copies != UINT64_MAX ? std::min(copies, needed) : 0;
    }
    return limit > needed ? limit - needed : 0;
}

// The smallest rest from a group up to the top of what is mounted. folder begins with the mount point, of length top.
static std::uint64_t RestOfLine(char* folder, std::size_t top, const GroupFiles& files) {
    std::uint64_t rest = RestOfGroup(folder, files);
    for (std::size_t end = std::strlen(folder); end > top; --end) {
        if (folder[end - 1] == '/') {
            folder[end - 1] = '\0';
            rest = std::min(rest, RestOfGroup(folder, files));
        }
    }
    return rest;
}

// True if a list with commas has the word.
static bool HasWord(const char* list, const char* word) {
    const std::size_t length = std::strlen(word);
    for (const char* part = list; part != nullptr; part = std::strchr(part, ',')) {
        part += *part == ',' ? 1 : 0;
        if (std::strncmp(part, word, length) == 0 && (part[length] == ',' || part[length] == '\0')) {
            return true;
        }
    }
    return false;
}

// The path of the process's group in the hierarchy of the first version that counts memory, or in the one of the second
// version; false if the process is in none.
static bool FindGroup(const char* groupList, bool second, char* group) {
    std::FILE* file = std::fopen(groupList, "r");
    if (file == nullptr) {
        return false;
    }
    bool found = false;
    char line[LongestLine];
    while (!found && std::fgets(line, sizeof line, file) != nullptr) {
        line[std::strcspn(line, "\n")] = '\0';
        char* controllers = std::strchr(line, ':');
        char* path = controllers != nullptr ? std::strchr(controllers + 1, ':') : nullptr;
        if (path != nullptr) {
            *path = '\0';
            found = second ? controllers[1] == '\0' : HasWord(controllers + 1, "memory");
            std::strcpy(group, path + 1);
        }
    }
    std::fclose(file);
    return found;
}

// The part of a group's path below the folder of the hierarchy that is mounted. A path that doesn't lie there is of
// another namespace: the mount point itself is the nearest group then.
static const char* BelowRoot(const char* group, const char* root) {
    const std::size_t length = std::strcmp(root, "/") == 0 ? 0 : std::strlen(root);
    const bool below = std::strncmp(group, root, length) == 0 && group[length] == '/' && group[length + 1] != '\0' &&
                       std::strncmp(group + length, "/..", 3) != 0;
    return below ? group + length : "";
}

// One line of the list of mounts: what it leaves if control groups with memory are mounted there.
static std::uint64_t RestOfMount(const char* mount, const char* groupList) {
    char root[LongestLine], point[LongestLine], type[LongestLine], options[LongestLine];
    const char* rest = std::strstr(mount, " - ");
    if (rest == nullptr || std::sscanf(mount, "%*s %*s %*s %s %s", root, point) != 2 ||
        std::sscanf(rest, " - %s %*s %s", type, options) != 2) {
        return UINT64_MAX;
    }
    const bool second = std::strcmp(type, "cgroup2") == 0;
    const bool first = std::strcmp(type, "cgroup") == 0 && HasWord(options, "memory");
    char group[LongestLine];
    if ((!first && !second) || !FindGroup(groupList, second, group)) {
        return UINT64_MAX;
    }
    char folder[2 * LongestLine];
    std::snprintf(folder, sizeof folder, "%s%s", point, BelowRoot(group, root));
    return RestOfLine(folder, std::strlen(point), second ? SecondVersion : FirstVersion);
}

std::uint64_t MemoryOfGroups(const char* groupList, const char* mountList) {
    std::uint64_t rest = UINT64_MAX;
    std::FILE* file = std::fopen(mountList, "r");
    if (file == nullptr) {
        return rest;
    }
    char line[LongestLine];
    while (std::fgets(line, sizeof line, file) != nullptr) {
        rest = std::min(rest, RestOfMount(line, groupList));
    }
    std::fclose(file);
    return rest;
}

std::uint64_t AvailableMemory() {
    std::uint64_t available = NumberInFile("/proc/meminfo", "MemAvailable:");
    if (available != UINT64_MAX) {
        available *= 1024;
    }
    return std::min(available, MemoryOfGroups("/proc/self/cgroup", "/proc/self/mountinfo"));
}
