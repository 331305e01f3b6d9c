// A client that finds its way from class to class by the references that it is given.
#include "tests/component/provider/ComponentTest.h"

namespace
{
using Names = std::vector<std::wstring>;

class WalkTest : public ComponentTest
{
};

TEST_F(WalkTest, ThereIsOneTestForEachAdapterAndTest)
{
    Start();
    const CAnswer answer = Enumerate(L"Tolva_DiagTest");
    EXPECT_EQ(answer.Status, S_OK);
    EXPECT_EQ(Column(answer, L"Name"), (Names{L"1@A", L"1@B", L"2@A", L"9@B"}));
    for (const Instance& test : answer.Objects)
    {
        EXPECT_FALSE(Text(test, L"Caption").empty());
        EXPECT_FALSE(Text(test, L"Description").empty());
        EXPECT_EQ(Number(test, L"IsInUse"), VARIANT_FALSE);
    }
}

TEST_F(WalkTest, EveryTestHasASettingAndNoResultYet)
{
    Start();
    EXPECT_EQ(Column(Enumerate(L"Tolva_DiagSetting"), L"SettingID"), (Names{L"1@A", L"1@B", L"2@A", L"9@B"}));
    const CAnswer results = Enumerate(L"Tolva_DiagResult");
    EXPECT_EQ(results.Status, S_OK);
    EXPECT_TRUE(results.Objects.empty());
}

TEST_F(WalkTest, EveryReferenceLeadsToItsObject)
{
    Start();
    for (const wchar_t* name : {L"1@A", L"2@A", L"1@B"})
        EXPECT_EQ(RunTest(name).Status, S_OK);
    struct Association
    {
        const wchar_t* name;
        std::vector<const wchar_t*> references;
        size_t count;
    };
    const Association associations[] = {
        {L"Tolva_DiagTestForMSE", {L"Antecedent"}, 4},
        {L"Tolva_DiagSettingForTest", {L"Element", L"Setting"}, 4},
        {L"Tolva_DiagResultForMSE", {L"Result"}, 3},
        {L"Tolva_DiagResultForTest", {L"DiagnosticResult", L"DiagnosticTest"}, 3},
    };
    for (const Association& association : associations)
    {
        const CAnswer answer = Enumerate(association.name);
        EXPECT_EQ(answer.Status, S_OK);
        EXPECT_EQ(answer.Objects.size(), association.count);
        for (const Instance& object : answer.Objects)
            for (const wchar_t* reference : association.references)
            {
                const std::wstring path = Text(object, reference);
                SCOPED_TRACE(testing::PrintToString(path));
                EXPECT_EQ(Get(path).Status, S_OK);
                EXPECT_EQ(Get(path).Objects.size(), 1u);
            }
    }
}

TEST_F(WalkTest, EveryAssociationIsFoundByItsOwnReferences)
{
    Start();
    EXPECT_EQ(RunTest(L"1@A").Status, S_OK);
    const struct
    {
        const wchar_t* name;
        const wchar_t* keys[2];
    } associations[] = {
        {L"Tolva_DiagTestForMSE", {L"Antecedent", L"Dependent"}},
        {L"Tolva_DiagSettingForTest", {L"Element", L"Setting"}},
        {L"Tolva_DiagResultForMSE", {L"Result", L"SystemElement"}},
        {L"Tolva_DiagResultForTest", {L"DiagnosticResult", L"DiagnosticTest"}},
    };
    for (const auto& association : associations)
        for (const Instance& object : Enumerate(association.name).Objects)
        {
            const std::wstring path = std::wstring(association.name) + L"." + association.keys[0] + L"=" +
                                      Quoted(Text(object, association.keys[0])) + L"," + association.keys[1] +
                                      L"=" + Quoted(Text(object, association.keys[1]));
            SCOPED_TRACE(testing::PrintToString(path));
            const CAnswer found = Get(path);
            EXPECT_EQ(found.Status, S_OK);
            ASSERT_EQ(found.Objects.size(), 1u);
            for (const wchar_t* key : association.keys)
                EXPECT_EQ(Text(found.Objects[0], key), Text(object, key));
        }
}

TEST_F(WalkTest, ResultLeadsBackToItsTestAndAdapter)
{
    Start();
    const CAnswer run = RunTest(L"2@A");
    ASSERT_EQ(run.Objects.size(), 1u);
    const CAnswer result = Get(Text(run.Objects[0], L"Result"));
    ASSERT_EQ(result.Objects.size(), 1u);
    EXPECT_EQ(Text(result.Objects[0], L"DiagnosticName"), L"2@A");
    EXPECT_EQ(Text(result.Objects[0], L"ExecutionID"), L"A");
    const Instance forTest = Enumerate(L"Tolva_DiagResultForTest").Objects.at(0);
    EXPECT_EQ(Text(Get(Text(forTest, L"DiagnosticTest")).Objects.at(0), L"Name"), L"2@A");
}

// Adapter keys as no sane agent gives them.
struct KeyCase
{
    const char* name;
    std::wstring key;
};

class OddKeyTest : public WalkTest, public testing::WithParamInterface<KeyCase>
{
};

TEST_P(OddKeyTest, IsServedAllTheSame)
{
    const std::wstring& key = GetParam().key;
    m_host.Agent->AddAdapter(key.c_str(), {3});
    Start();
    const std::wstring name = L"3@" + key;
    for (const wchar_t* className :
         {L"Tolva_DiagTest", L"Tolva_DiagSetting", L"Tolva_DiagTestForMSE", L"Tolva_DiagSettingForTest"})
    {
        const CAnswer answer = Enumerate(className);
        EXPECT_EQ(answer.Status, S_OK);
        EXPECT_EQ(answer.Objects.size(), 5u);
    }
    const CAnswer test = Get(TestPath(name));
    EXPECT_EQ(test.Status, S_OK);
    ASSERT_EQ(test.Objects.size(), 1u);
    EXPECT_EQ(Text(test.Objects[0], L"Name"), name);
    EXPECT_EQ(RunTest(name.c_str()).Status, S_OK);
    EXPECT_EQ(Get(ResultPath(name)).Objects.size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Keys, OddKeyTest,
                         testing::Values(KeyCase{"Guid", L"{0F3C1B2A-4D5E-4F60-8A9B-ABCDEF012345}"},
                                         KeyCase{"Quotes", L"THE \"FIRST\" ONE"},
                                         KeyCase{"Backslashes", L"PCI\\VEN_8086\\"},
                                         KeyCase{"Separators", L"X@Y@Z"}, KeyCase{"Braces", L"A.B=C,D"},
                                         KeyCase{"TenThousandCharacters", std::wstring(10000, L'K')}),
                         [](const auto& info) { return info.param.name; });
} // namespace
