#include "tools/zebdiag/NameMatch.h"

#include "SampleInventory.h"
#include "tests/support/CaseName.h"
#include "tools/zebdiag/Failure.h"

namespace zebdiag
{
namespace
{
struct MatchCase
{
    const char* name;
    const wchar_t* text;
    std::vector<size_t> found;
};

class MatchNamesTest : public testing::TestWithParam<MatchCase>
{
};

TEST_P(MatchNamesTest, Finds)
{
    const std::vector<CNames> things = {{{L"Ethernet", L"Contoso Gigabit"}, {L"1"}},
                                        {{L"Ethernet 2", L"Fabrikam 10G"}, {L"2"}},
                                        {{L"Größe"}, {L"A"}}};
    EXPECT_EQ(MatchNames(GetParam().text, things), GetParam().found);
}

INSTANTIATE_TEST_SUITE_P(
    Names, MatchNamesTest,
    testing::Values(MatchCase{"WholeNameBeforeParts", L"Ethernet", {0}},
                    MatchCase{"WholeNameInOtherCase", L"eTHERNET 2", {1}},
                    MatchCase{"UniquePart", L"contoso", {0}}, MatchCase{"PartOfSeveral", L"thern", {0, 1}},
                    MatchCase{"PartInTheMiddle", L"kam 1", {1}}, MatchCase{"WholeCode", L"2", {1}},
                    MatchCase{"CodeInOtherCase", L"a", {2}}, MatchCase{"LetterBeyondAscii", L"GRÖSS", {}},
                    MatchCase{"LetterBeyondAsciiInOtherCase", L"GRÖ", {2}},
                    MatchCase{"Nothing", L"token ring", {}}),
    NameOf<MatchCase>);

// What a wrong choice is answered with.
CFailure FailureIn(const std::function<void()>& choose)
{
    try
    {
        choose();
    }
    catch (const CFailure& failure)
    {
        return failure;
    }
    ADD_FAILURE() << "something was chosen";
    return CFailure(ExitCode::Passed, {}, {});
}

TEST(ChooseAdaptersTest, EmptyTextMeansAll)
{
    const CInventory inventory = SampleInventory();
    EXPECT_EQ(ChooseAdapters(inventory, L"").size(), 2u);
}

TEST(ChooseAdaptersTest, TakesNameDescriptionAndKey)
{
    const CInventory inventory = SampleInventory();
    for (const wchar_t* text : {L"ethernet 2", L"fabrikam", L"{bbbb-2222}", L"2222"})
    {
        const auto chosen = ChooseAdapters(inventory, text);
        ASSERT_EQ(chosen.size(), 1u);
        EXPECT_EQ(chosen[0]->Name, L"Ethernet 2");
    }
}

TEST(ChooseAdaptersTest, AmbiguityListsTheCandidates)
{
    const CInventory inventory = SampleInventory();
    const CFailure failure = FailureIn([&] { ChooseAdapters(inventory, L"ether"); });
    EXPECT_EQ(failure.Code, ExitCode::NotFound);
    EXPECT_EQ(failure.Cause, L"\"ether\" fits more than one adapter:\n  Ethernet (Contoso Gigabit)\n"
                             L"  Ethernet 2 (Fabrikam 10G)");
    EXPECT_EQ(failure.NextStep, L"Give more of the name.");
}

TEST(ChooseAdaptersTest, UnknownNameListsWhatThereIs)
{
    const CInventory inventory = SampleInventory();
    const CFailure failure = FailureIn([&] { ChooseAdapters(inventory, L"wifi"); });
    EXPECT_EQ(failure.Code, ExitCode::NotFound);
    EXPECT_EQ(failure.Cause, L"No adapter is called \"wifi\". There is:\n  Ethernet (Contoso Gigabit)\n"
                             L"  Ethernet 2 (Fabrikam 10G)");
}

TEST(ChooseAdaptersTest, UnknownNameWhereThereIsNone)
{
    const CFailure failure = FailureIn([] { ChooseAdapters(CInventory(), L"wifi"); });
    EXPECT_EQ(failure.Cause, L"No adapter is called \"wifi\".");
}

TEST(ChooseTestsTest, EmptyTextMeansAllInOrder)
{
    const CInventory inventory = SampleInventory();
    const auto chosen = ChooseTests(ChooseAdapters(inventory, L""), L"");
    ASSERT_EQ(chosen.size(), 4u);
    EXPECT_EQ(chosen[3].Test->Caption, L"Sender");
    EXPECT_EQ(chosen[3].Adapter->Name, L"Ethernet 2");
}

TEST(ChooseTestsTest, OneKindOnEveryAdapterThatHasIt)
{
    const CInventory inventory = SampleInventory();
    const auto chosen = ChooseTests(ChooseAdapters(inventory, L""), L"link");
    ASSERT_EQ(chosen.size(), 2u);
    EXPECT_EQ(chosen[0].Test->Key, L"1@{AAAA-1111}");
    EXPECT_EQ(chosen[1].Test->Key, L"1@{BBBB-2222}");
}

TEST(ChooseTestsTest, TakesTheNumber)
{
    const CInventory inventory = SampleInventory();
    const auto chosen = ChooseTests(ChooseAdapters(inventory, L""), L"9");
    ASSERT_EQ(chosen.size(), 1u);
    EXPECT_EQ(chosen[0].Test->Caption, L"Sender");
}

// The key has them in hexadecimal; nothing that people see or type does.
TEST(ChooseTestsTest, NumbersAreDecimalAndSortAsNumbers)
{
    CInventory inventory = SampleInventory();
    for (const wchar_t* number : {L"A", L"10", L"F"})
        inventory.Adapters[0].Tests.push_back(
            SampleTest(number, L"{AAAA-1111}", (L"Probe " + std::wstring(number)).c_str()));
    const auto adapters = ChooseAdapters(inventory, L"contoso");
    EXPECT_EQ(ChooseTests(adapters, L"10").front().Test->Caption, L"Probe A");
    EXPECT_EQ(ChooseTests(adapters, L"16").front().Test->Caption, L"Probe 10");
    EXPECT_EQ(FailureIn([&] { ChooseTests(adapters, L"9"); }).Cause,
              L"No test is called \"9\". There is:\n  Link (number 1)\n  Probe A (number 10)\n"
              L"  Probe F (number 15)\n  Probe 10 (number 16)");
}

TEST(ChooseTestsTest, AmbiguityListsKindsNotAdapters)
{
    const CInventory inventory = SampleInventory();
    const CFailure failure = FailureIn([&] { ChooseTests(ChooseAdapters(inventory, L""), L"lin"); });
    EXPECT_EQ(failure.Code, ExitCode::NotFound);
    EXPECT_EQ(failure.Cause, L"\"lin\" fits more than one test:\n  Link (number 1)\n  Link speed (number 2)");
}

TEST(ChooseTestsTest, TestOfAnotherAdapterIsUnknown)
{
    const CInventory inventory = SampleInventory();
    const CFailure failure =
        FailureIn([&] { ChooseTests(ChooseAdapters(inventory, L"contoso"), L"sender"); });
    EXPECT_EQ(failure.Code, ExitCode::NotFound);
    EXPECT_EQ(failure.Cause, L"No test is called \"sender\". There is:\n  Link (number 1)");
}
} // namespace
} // namespace zebdiag
