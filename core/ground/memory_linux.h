// SPDX-License-Identifier: MIT
// What control groups leave of the memory of the machine, as AvailableMemory asks for it.
#pragma once

#include <cstdint>

// The smallest rest of all groups that the process is in, up to the root of each hierarchy, in bytes; UINT64_MAX
// without any limit. The files are /proc/self/cgroup and /proc/self/mountinfo, or such of a test.
std::uint64_t MemoryOfGroups(const char* groupList, const char* mountList);
