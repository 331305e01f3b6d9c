// The table of a series on terminals of several sizes, and the time left.
#include "tools/zebdiag/RunTable.h"

#include "Common/src/com/Text.h"
#include "SampleInventory.h"
#include "tools/zebdiag/TextWidth.h"

#include <gtest/gtest.h>

namespace zebdiag
{
namespace
{
std::wstring TextOf(const CScreenLine& line)
{
    std::wstring text;
    for (const CPiece& piece : line)
        text += piece.Text;
    return text.substr(0, text.find_last_not_of(L' ') + 1);
}

std::string Shown(const std::vector<CScreenLine>& lines)
{
    std::wstring text;
    for (const CScreenLine& line : lines)
        text += TextOf(line) + L"\n";
    return Utf8Text(text);
}

// "Ethernet": Link. "Ethernet 2": Link, Link speed and Sender.
class RunTableTest : public testing::Test
{
  protected:
    RunTableTest()
    {
        for (const CAdapter& adapter : m_inventory.Adapters)
            for (const CTest& test : adapter.Tests)
            {
                CRunRow& row = m_rows.emplace_back();
                row.Choice = {&adapter, &test};
            }
        Row(3).MostSeconds = 100;
    }

    CRunRow& Row(size_t index) { return m_rows.at(index); }
    void Run(size_t index, std::optional<long> percent, unsigned long long seconds)
    {
        Row(index).Phase = RunPhase::Running;
        Row(index).Percent = percent;
        Row(index).Seconds = seconds;
    }
    void End(size_t index, ExitCode code, unsigned long long seconds, bool hasRun = true)
    {
        Row(index).Phase = RunPhase::Ended;
        Row(index).Code = code;
        Row(index).Seconds = seconds;
        Row(index).HasRun = hasRun;
    }
    std::string Drawn(unsigned width, unsigned height = 25, Order order = Order::SideBySide) const
    {
        return Shown(DrawRuns(m_rows, order, {width, height}));
    }

