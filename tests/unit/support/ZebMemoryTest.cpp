// Texts for which memory runs out. A program of its own, because it replaces operator new.
#include "CDM/src/ZebImpResourceMgr.h"
#include "CDM/src/ZebString.h"
#include "tests/support/Allocations.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TraceCapture.h"

#include <gtest/gtest.h>

namespace
{
constexpr LCID kEnglish = 0x409;

// Calls `load` until none of its allocations fails, and says how many did. Each leaves its one line.
template <class Load>
int EveryAllocationOf(const std::string& line, Load&& load)
{
    for (int n = 1;; ++n)
    {
        const CTraceCapture trace;
        bool failed = false;
        {
            const CFailingAllocation failing(n);
            load();
            failed = CFailingAllocation::Failed();
        }
        EXPECT_EQ(failed ? 1u : 0u, trace.Count("Out of memory")) << n;
        EXPECT_EQ(failed ? 1u : 0u, trace.Count(line)) << n;
        if (!failed)
            return n - 1;
    }
}

TEST(StringMemory, ATextThatMemoryRunsOutForIsEmptyAndAnError)
{
    HMODULE library = LoadLibraryA("TestStrings.dll");
    ASSERT_NE(nullptr, library);
    for (const LCID locale : {kEnglish, LCID(0x0800)})
    {
        std::string text;
        EXPECT_LE(1, EveryAllocationOf("CDM/src/ZebString (",
                                       [&] { text = LoadZebString(library, 2001, locale); }));
        EXPECT_EQ(3000u, text.size());
        const CFailingAllocation failing(1);
        EXPECT_TRUE(LoadZebString(library, 2001, locale).empty());
    }
    FreeLibrary(library);
}

TEST(StringMemory, ALibraryThatMemoryRunsOutForIsNone)
{
    const CRegistryScope registry;
    CZebImpResourceMgr manager;
    HMODULE library = nullptr;
    EXPECT_LE(1, EveryAllocationOf(
                     "Out of memory",
                     [&] { EXPECT_EQ(S_OK, manager.LoadResourceDll(kEnglish, "_NWR", false, &library)); }));
    EXPECT_NE(nullptr, library);
}
} // namespace
