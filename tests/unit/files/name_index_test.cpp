// SPDX-License-Identifier: MIT
// Names found by hash: the first of a name wins, case doesn't count, and a full set is found as a map finds it.
#include "files/name_index.h"
#include "ground/memory.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <string>

// A record with its name in the middle.
struct NamedRecord {
    int Before;
    char Name[7];
};

TEST(NameIndex, FirstOfANameWins) {
    static const NamedRecord records[] = {{0, "C"}, {0, "CT"}, {0, "c"}, {0, ""}, {0, "Ct"}};
    NameIndex index = {};
    PrepareNameIndex(index, records[0].Name, sizeof(NamedRecord), 5);
    EXPECT_EQ(FindName(index, "C"), -1);
    for (const int record : {2, 0, 4, 1}) {
        AddName(index, record);
    }
    EXPECT_EQ(FindName(index, "C"), 2);
    EXPECT_EQ(FindName(index, "c"), 2);
    EXPECT_EQ(FindName(index, "cT"), 4);
    EXPECT_EQ(FindName(index, "CTX"), -1);
    EXPECT_EQ(FindName(index, ""), -1);
    AddName(index, 3);
    EXPECT_EQ(FindName(index, ""), 3);
    FreeArray(index.Records);
    EXPECT_EQ(index.Records, nullptr);
}

TEST(NameIndex, NoNames) {
    static const NamedRecord record = {0, "C"};
    NameIndex index = {};
    PrepareNameIndex(index, record.Name, sizeof(NamedRecord), 0);
    EXPECT_EQ(FindName(index, "C"), -1);
    FreeArray(index.Records);
}

// Bytes of all kinds, each name about four times.
TEST(NameIndex, FindsWhatAMapFinds) {
    static constexpr int Count = 4000;
    static NamedRecord records[Count];
    NameIndex index = {};
    std::map<std::string, int> map;
    PrepareNameIndex(index, records[0].Name, sizeof(NamedRecord), Count);
    unsigned state = 7;
    for (int i = 0; i < Count; ++i) {
        state = state * 1664525u + 1013904223u;
        std::snprintf(records[i].Name, sizeof records[i].Name, "%c%x", static_cast<char>(0x80 | state >> 25),
                      (state >> 20) % 8);
        AddName(index, i);
        map.emplace(records[i].Name, i);
    }
    EXPECT_GT(map.size(), 900u);
    for (const auto& [name, record] : map) {
        EXPECT_EQ(FindName(index, name.c_str()), record);
        EXPECT_EQ(FindName(index, (name + "z").c_str()), -1);
    }
    FreeArray(index.Records);
}
