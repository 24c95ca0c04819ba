// SPDX-License-Identifier: MIT
// Large blocks of memory lie on large pages where the system has them, also after they have grown.
#include "ground/memory.h"
#include "ground/touched_pages.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#if defined(__SANITIZE_ADDRESS__)
static constexpr bool Sanitized = true;  // brings its own allocator
#else
static constexpr bool Sanitized = false;
#endif

static constexpr long long Large = 80LL << 20;
static constexpr long long Larger = 200LL << 20;
static constexpr long long Small = 40LL << 20;

// The line of that beginning about the mapping that holds the whole block, from the system's list; "" where no single
// mapping does.
static std::string MappingLine(const void* block, long long bytes, const char* beginning) {
    const auto first = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t last = first + static_cast<std::uintptr_t>(bytes) - 1;
    std::ifstream list("/proc/self/smaps");
    bool inside = false;
    for (std::string line; std::getline(list, line);) {
        std::istringstream words(line);
        std::uintptr_t begin = 0, end = 0;
        char dash = 0;
        if (words >> std::hex >> begin >> dash >> end && dash == '-') {
            inside = begin <= first && last < end;
        } else if (inside && line.rfind(beginning, 0) == 0) {
            return line;
        }
    }
    return "";
}

// With a blank behind the last flag too.
static std::string MappingFlags(const void* block, long long bytes) {
    return MappingLine(block, bytes, "VmFlags:") + " ";
}

static bool AsksForLargePages(const void* block, long long bytes) {
    return MappingFlags(block, bytes).find(" hg ") != std::string::npos;
}

class LargePages : public testing::Test {
protected:
    void SetUp() override {
        if (Sanitized || !std::ifstream("/sys/kernel/mm/transparent_hugepage/enabled")) {
            GTEST_SKIP() << "no large pages here, or an allocator that hides them";
        }
    }
};

TEST_F(LargePages, AreAskedForBehindLargeBlocks) {
    char* block = nullptr;
    ASSERT_TRUE(AllocateArray(block, Large));
    EXPECT_TRUE(AsksForLargePages(block, Large));
    FreeArray(block);
    ASSERT_TRUE(AllocateZeroed(block, Large));
    EXPECT_TRUE(AsksForLargePages(block, Large));
    FreeArray(block);
}

TEST_F(LargePages, AreNotAskedForBehindSmallerOnes) {
    char* block = nullptr;
    ASSERT_TRUE(AllocateArray(block, Small));
    EXPECT_NE(MappingFlags(block, Small), "");
    EXPECT_FALSE(AsksForLargePages(block, Small));
    FreeArray(block);
}

// One mapping before and after: a split one couldn't grow without a copy, and would need both blocks at once.
TEST_F(LargePages, StayBehindAGrowingBlock) {
    char* block = nullptr;
    ASSERT_TRUE(AllocateArray(block, Large));
    block[0] = 'a';
    block[Large - 1] = 'z';
    ASSERT_NE(MappingFlags(block, Large), "");
    ASSERT_TRUE(GrowArray(block, Larger));
    EXPECT_EQ(block[0], 'a');
    EXPECT_EQ(block[Large - 1], 'z');
    EXPECT_TRUE(AsksForLargePages(block, Larger));
    FreeArray(block);
}

// A group of arrays that one function hands over.
struct TwoArrays {
    double* Numbers = nullptr;
    int* Places = nullptr;
    long long NumberCount = 3;
    long long PlaceCount = 5;

    template <class Visitor> void Visit(Visitor& visit) {
        visit(Numbers, NumberCount);
        visit(Places, PlaceCount);
    }

    ~TwoArrays() {
        FreeArray(Numbers);
        FreeArray(Places);
    }
};

TEST(GroupOfArrays, SumCountsRecordsBySize) {
    TwoArrays arrays;
    arrays.NumberCount = 1LL << 60;
    ArraySum sum;
    arrays.Visit(sum);
    EXPECT_EQ(sum.Bytes, 8.0 * static_cast<double>(1LL << 60) + 20.0);
}

