// SPDX-License-Identifier: MIT
// What control groups leave, from lists and group folders made here: both versions, groups above, other namespaces.
#include "ground/memory_linux.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <filesystem>

class ControlGroups : public testing::Test {
    TemporaryDirectory Directory;

protected:
    std::string Point = Work() + "/groups";  // where the hierarchy is mounted

    // Writes the lists of groups and mounts; the mount stands between others, one of them longer than any buffer.
    void Mount(const std::string& groups, const std::string& root, const std::string& typeAndOptions) {
        WriteText(Work() + "/cgroup", groups);
        const std::string before = "22 1 0:20 / /proc rw - proc proc rw\n23 1 0:21 / /long rw - overlay o ";
        WriteText(Work() + "/mountinfo", before + std::string(9000, 'x') + "\n24 1 0:22 " + root + " " + Point +
                                             " rw,relatime shared:9 - " + typeAndOptions +
                                             "\n25 1 0:23 / / rw - a b c\n");
    }

    void Write(const std::string& group, const std::string& file, const std::string& text) {
        std::filesystem::create_directories(Point + group);
        WriteText(Point + group + "/" + file, text + "\n");
    }

    std::uint64_t Rest() { return MemoryOfGroups((Work() + "/cgroup").c_str(), (Work() + "/mountinfo").c_str()); }

    const std::string& Work() const { return Directory.Path; }
};

static const std::string Second = "cgroup2 cgroup2 rw,nsdelegate";
static const std::string First = "cgroup cgroup rw,cpu,memory";

TEST_F(ControlGroups, LimitOfTheOwnGroupCountsLessItsUse) {
    Mount("0::/batch/job\n", "/", Second);
    Write("/batch/job", "memory.max", "1000000");
    Write("/batch/job", "memory.current", "400000");
    EXPECT_EQ(Rest(), 600000u);
}

TEST_F(ControlGroups, EveryGroupAboveCounts) {
    Mount("0::/batch/user/job\n", "/", Second);
    Write("/batch/user/job", "memory.max", "1000000");
    Write("/batch/user/job", "memory.current", "400000");
    Write("/batch/user", "memory.max", "max");
    Write("/batch/user", "memory.current", "800000");
    Write("/batch", "memory.max", "1100000");
    Write("/batch", "memory.current", "900000");
    EXPECT_EQ(Rest(), 200000u);
    Write("", "memory.max", "1500000");
    Write("", "memory.current", "1400000");
    EXPECT_EQ(Rest(), 100000u);
}

TEST_F(ControlGroups, SoftLimitCountsToo) {
    Mount("0::/job\n", "/", Second);
    Write("/job", "memory.max", "max");
    Write("/job", "memory.high", "700000");
    Write("/job", "memory.current", "400000");
    EXPECT_EQ(Rest(), 300000u);
}

TEST_F(ControlGroups, CopiesOfFilesCountAsFree) {
    Mount("0::/job\n", "/", Second);
    Write("/job", "memory.max", "1000000");
    Write("/job", "memory.current", "990000");
    Write("/job", "memory.stat", "anon 100000\nfile 800000\ninactive_file 500000\nactive_file 200000");
    EXPECT_EQ(Rest(), 710000u);
}

TEST_F(ControlGroups, FirstVersionCountsGroupsBelowInItsTotals) {
    Mount("5:cpu,memory:/batch/job\n4:memoryless:/other\n0::/\n", "/", First);
    Write("/batch/job", "memory.limit_in_bytes", "1000000");
    Write("/batch/job", "memory.usage_in_bytes", "990000");
    Write("/batch/job", "memory.stat",
          "inactive_file 1\nactive_file 2\ntotal_inactive_file 500000\ntotal_active_file 0");
    Write("/batch", "memory.limit_in_bytes", "9223372036854771712");
    Write("/batch", "memory.usage_in_bytes", "990000");
    EXPECT_EQ(Rest(), 510000u);
    Write("/batch", "memory.limit_in_bytes", "1000000");
    EXPECT_EQ(Rest(), 10000u);
}

TEST_F(ControlGroups, MountOfAContainerShowsItsOwnFolder) {
    Mount("5:memory:/box/1234/job\n", "/box/1234", First);
    Write("/job", "memory.limit_in_bytes", "1000000");
    Write("/job", "memory.usage_in_bytes", "100000");
    EXPECT_EQ(Rest(), 900000u);
    Mount("5:memory:/box/1234\n", "/box/1234", First);
    Write("", "memory.limit_in_bytes", "800000");
    Write("", "memory.usage_in_bytes", "100000");
    EXPECT_EQ(Rest(), 700000u);
}

TEST_F(ControlGroups, GroupOutsideTheMountFallsBackOnTheMountPoint) {
    Write("", "memory.max", "800000");
    Write("", "memory.current", "100000");
    for (const char* group : {"0::/../other\n", "0::/elsewhere\n", "0::/box/12345\n"}) {
        Mount(group, "/box/1234", Second);
        EXPECT_EQ(Rest(), 700000u) << group;
    }
    Mount("0::/../other\n", "/", Second);
    EXPECT_EQ(Rest(), 700000u);
}

TEST_F(ControlGroups, UseBeyondTheLimitLeavesNothing) {
    Mount("0::/job\n", "/", Second);
    Write("/job", "memory.max", "1000000");
    Write("/job", "memory.current", "1000001");
    EXPECT_EQ(Rest(), 0u);
}

TEST_F(ControlGroups, NoLimitIsKnownWithoutGroupsOrMounts) {
    EXPECT_EQ(Rest(), UINT64_MAX);
    Mount("5:cpu:/job\n", "/", "cgroup cgroup rw,cpu");
    Write("/job", "memory.limit_in_bytes", "1000");
    Write("/job", "memory.usage_in_bytes", "100");
    EXPECT_EQ(Rest(), UINT64_MAX);
    Mount("0::/job\n", "/", Second);
    EXPECT_EQ(Rest(), UINT64_MAX);
}
