#include "tools/zebdiag/Progress.h"

#include <gtest/gtest.h>

namespace zebdiag
{
namespace
{
class ProgressTest : public testing::Test
{
  protected:
    // What was written since the last call.
    std::wstring Written() { return std::exchange(m_written, {}); }

    CProgress m_progress{[this](std::wstring_view text) { m_written += text; }, L"Sender"};

  private:
    std::wstring m_written;
};

TEST_F(ProgressTest, LinesComeAtTheFirstReadingAndAtEveryTenPercent)
{
    m_progress.Show(std::nullopt, 1);
    EXPECT_EQ(Written(), L"");
    m_progress.Show(4, 2);
    EXPECT_EQ(Written(), L"  Sender: 4 %, 2 s\n");
    m_progress.Show(8, 4);
    EXPECT_EQ(Written(), L"");
    m_progress.Show(12, 6);
    EXPECT_EQ(Written(), L"  Sender: 12 %, 6 s\n");
    m_progress.Show(18, 8);
    EXPECT_EQ(Written(), L"");
    m_progress.Show(40, 20);
    EXPECT_EQ(Written(), L"  Sender: 40 %, 20 s\n");
}

TEST_F(ProgressTest, LinesComeEveryTenSecondsIfThePercentageIsNotKnown)
{
    m_progress.Show(std::nullopt, 9);
    EXPECT_EQ(Written(), L"");
    m_progress.Show(std::nullopt, 10);
    EXPECT_EQ(Written(), L"  Sender: 10 s\n");
    m_progress.Show(std::nullopt, 19);
    EXPECT_EQ(Written(), L"");
    m_progress.Show(std::nullopt, 25);
    EXPECT_EQ(Written(), L"  Sender: 25 s\n");
}

// The last reading of a run that sends packets can exceed 100.
TEST_F(ProgressTest, PercentageIsKeptBetweenZeroAndHundred)
{
    m_progress.Show(120, 12);
    EXPECT_EQ(Written(), L"  Sender: 100 %, 12 s\n");
    m_progress.Show(-5, 13);
    EXPECT_EQ(Written(), L"");
}
} // namespace
} // namespace zebdiag