TEST(GroupOfArrays, AllocatorLeavesNothingBehindAFailure) {
    TwoArrays arrays;
    ArrayAllocator first;
    arrays.Visit(first);
    EXPECT_TRUE(first.Complete);
    ASSERT_NE(arrays.Places, nullptr);
    arrays.NumberCount = 1LL << 50;
    ArrayAllocator second;
    arrays.Visit(second);
    EXPECT_FALSE(second.Complete);
    EXPECT_EQ(arrays.Numbers, nullptr);
    EXPECT_EQ(arrays.Places, nullptr);
}

// Bytes of the block's mapping that lie in memory, by the system's account.
static long long ResidentBytes(const void* block) {
    long long kilobytes = 0;
    std::sscanf(MappingLine(block, 1, "Rss:").c_str(), "Rss: %lld", &kilobytes);
    return kilobytes * 1024;
}

TEST(TouchedPages, CountAsTaken) {
    if (Sanitized) {
        GTEST_SKIP() << "an allocator that touches pages itself";
    }
    char* block = nullptr;
    ASSERT_TRUE(AllocateArray(block, Small));
    EXPECT_LT(ResidentBytes(block), Small / 2);
    ArrayToucher toucher;
    toucher(block, Small);
    EXPECT_GE(ResidentBytes(block), Small);
    FreeArray(block);
}

// A stage's own work, and a field of the run.
static struct {
    double* Numbers;
    int* Places;
} Stage;

TEST(NotedArrays, AreFreedByRecord) {
    ResetRun();
    ASSERT_TRUE(AllocateArray(Stage.Numbers, 3));
    ASSERT_TRUE(AllocateZeroed(Stage.Places, 5));
    ASSERT_TRUE(GrowArray(::Run.Lines.SpectrumLines, 2));
    EXPECT_EQ(Stage.Places[4], 0);
    FreeArraysOf(Stage);
    EXPECT_EQ(Stage.Numbers, nullptr);
    EXPECT_EQ(Stage.Places, nullptr);
    EXPECT_NE(::Run.Lines.SpectrumLines, nullptr);
    FreeNotedArrays();
    EXPECT_EQ(::Run.Lines.SpectrumLines, nullptr);
}

// What is freed by hand is no longer noted: its place may be anything afterwards.
TEST(NotedArrays, AreForgottenOnceFreed) {
    ResetRun();
    ASSERT_TRUE(AllocateArray(Stage.Numbers, 3));
    FreeArray(Stage.Numbers);
    double elsewhere = 1.0;
    Stage.Numbers = &elsewhere;
    FreeNotedArrays();
    EXPECT_EQ(Stage.Numbers, &elsewhere);
    Stage.Numbers = nullptr;
}

TEST(NotedArrays, ReplaceTheArrayBefore) {
    ResetRun();
    ASSERT_TRUE(AllocateArray(Stage.Numbers, 3));
    EXPECT_FALSE(AllocateArray(Stage.Numbers, 1LL << 50));
    EXPECT_EQ(Stage.Numbers, nullptr);
    ASSERT_TRUE(AllocateArray(Stage.Numbers, 3));
    const double* before = Stage.Numbers;
    EXPECT_FALSE(GrowArray(Stage.Numbers, 1LL << 50));
    EXPECT_EQ(Stage.Numbers, before);
    FreeNotedArrays();
}

// The array goes with its note: what frees its old record leaves it, what frees its new one doesn't.
TEST(NotedArrays, MoveToAnotherOwner) {
    ResetRun();
    static double* owner;
    ASSERT_TRUE(AllocateArray(Stage.Numbers, 3));
    ASSERT_TRUE(AllocateArray(owner, 1));
    Stage.Numbers[2] = 5.0;
    MoveArray(Stage.Numbers, owner);
    EXPECT_EQ(Stage.Numbers, nullptr);
    FreeArraysOf(Stage);
    EXPECT_EQ(owner[2], 5.0);
    FreeNotedArrays();
    EXPECT_EQ(owner, nullptr);
}

TEST(NotedArrays, TooManyAreRefused) {
    ResetRun();
    static char* places[300];
    int taken = 0;
    while (taken < 300 && AllocateArray(places[taken], 1)) {
        ++taken;
    }
    EXPECT_GE(taken, 200);
    EXPECT_LT(taken, 300);
    FreeArraysOf(places);
    EXPECT_EQ(places[0], nullptr);
    EXPECT_TRUE(AllocateArray(places[299], 1));
    FreeNotedArrays();
}
