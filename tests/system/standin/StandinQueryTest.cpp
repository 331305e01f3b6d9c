// Queries: what they select, what they refuse.
#include "tests/support/CaseName.h"
#include "tests/system/standin/StandinFixture.h"

namespace
{
using Names = std::vector<std::wstring>;

struct QueryCase
{
    const char* name;
    const wchar_t* text;
    Names names; // the property "Name" of what is selected
};
class CStandinQuery : public CStandinTest, public testing::WithParamInterface<QueryCase>
{
};
TEST_P(CStandinQuery, Selects)
{
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR, Query(GetParam().text, objects));
    HRESULT end = E_FAIL;
    EXPECT_EQ(GetParam().names, Texts(ReadAll(objects.Get(), end), L"Name"));
    EXPECT_EQ(WBEM_S_FALSE, end);
}

#define ITEMS L"select * from StandinTest_Item where "
INSTANTIATE_TEST_SUITE_P(
    Where, CStandinQuery,
    testing::Values(QueryCase{"All", L"SELECT * FROM StandinTest_Item", {L"n1", L"n2", L"n3"}},
                    QueryCase{"TextEqual", ITEMS L"Name = 'n2'", {L"n2"}},
                    QueryCase{"TextInAnyCase", ITEMS L"Name = \"N2\"", {L"n2"}},
                    QueryCase{"TextNotEqual", ITEMS L"Name <> 'n2'", {L"n1", L"n3"}},
                    QueryCase{"TextGreater", ITEMS L"Name > 'n1'", {L"n2", L"n3"}},
                    QueryCase{"NumberLess", ITEMS L"Number<3", {L"n1", L"n2"}},
                    QueryCase{"NumberEqual", ITEMS L"Number = 3", {L"n3"}},
                    QueryCase{"Big", ITEMS L"Big >= 10000000000", {L"n2", L"n3"}},
                    QueryCase{"Boolean", ITEMS L"Even = TRUE", {L"n2"}},
                    QueryCase{"BooleanFalse", ITEMS L"Even = false", {L"n1", L"n3"}},
                    QueryCase{"And", ITEMS L"Number = 1 and Name <> 'n2'", {L"n1"}},
                    QueryCase{"NullMeetsNoComparison", ITEMS L"Text <> 'x'", {}},
                    QueryCase{"Empty", L"select * from StandinTest_Nobodys", {}},
                    QueryCase{"Class", ITEMS L"__CLASS = 'StandinTest_Item' and Number = 1", {L"n1"}}),
    NameOf<QueryCase>);

#define OF L"{StandinTest_Item.Name=\"n2\"}"
INSTANTIATE_TEST_SUITE_P(
    Associators, CStandinQuery,
    testing::Values(
        QueryCase{"BothSides", L"ASSOCIATORS OF " OF, {L"n1", L"n3"}},
        QueryCase{"ByClass", L"associators of " OF L" where AssocClass=StandinTest_Next", {L"n1", L"n3"}},
        QueryCase{"ByRole", L"ASSOCIATORS OF " OF L" WHERE Role = Before", {L"n3"}},
        QueryCase{"ByResultRole", L"ASSOCIATORS OF " OF L" WHERE ResultRole = Before", {L"n1"}},
        QueryCase{"ByResultClass", L"ASSOCIATORS OF " OF L" WHERE ResultClass = StandinTest_Nobodys", {}},
        QueryCase{
            "ByBothClasses",
            L"ASSOCIATORS OF " OF L" WHERE AssocClass = StandinTest_Next ResultClass = StandinTest_Base",
            {L"n1", L"n3"}},
        QueryCase{"UnnamedKey", L"ASSOCIATORS OF {StandinTest_Item='N2'} WHERE Role=Before", {L"n3"}},
        QueryCase{"BraceInKey", L"ASSOCIATORS OF {StandinTest_Item.Name=\"a}b\"}", {}}),
    NameOf<QueryCase>);

class CStandinQueryForms : public CStandinTest
{
};

