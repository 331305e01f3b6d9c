#include "Common/src/VormArray.h"

#include "agent/Vorl.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/framework/Imports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace
{
// What was given back to the allocators, in order. It is given back in truth as well.
std::vector<const void*> g_freedBlocks;
std::vector<const void*> g_freedStrings;
decltype(&CoTaskMemFree) g_freeBlock;
decltype(&SysFreeString) g_freeString;

void WINAPI FreeBlock(void* block)
{
    g_freedBlocks.push_back(block);
    g_freeBlock(block);
}
void WINAPI FreeString(BSTR text)
{
    g_freedStrings.push_back(text);
    g_freeString(text);
}

class VormArrayTest : public testing::Test
{
  protected:
    VormArrayTest()
    {
        g_freedBlocks.clear();
        g_freedStrings.clear();
        g_freeBlock = m_blocks.Real();
        g_freeString = m_strings.Real();
    }

    // What an agent returns; the block is the receiver's.
    template <class T>
    static void Enumerate(ULONG* count, T** items, std::initializer_list<T> values)
    {
        *items = static_cast<T*>(CoTaskMemAlloc(sizeof(T) * values.size()));
        *count = static_cast<ULONG>(values.size());
        std::copy(values.begin(), values.end(), *items);
    }

    CImportHook<decltype(&CoTaskMemFree)> m_blocks{__imp_CoTaskMemFree, &FreeBlock};
    CImportHook<decltype(&SysFreeString)> m_strings{__imp_SysFreeString, &FreeString};
};

TEST_F(VormArrayTest, StringsAreFreedWithTheirBlock)
{
    const BSTR a = SysAllocString(L"a");
    const BSTR b = SysAllocString(L"b");
    VormArray<BSTR> list;
    Enumerate(&list.count, &list.items, {a, static_cast<BSTR>(nullptr), b});
    const void* const block = list.items;
    const CTraceCapture trace;
    VormDeleteData(list);
    EXPECT_THAT(g_freedStrings, ElementsAre(a, nullptr, b));
    EXPECT_THAT(g_freedBlocks, ElementsAre(block));
    EXPECT_EQ(nullptr, list.items);
    EXPECT_EQ(0u, list.count);
    EXPECT_THAT(trace.Lines(),
                ElementsAre(" { --> VormDeleteData for BSTR", " } <-- VormDeleteData for BSTR"));
}

TEST_F(VormArrayTest, RecordsAreFreedAsOneBlock)
{
    VormArray<VormTestDescriptor> list;
    Enumerate(&list.count, &list.items, {VormTestDescriptor{1, 2, 3}, VormTestDescriptor{4, 5, 6}});
    const void* const block = list.items;
    const CTraceCapture trace;
    VormDeleteData(list);
    EXPECT_THAT(g_freedBlocks, ElementsAre(block));
    EXPECT_TRUE(g_freedStrings.empty());
    EXPECT_EQ(nullptr, list.items);
    EXPECT_EQ(0u, list.count);
    EXPECT_THAT(trace.Lines(), ElementsAre(" { --> VormDeleteData for VormArray<T>",
                                           " } <-- VormDeleteData for VormArray<T>"));
}

TEST_F(VormArrayTest, AListThatWasNeverReturnedHasNoElements)
{
    VormArray<BSTR> list;
    list.count = 7; // left behind by an agent that failed half way
    VormDeleteData(list);
    EXPECT_TRUE(g_freedStrings.empty());
    EXPECT_EQ(0u, list.count);
}

TEST_F(VormArrayTest, TheLastHolderFreesTheList)
{
    const void* block = nullptr;
    {
        CVormArray<VormTestDescriptor> first;
        EXPECT_EQ(1, first.Holders());
        EXPECT_TRUE(first.View().empty());
        Enumerate(first.PutCount(), first.PutItems(), {VormTestDescriptor{9, 2, 3}});
        block = first.Items();
        {
            const std::vector others(1, first);
            EXPECT_EQ(2, first.Holders());
            EXPECT_EQ(first.Items(), others[0].Items());
        }
        EXPECT_EQ(1, first.Holders());
        ASSERT_EQ(1u, first.Count());
        EXPECT_EQ(9u, first.View()[0].TestID);
        EXPECT_TRUE(g_freedBlocks.empty());
    }
    EXPECT_THAT(g_freedBlocks, ElementsAre(block));
}

TEST_F(VormArrayTest, RoomForStringsStartsEmpty)
{
    const BSTR key = SysAllocString(L"key");
    {
        CVormArray<BSTR> keys;
        ASSERT_EQ(S_OK, keys.Allocate(2));
        EXPECT_EQ(2u, keys.Count());
        EXPECT_EQ(nullptr, keys.Items()[0]);
        keys.Items()[1] = key;
    }
    EXPECT_THAT(g_freedStrings, ElementsAre(nullptr, key));
}

TEST_F(VormArrayTest, RoomForNothingIsAnEmptyList)
{
    CVormArray<BSTR> keys;
    ASSERT_EQ(S_OK, keys.Allocate(0));
    EXPECT_NE(nullptr, keys.Items());
    EXPECT_TRUE(keys.View().empty());
}

TEST(VormRecords, HaveTheLayoutThatAgentsUse)
{
    EXPECT_EQ(12u, sizeof(VormTestDescriptor));
    EXPECT_EQ(36u, sizeof(VormTestStatistics));
    EXPECT_EQ(32u, offsetof(VormTestStatistics, Word));
    EXPECT_EQ(34u, offsetof(VormTestStatistics, ByteA));
    EXPECT_EQ(35u, offsetof(VormTestStatistics, ByteB));
}
} // namespace