    CInventory m_inventory = SampleInventory();
    std::vector<CRunRow> m_rows;
};

TEST_F(RunTableTest, FillsIn)
{
    EXPECT_EQ(Drawn(80), "  Adapter     Test        State           Time\n"
                         "  Ethernet    Link        waiting\n"
                         "  Ethernet 2  Link        waiting\n"
                         "  Ethernet 2  Link speed  waiting\n"
                         "  Ethernet 2  Sender      waiting\n"
                         "  [........................................] 0 of 4 done\n");
    End(0, ExitCode::Passed, 1);
    End(1, ExitCode::Failed, 3);
    Run(2, std::nullopt, 1);
    EXPECT_EQ(Drawn(80), "  Adapter     Test        State           Time\n"
                         "  Ethernet    Link        passed          1 s\n"
                         "  Ethernet 2  Link        failed          3 s\n"
                         "  Ethernet 2  Link speed  running         1 s\n"
                         "  Ethernet 2  Sender      waiting\n"
                         "  [####################....................] 2 of 4 done, about 1 min 41 s left\n");
    End(2, ExitCode::Busy, 0, false);
    Run(3, 40, 20);
    EXPECT_EQ(Drawn(80), "  Adapter     Test        State           Time\n"
                         "  Ethernet    Link        passed          1 s\n"
                         "  Ethernet 2  Link        failed          3 s\n"
                         "  Ethernet 2  Link speed  busy\n"
                         "  Ethernet 2  Sender      running, 40 %   20 s\n"
                         "  [##################################......] 3 of 4 done, about 30 s left\n");
    End(3, ExitCode::Stopped, 59);
    EXPECT_EQ(Drawn(80), "  Adapter     Test        State           Time\n"
                         "  Ethernet    Link        passed          1 s\n"
                         "  Ethernet 2  Link        failed          3 s\n"
                         "  Ethernet 2  Link speed  busy\n"
                         "  Ethernet 2  Sender      stopped         59 s\n"
                         "  [########################################] 4 of 4 done\n");
}

TEST_F(RunTableTest, BarGivesWayAndNamesAreCut)
{
    m_inventory.Adapters[1].Name = L"Connection of the left building";
    m_inventory.Adapters[1].Tests[1].Caption = L"Negotiated speed and duplex mode";
    End(0, ExitCode::Passed, 1);
    End(1, ExitCode::CouldNotRun, 0, false);
    Run(2, std::nullopt, 1);
    EXPECT_EQ(Drawn(60), "  Adapter        Test           State           Time\n"
                         "  Ethernet       Link           passed          1 s\n"
                         "  Connection...  Link           could not run\n"
                         "  Connection...  Negotiated...  running         1 s\n"
                         "  Connection...  Sender         waiting\n"
                         "  [##########..........] 2 of 4 done, about 1 min 40 s left\n");
    EXPECT_EQ(Drawn(50), "  Adapter   Test      State           Time\n"
                         "  Ethernet  Link      passed          1 s\n"
                         "  Conne...  Link      could not run\n"
                         "  Conne...  Negot...  running         1 s\n"
                         "  Conne...  Sender    waiting\n"
                         "  [#####.....] 2 of 4 done, about 1 min 40 s left\n");
    EXPECT_NE(Drawn(200).find("  Connection of the left building  Negotiated speed and duplex mode  running"),
              std::string::npos);
}

TEST_F(RunTableTest, NoLineReachesTheLastColumn)
{
    m_inventory.Adapters[0].Name =
        L"\x4EE5\x592A\x7F51 \x4EE5\x592A\x7F51 \x4EE5\x592A\x7F51 \x4EE5\x592A\x7F51";
    m_inventory.Adapters[1].Name = std::wstring(300, L'x');
    m_inventory.Adapters[1].Tests[0].Caption = std::wstring(300, L'\xD83D') + L"\xDE00";
    Run(0, 100, 360000);
    End(1, ExitCode::CouldNotRun, 100000);
    for (unsigned width = 50; width <= 200; ++width)
        for (const CScreenLine& line : DrawRuns(m_rows, Order::SideBySide, {width, 25}))
            EXPECT_LT(ColumnsOf(TextOf(line)), width) << Utf8Text(TextOf(line));
}

TEST_F(RunTableTest, ControlCharactersTakeTheRoomOfABlank)
{
    m_inventory.Adapters[0].Name = L"Eth\x1B[2J";
    m_inventory.Adapters[0].Tests[0].Caption = L"Li\bnk";
    m_inventory.Adapters[1].Tests[0].Caption = L"Link\r\n";
    EXPECT_EQ(Drawn(80), "  Adapter     Test        State           Time\n"
                         "  Eth [2J     Li nk       waiting\n"
                         "  Ethernet 2  Link        waiting\n"
                         "  Ethernet 2  Link speed  waiting\n"
                         "  Ethernet 2  Sender      waiting\n"
                         "  [........................................] 0 of 4 done\n");
    m_inventory.Adapters[1].Tests[1].Caption = L"Speed\tand duplex, as negotiated";
    EXPECT_NE(Drawn(60).find("  Speed and dup...  waiting"), std::string::npos) << Drawn(60);
}

TEST_F(RunTableTest, LowTerminalShowsWhatMattersMost)
{
    for (CAdapter& adapter : m_inventory.Adapters)
    {
        adapter.Tests.clear();
        while (adapter.Tests.size() < 5)
            adapter.Tests.push_back(SampleTest(L"5", adapter.Key.c_str(), L"More"));
    }
    m_rows.clear();
    for (const CAdapter& adapter : m_inventory.Adapters)
        for (const CTest& test : adapter.Tests)
            m_rows.emplace_back().Choice = {&adapter, &test};
    End(0, ExitCode::Passed, 1);
    End(1, ExitCode::Failed, 1);
    Run(2, std::nullopt, 1);
    Run(9, std::nullopt, 1);
    for (unsigned height = 6; height <= 25; ++height)
        EXPECT_LT(DrawRuns(m_rows, Order::SideBySide, {80, height}).size(), height);
    EXPECT_EQ(Drawn(80, 8), "  Adapter     Test  State           Time\n"
                            "  Ethernet    More  failed          1 s\n"
                            "  Ethernet    More  running         1 s\n"
                            "  Ethernet    More  waiting\n"
                            "  Ethernet 2  More  running         1 s\n"
                            "  (6 more)\n"
                            "  [########................................] 2 of 10 done, about 4 s left\n");
    EXPECT_EQ(Drawn(80, 13).find("more)"), std::string::npos) << "room for all";
}

TEST_F(RunTableTest, WindowThatBecomesLowerThanTheOtherLinesShowsNoRow)
{
    for (unsigned height = 0; height <= 4; ++height)
        EXPECT_EQ(Drawn(80, height), "  Adapter  Test  State           Time\n"
                                     "  (4 more)\n"
                                     "  [........................................] 0 of 4 done\n")
            << height;
}

TEST_F(RunTableTest, EndedTableHasAllRowsAndNoBar)
{
    End(0, ExitCode::Passed, 1);
    for (size_t i = 1; i < 4; ++i)
        Row(i).Phase = RunPhase::LeftOut;
    EXPECT_EQ(Shown(DrawEndedRuns(m_rows, 80)), "  Adapter     Test        State           Time\n"
                                                "  Ethernet    Link        passed          1 s\n"
                                                "  Ethernet 2  Link        not run\n"
                                                "  Ethernet 2  Link speed  not run\n"
                                                "  Ethernet 2  Sender      not run\n");
}

TEST_F(RunTableTest, ColourGoesWithAWordOfItsOwn)
{
    const struct
    {
        ExitCode code;
        const wchar_t* word;
        Colour colour;
    } cases[] = {{ExitCode::Passed, L"passed", Colour::Green},
                 {ExitCode::Failed, L"failed", Colour::Red},
                 {ExitCode::Stopped, L"stopped", Colour::Yellow},
                 {ExitCode::Busy, L"busy", Colour::Red},
                 {ExitCode::CouldNotRun, L"could not run", Colour::Red}};
    for (const auto& one : cases)
    {
        End(0, one.code, 1);
        const CScreenLine line = DrawRuns(m_rows, Order::SideBySide, {80, 25}).at(1);
        EXPECT_EQ(line.at(1).Text, one.word);
        EXPECT_EQ(line.at(1).InColour, one.colour);
        EXPECT_EQ(line.at(0).InColour, Colour::Plain);
        EXPECT_EQ(line.at(2).InColour, Colour::Plain);
    }
}

TEST_F(RunTableTest, SmallTerminalHasNoRoom)
{
    EXPECT_TRUE(HasRoomForRuns({50, 6}));
    EXPECT_FALSE(HasRoomForRuns({49, 6}));
    EXPECT_FALSE(HasRoomForRuns({50, 5}));
    EXPECT_FALSE(HasRoomForRuns({}));
}

TEST_F(RunTableTest, TimeLeftIsThatOfTheSlowestAdapter)
{
    EXPECT_EQ(SecondsLeft(m_rows, Order::SideBySide), std::nullopt) << "no ordinary test has ended";
    End(1, ExitCode::Passed, 4);
    EXPECT_EQ(SecondsLeft(m_rows, Order::SideBySide), 104u) << "speed and sender of the second one";
    EXPECT_EQ(SecondsLeft(m_rows, Order::OneByOne), 108u) << "and link of the first one";
    Run(2, std::nullopt, 1);
    EXPECT_EQ(SecondsLeft(m_rows, Order::SideBySide), 103u);
    Run(2, std::nullopt, 30);
    EXPECT_EQ(SecondsLeft(m_rows, Order::SideBySide), 100u) << "longer than usual";
    End(2, ExitCode::Passed, 30);
    Run(3, 4, 10);
    EXPECT_EQ(SecondsLeft(m_rows, Order::SideBySide), 90u) << "a first percentage says too little";
    Run(3, 50, 10);
    EXPECT_EQ(SecondsLeft(m_rows, Order::SideBySide), 17u) << "the first one's link is longer";
    End(0, ExitCode::Busy, 0, false);
    EXPECT_EQ(SecondsLeft(m_rows, Order::SideBySide), 10u);
    Run(3, 100, 20);
    EXPECT_EQ(SecondsLeft(m_rows, Order::SideBySide), 0u);
}

TEST_F(RunTableTest, RefusedTestSaysNothingOfTheOthersTime)
{
    End(0, ExitCode::Busy, 0, false);
    EXPECT_EQ(SecondsLeft(m_rows, Order::SideBySide), std::nullopt);
}

TEST_F(RunTableTest, TestsThatEndAtOnceAreTakenToLastASecond)
{
    End(0, ExitCode::Passed, 0);
    EXPECT_EQ(SecondsLeft(m_rows, Order::SideBySide), 102u);
}
} // namespace
} // namespace zebdiag
