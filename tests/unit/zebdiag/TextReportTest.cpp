#include "tools/zebdiag/TextReport.h"

#include "SampleInventory.h"

#include <gtest/gtest.h>

namespace zebdiag
{
namespace
{
CResult SampleResult(TestState state)
{
    CResult result;
    result.State = state;
    result.Percent = 45;
    result.Started = L"20240501134510.000000+0";
    return result;
}

TEST(RenderListTest, ShowsAdaptersTestsAndWhoDeliversThem)
{
    CInventory inventory = SampleInventory();
    inventory.Adapters[1].Tests[2].InUse = true;
    EXPECT_EQ(RenderList(inventory, ChooseAdapters(inventory, L""), {312}, 0),
              L"Ethernet (Contoso Gigabit)\n"
              L"  {AAAA-1111}\n"
              L"  Number  Test  Description\n"
              L"  1       Link  What Link looks at.\n"
              L"\n"
              L"Ethernet 2 (Fabrikam 10G)\n"
              L"  {BBBB-2222}\n"
              L"  Number  Test              Description\n"
              L"  1       Link              What Link looks at.\n"
              L"  2       Link speed        What Link speed looks at.\n"
              L"  9       Sender (running)  What Sender looks at.\n"
              L"\n"
              L"4 tests on 2 adapters of WS42, delivered by Drevok.EXE (process 312).\n");
}

TEST(RenderListTest, NamesEveryProcess)
{
    const CInventory inventory = SampleInventory();
    const std::wstring text = RenderList(inventory, ChooseAdapters(inventory, L"contoso"), {312, 400}, 0);
    EXPECT_NE(text.find(L"1 test on 1 adapter of WS42, delivered by Drevok.EXE (process 312, 400).\n"),
              std::wstring::npos);
}

TEST(RenderListTest, SaysNothingOfAProcessThatNobodyKnows)
{
    const CInventory inventory = SampleInventory();
    EXPECT_NE(
        RenderList(inventory, ChooseAdapters(inventory, L"contoso"), {}, 0).find(L"1 adapter of WS42.\n"),
        std::wstring::npos);
}

// An adapter that only the provider knows is shown by its key, once.
TEST(RenderListTest, AdapterWithoutNameIsItsKey)
{
    CInventory inventory;
    inventory.Computer = L"WS42";
    inventory.Adapters = {{L"SCRIPTED-1", L"SCRIPTED-1", L"", {SampleTest(L"1", L"SCRIPTED-1", L"Link")}}};
    EXPECT_EQ(RenderList(inventory, ChooseAdapters(inventory, L""), {}, 0),
              L"SCRIPTED-1\n"
              L"  Number  Test  Description\n"
              L"  1       Link  What Link looks at.\n"
              L"\n"
              L"1 test on 1 adapter of WS42.\n");
}

TEST(RenderListTest, NoAdapter)
{
    EXPECT_EQ(RenderList(CInventory(), {}, {312}, 0),
              L"There is no wired adapter with tests, delivered by Drevok.EXE (process 312).\n");
    EXPECT_EQ(RenderList(CInventory(), {}, {}, 0), L"There is no wired adapter with tests.\n");
}

TEST(RenderResultsTest, ShowsStatesTimesAndFindings)
{
    const CInventory inventory = SampleInventory();
    CResult failed = SampleResult(TestState::Failed);
    failed.Completed = L"20240501134511.000000+0";
    failed.Lines = {L"t|Link|No cable.", L"t|Link|Plug it in."};
    const std::map<std::wstring, CResult> results = {{L"1@{BBBB-2222}", failed},
                                                     {L"9@{BBBB-2222}", SampleResult(TestState::InProgress)}};
    EXPECT_EQ(RenderResults(ChooseTests(ChooseAdapters(inventory, L""), L""), results, 0),
              L"Ethernet 2 (Fabrikam 10G)\n"
              L"  Test    State              Started              Ended     Findings\n"
              L"  Link    Failed             2024-05-01 13:45:10  13:45:11  No cable.\n"
              L"                                                            Plug it in.\n"
              L"  Sender  In progress, 45 %  2024-05-01 13:45:10\n"
              L"\n"
              L"2 results: 1 failed, 1 in progress.\n");
}

TEST(RenderResultsTest, NoResult)
{
    const CInventory inventory = SampleInventory();
    EXPECT_EQ(RenderResults(ChooseTests(ChooseAdapters(inventory, L""), L""), {}, 0),
              L"There are no results.\n");
}

TEST(RenderSettingsTest, LeavesOutTestsWithoutSettings)
{
    const CInventory inventory = SampleInventory();
    const std::map<std::wstring, CSetting> settings = {
        {L"1@{BBBB-2222}", {L"1@{BBBB-2222}", L"", {}}},
        {L"9@{BBBB-2222}", {L"9@{BBBB-2222}", L"", {true, false, 50}}}};
    const std::wstring text = RenderSettings(ChooseTests(ChooseAdapters(inventory, L""), L""), settings, 0);
    EXPECT_EQ(text.substr(0, text.find(L"\n\n")), L"Ethernet 2 (Fabrikam 10G)\n"
                                                  L"  Test    Coverage  Quick  Report\n"
                                                  L"  Sender  50 %      on     off");
}

TEST(RenderSettingsTest, NoSetting)
{
    const CInventory inventory = SampleInventory();
    EXPECT_EQ(RenderSettings(ChooseTests(ChooseAdapters(inventory, L"contoso"), L""), {}, 0),
              L"None of these tests has settings.\n");
}

TEST(RenderFindingsTest, AreIndentedAndCut)
{
    CResult result;
    result.Lines = {L"t|Link|No cable is plugged in.", L"t|Link|Plug it in."};
    EXPECT_EQ(RenderFindings(result, 0), L"    No cable is plugged in.\n    Plug it in.\n");
    EXPECT_EQ(RenderFindings(result, 20), L"    No cable is\n    plugged in.\n    Plug it in.\n");
    EXPECT_EQ(RenderFindings(CResult(), 20), L"");
}
} // namespace
} // namespace zebdiag
