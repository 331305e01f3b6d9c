// Methods and puts.
#include "tests/support/CaseName.h"
#include "tests/system/standin/StandinFixture.h"

namespace
{
class CStandinWrite : public CStandinTest
{
  protected:
    HRESULT Exec(const wchar_t* path, const wchar_t* method, IWbemClassObject* in,
                 ComPtr<IWbemClassObject>& out) const
    {
        return m_services->ExecMethod(CBstr(path).Get(), CBstr(method).Get(), 0, nullptr, in, out.Put(),
                                      nullptr);
    }
};

constexpr wchar_t kItem[] = L"StandinTest_Item.Name=\"n1\"";

TEST_F(CStandinWrite, RunsAMethod)
{
    ComPtr<IWbemClassObject> out;
    ASSERT_EQ(WBEM_S_NO_ERROR,
              Exec(kItem, L"Double", InParameters(m_services.Get(), L"Double", L"Value", 21).Get(), out));
    EXPECT_EQ(L"42", Text(out.Get(), L"Result"));
    EXPECT_EQ(L"0", Text(out.Get(), L"ReturnValue"));
}

struct MethodCase
{
    const char* name;
    const wchar_t* path;
    const wchar_t* method;
    const wchar_t* parameter; // of Double; null for no parameters at all
    HRESULT result;
};
class CStandinMethod : public CStandinWrite, public testing::WithParamInterface<MethodCase>
{
};
TEST_P(CStandinMethod, Answers)
{
    ComPtr<IWbemClassObject> in;
    if (GetParam().parameter)
    {
        in = InParameters(m_services.Get(), L"Double", L"Value", 1);
        CVariant none = CVariant::Null();
        CVariant note = CVariant::FromText(L"x");
        in->Put(L"Value", 0, &none, 0);
        in->Put(GetParam().parameter, 0, &note, CIM_STRING);
    }
    ComPtr<IWbemClassObject> out;
    EXPECT_EQ(GetParam().result, Exec(GetParam().path, GetParam().method, in.Get(), out));
    EXPECT_FALSE(out);
}
INSTANTIATE_TEST_SUITE_P(
    Refused, CStandinMethod,
    testing::Values(
        MethodCase{"NoParameters", kItem, L"Double", nullptr, wmi::InvalidMethodParameters},
        MethodCase{"RequiredIsNull", kItem, L"Double", L"Note", wmi::InvalidMethodParameters},
        MethodCase{"UnknownMethod", kItem, L"Triple", nullptr, wmi::InvalidMethod},
        MethodCase{"NotImplemented", kItem, L"NobodyImplementsThis", nullptr,
                   static_cast<HRESULT>(WBEM_E_METHOD_NOT_IMPLEMENTED)},
        MethodCase{"UnknownClass", L"StandinTest_None.Name='x'", L"Double", nullptr, wmi::NotFound},
        MethodCase{"OfTheClass", L"StandinTest_Item", L"Block", nullptr, wmi::InvalidMethodParameters},
        MethodCase{"NoSuchKey", L"StandinTest_Item.Title='n1'", L"Block", nullptr, wmi::InvalidObjectPath},
        MethodCase{"NoPath", L"a b", L"Double", nullptr, wmi::InvalidObjectPath},
        MethodCase{"NoMethod", kItem, L"", nullptr, wmi::InvalidParameter}),
    NameOf<MethodCase>);

TEST_F(CStandinWrite, RefusesParametersThatAreNotDeclared)
{
    // An instance of any class, not of the method's declaration.
    ComPtr<IWbemClassObject> other;
    ComPtr<IWbemClassObject> in;
    ASSERT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Many", other));
    ASSERT_EQ(WBEM_S_NO_ERROR, other->SpawnInstance(0, in.Put()));
    CVariant value = CVariant::FromLong(1);
    ASSERT_EQ(WBEM_S_NO_ERROR, in->Put(L"Number", 0, &value, 0));
    ComPtr<IWbemClassObject> out;
    EXPECT_EQ(wmi::InvalidMethodParameters, Exec(kItem, L"Double", in.Get(), out));
}

struct PutCase
{
    const char* name;
    long flags;
    HRESULT result;
    const wchar_t* told; // flags and text as the provider saw them
};
class CStandinPut : public CStandinTest, public testing::WithParamInterface<PutCase>
{
};
TEST_P(CStandinPut, ReachesTheProvider)
{
    ComPtr<IWbemClassObject> item;
    ASSERT_EQ(WBEM_S_NO_ERROR, Get(kItem, item));
    CVariant text = CVariant::FromText(L"new");
    ASSERT_EQ(WBEM_S_NO_ERROR, item->Put(L"Text", 0, &text, 0));
    ComPtr<IWbemCallResult> result;
    EXPECT_EQ(GetParam().result,
              m_services->PutInstance(item.Get(), GetParam().flags, nullptr, result.Put()));
    CBstr told;
    if (GetParam().told)
    {
        ASSERT_EQ(WBEM_S_NO_ERROR, result->GetResultString(60000, told.Put()));
        EXPECT_STREQ(GetParam().told, told.Text());
    }
}
INSTANTIATE_TEST_SUITE_P(
    Flags, CStandinPut,
    testing::Values(PutCase{"CreateOrUpdate", WBEM_FLAG_CREATE_OR_UPDATE, WBEM_S_NO_ERROR, L"0:new"},
                    PutCase{"UpdateOnly", WBEM_FLAG_UPDATE_ONLY, WBEM_S_NO_ERROR, L"1:new"},
                    PutCase{"CreateOnly", WBEM_FLAG_CREATE_ONLY, WBEM_S_NO_ERROR, L"2:new"},
                    PutCase{"Later", WBEM_FLAG_RETURN_IMMEDIATELY, WBEM_S_NO_ERROR, L"0:new"},
                    PutCase{"Amended", WBEM_FLAG_UPDATE_ONLY | long{WBEM_FLAG_USE_AMENDED_QUALIFIERS},
                            WBEM_S_NO_ERROR, L"1:new"},
                    PutCase{"Both", WBEM_FLAG_UPDATE_ONLY | WBEM_FLAG_CREATE_ONLY, wmi::InvalidParameter,
                            nullptr},
                    PutCase{"Unknown", 0x4000000, wmi::InvalidParameter, nullptr}),
    NameOf<PutCase>);

TEST_F(CStandinWrite, PutsOnlyWhatAProviderTakes)
{
    ComPtr<IWbemClassObject> definition;
    ComPtr<IWbemClassObject> instance;
    ASSERT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_OfBroken", definition));
    ASSERT_EQ(WBEM_S_NO_ERROR, definition->SpawnInstance(0, instance.Put()));
    EXPECT_EQ(static_cast<HRESULT>(WBEM_E_PROVIDER_NOT_CAPABLE),
              m_services->PutInstance(instance.Get(), 0, nullptr, nullptr));
    EXPECT_EQ(wmi::InvalidObject, m_services->PutInstance(definition.Get(), 0, nullptr, nullptr));
    EXPECT_EQ(wmi::InvalidParameter, m_services->PutInstance(nullptr, 0, nullptr, nullptr));
}
} // namespace