TEST_F(CStandinQueryForms, FollowsReferences)
{
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR, Query(L"REFERENCES OF " OF L" WHERE ResultClass = StandinTest_Next", objects));
    HRESULT end = E_FAIL;
    EXPECT_EQ((Names{L"StandinTest_Item.Name=\"n1\"", L"StandinTest_Item.Name=\"n2\""}),
              Texts(ReadAll(objects.Get(), end), L"Before"));
    ASSERT_EQ(WBEM_S_NO_ERROR, Query(L"REFERENCES OF " OF L" WHERE Role = Owned", objects));
    EXPECT_EQ((Names{L"StandinTest_Nobodys.Name=\"x\""}), Texts(ReadAll(objects.Get(), end), L"Owning"));
}

TEST_F(CStandinQueryForms, LeavesWhatWasNotSelected)
{
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR, Query(L"SELECT Number, even FROM StandinTest_Item WHERE Name='n2'", objects));
    HRESULT end = E_FAIL;
    const Objects all = ReadAll(objects.Get(), end);
    ASSERT_EQ(1u, all.size());
    EXPECT_EQ(L"2", Text(all[0].Get(), L"Number"));
    EXPECT_EQ(L"true", Text(all[0].Get(), L"Even"));
    EXPECT_EQ(L"(error)", Text(all[0].Get(), L"Name"));
    EXPECT_EQ(L"StandinTest_Item", Text(all[0].Get(), L"__CLASS"));

    ASSERT_EQ(WBEM_S_NO_ERROR,
              m_services->ExecQuery(CBstr(L"WQL").Get(),
                                    CBstr(L"SELECT Number FROM StandinTest_Item WHERE Name='n2'").Get(),
                                    WBEM_FLAG_ENSURE_LOCATABLE, nullptr, objects.Put()));
    const Objects locatable = ReadAll(objects.Get(), end);
    ASSERT_EQ(1u, locatable.size());
    EXPECT_EQ(L"StandinTest_Item.Name=\"n2\"", Text(locatable[0].Get(), L"__RELPATH"));
}

struct RefusedCase
{
    const char* name;
    const wchar_t* language;
    const wchar_t* text;
    HRESULT result;
};
class CStandinRefusedQuery : public CStandinTest, public testing::WithParamInterface<RefusedCase>
{
};
TEST_P(CStandinRefusedQuery, Says)
{
    ComPtr<IEnumWbemClassObject> objects;
    EXPECT_EQ(GetParam().result,
              m_services->ExecQuery(CBstr(GetParam().language).Get(), CBstr(GetParam().text).Get(), 0,
                                    nullptr, objects.Put()));
    EXPECT_FALSE(objects);
}
INSTANTIATE_TEST_SUITE_P(
    Queries, CStandinRefusedQuery,
    testing::Values(
        RefusedCase{"Language", L"SQL", L"select * from StandinTest_Item", wmi::InvalidQueryType},
        RefusedCase{"Nothing", L"WQL", L"", wmi::InvalidQuery},
        RefusedCase{"Nonsense", L"WQL", L"give me all", wmi::InvalidQuery},
        RefusedCase{"NoClass", L"WQL", L"select * from", wmi::InvalidQuery},
        RefusedCase{"HalfCondition", L"WQL", L"select * from StandinTest_Item where Name =",
                    wmi::InvalidQuery},
        RefusedCase{"OutsideTheSubset", L"WQL", L"select * from StandinTest_Item where Number=1 or Number=2",
                    wmi::InvalidQuery},
        RefusedCase{"OpenText", L"WQL", L"select * from StandinTest_Item where Name = 'x", wmi::InvalidQuery},
        RefusedCase{"Rest", L"WQL", L"select * from StandinTest_Item x", wmi::InvalidQuery},
        RefusedCase{"UnknownClass", L"WQL", L"select * from StandinTest_None", wmi::InvalidClass},
        RefusedCase{"UnknownSelected", L"WQL", L"select None from StandinTest_Item", wmi::InvalidQuery},
        RefusedCase{"UnknownCompared", L"WQL", L"select * from StandinTest_Item where Non=1",
                    wmi::InvalidQuery},
        RefusedCase{"NoPath", L"WQL", L"associators of {}", wmi::InvalidQuery},
        RefusedCase{"UnknownLimit", L"WQL", L"associators of " OF L" where Color=red", wmi::InvalidQuery},
        RefusedCase{"UnknownAssociation", L"WQL", L"associators of " OF L" where AssocClass=None",
                    wmi::InvalidClass},
        RefusedCase{"UnknownObjectClass", L"WQL", L"references of {None.Name='x'}", wmi::NotFound}),
    NameOf<RefusedCase>);
} // namespace
