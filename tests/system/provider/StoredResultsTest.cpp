// Results of every state that a run can leave behind, before and after the provider ended and started again.
#include "tests/system/provider/EndedProvider.h"

namespace
{
TEST_F(EndedProvider, ShowedAResultOfEveryState)
{
    const CServedResults& before = Story().Before;
    EXPECT_EQ(Expected().size(), before.Properties.size());
    EXPECT_EQ(Expected().size(), before.Console.size());
    for (const ExpectedResult& expected : Expected())
    {
        ASSERT_EQ(1u, before.Properties.count(expected.key)) << expected.key;
        EXPECT_EQ(expected.state, before.Properties.at(expected.key).at(L"TestState")) << expected.key;
        EXPECT_EQ(expected.lines, before.Lines.at(expected.key)) << expected.key;
    }
}

TEST_F(EndedProvider, ResultsOutliveItForEveryProperty)
{
    const CResultTexts& before = Story().Before.Properties;
    const CResultTexts& after = Story().After.Properties;
    EXPECT_EQ(before.size(), after.size());
    for (const auto& [key, properties] : before)
    {
        ASSERT_EQ(1u, after.count(key)) << key;
        for (const auto& [name, value] : properties)
            EXPECT_EQ(value, after.at(key).at(name)) << key << L" " << name;
    }
}

TEST_F(EndedProvider, ResultsOutliveItForConsoles)
{
    EXPECT_TRUE(Story().Stored);
    EXPECT_EQ(Story().Before.Console, Story().After.Console);
}

// Needs an end of its own.
TEST_F(EndedProvider, ClearedResultsStayGoneInTheNext)
{
    Zebdiag(L"run --adapter ALPHA --test 1");
    EXPECT_FALSE(AllResults(CWmiClient()).empty());
    EXPECT_EQ(0u, Zebdiag(L"clear --all").ExitCode);
    EXPECT_TRUE(AllResults(CWmiClient()).empty());
    ASSERT_TRUE(Machine().WaitUntilAllEnded());
    EXPECT_TRUE(AllResults(CWmiClient()).empty());
}
} // namespace
