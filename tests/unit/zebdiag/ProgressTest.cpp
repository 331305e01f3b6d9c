#include "tools/zebdiag/Progress.h"

#include <gtest/gtest.h>

namespace zebdiag
{
namespace
{
class ProgressTest : public testing::Test
{
  protected:
    CProgress Make(bool terminal, unsigned width = 60)
    {
        return {[this](std::wstring_view text) { m_written += text; }, L"Sender", terminal, width};
    }
    // What was written since the last call.
    std::wstring Written() { return std::exchange(m_written, {}); }

  private:
    std::wstring m_written;
};

TEST_F(ProgressTest, TerminalShowsABarThatIsDrawnOver)
{
    CProgress progress = Make(true);
    progress.Show(25, 10);
    EXPECT_EQ(Written(), L"\r  Sender [#########............................] 25 %, 10 s");
    progress.Show(50, 20);
    EXPECT_EQ(Written(), L"\r  Sender [##################...................] 50 %, 20 s");
    progress.Finish();
    EXPECT_EQ(Written(), L"\r" + std::wstring(59, L' ') + L"\r");
}

TEST_F(ProgressTest, ShorterLineCoversTheLongerOne)
{
    CProgress progress = Make(true);
    progress.Show(std::nullopt, 59);
    EXPECT_EQ(Written(), L"\r  Sender  59 s");
    progress.Show(std::nullopt, 60);
    EXPECT_EQ(Written(), L"\r  Sender  1 min 0 s");
    progress.Show(std::nullopt, 5);
    EXPECT_EQ(Written(), L"\r  Sender  5 s      ");
}

TEST_F(ProgressTest, BarLeavesOutWhatTheTerminalHasNoRoomFor)
{
    CProgress progress = Make(true, 20);
    progress.Show(50, 20);
    EXPECT_EQ(Written(), L"\r  Sender 50 %, 20 s");
}

TEST_F(ProgressTest, PlainLinesComeAtTheFirstReadingAndAtEveryTenPercent)
{
    CProgress progress = Make(false);
    progress.Show(std::nullopt, 1);
    EXPECT_EQ(Written(), L"");
    progress.Show(4, 2);
    EXPECT_EQ(Written(), L"  Sender: 4 %, 2 s\n");
    progress.Show(8, 4);
    EXPECT_EQ(Written(), L"");
    progress.Show(12, 6);
    EXPECT_EQ(Written(), L"  Sender: 12 %, 6 s\n");
    progress.Show(18, 8);
    EXPECT_EQ(Written(), L"");
    progress.Show(40, 20);
    EXPECT_EQ(Written(), L"  Sender: 40 %, 20 s\n");
    progress.Finish();
    EXPECT_EQ(Written(), L"");
}

TEST_F(ProgressTest, PlainLinesComeEveryTenSecondsWhereNobodyKnowsThePercentage)
{
    CProgress progress = Make(false);
    progress.Show(std::nullopt, 9);
    EXPECT_EQ(Written(), L"");
    progress.Show(std::nullopt, 10);
    EXPECT_EQ(Written(), L"  Sender: 10 s\n");
    progress.Show(std::nullopt, 19);
    EXPECT_EQ(Written(), L"");
    progress.Show(std::nullopt, 25);
    EXPECT_EQ(Written(), L"  Sender: 25 s\n");
}

// The last reading of a run that sends packets can exceed 100.
TEST_F(ProgressTest, PercentageIsKeptBetweenZeroAndHundred)
{
    CProgress progress = Make(false);
    progress.Show(120, 12);
    EXPECT_EQ(Written(), L"  Sender: 100 %, 12 s\n");
    progress.Show(-5, 13);
    EXPECT_EQ(Written(), L"");
}

TEST_F(ProgressTest, RemarkStandsOnALineOfItsOwn)
{
    CProgress terminal = Make(true);
    terminal.Show(std::nullopt, 5);
    Written();
    terminal.Say(L"Stopping.");
    EXPECT_EQ(Written(), L"\r             \r  Stopping.\n");
    CProgress plain = Make(false);
    plain.Say(L"Stopping.");
    EXPECT_EQ(Written(), L"  Stopping.\n");
}

TEST_F(ProgressTest, NothingIsDrawnAfterTheEnd)
{
    CProgress progress = Make(true);
    progress.Finish();
    progress.Show(50, 1);
    progress.Finish();
    EXPECT_EQ(Written(), L"");
}
} // namespace
} // namespace zebdiag
