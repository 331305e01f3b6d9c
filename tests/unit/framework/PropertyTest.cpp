#include "Common/src/com/SafeArray.h"
#include "tests/support/CaseName.h"
#include "tests/unit/framework/FrameworkTest.h"
#include "tests/unit/framework/Imports.h"

#include <functional>

namespace
{
using Call = CCallPlan::Call;
constexpr HRESULT kRefused = static_cast<HRESULT>(0x80041017);

struct MemberCase
{
    const char* name;
    const wchar_t* member;
    Call call;
    std::function<HRESULT(CWomClassObject&)> act;
    DWORD callStatus;
    long noObject, callFailed;
    long wrongType = 0; // 0: takes no type
};

template <class Value>
HRESULT Read(CWomClassObject& object, const wchar_t* name)
{
    Value value{};
    return object.GetProperty(name, value);
}
HRESULT ReadBool(CWomClassObject& object, const wchar_t* name)
{
    BOOL value = FALSE;
    return object.GetPropertyBool(name, value);
}

const MemberCase kMembers[] = {
    {"SetText", L"Text", Call::Put, [](auto& o) { return o.SetProperty(L"Text", L"x"); }, 0x80040901, 639,
     657},
    {"SetNumber", L"Number", Call::Put, [](auto& o) { return o.SetProperty(L"Number", 1L); }, 0x80040901, 696,
     711},
    {"SetTexts", L"Texts", Call::Put,
     [](auto& o) { return o.SetProperty(L"Texts", std::vector<CBstr>{CBstr(L"x")}); }, 0x80040901, 754, 807},
    {"SetNumbers", L"Numbers", Call::Put,
     [](auto& o) { return o.SetProperty(L"Numbers", std::vector<long>{1}); }, 0x80040901, 938, 994},
    {"GetNumber", L"Number", Call::Get, [](auto& o) { return Read<DWORD>(o, L"Number"); }, 0x80040908, 1466,
     1480, 1500},
    {"SetFlag", L"Flag", Call::Put, [](auto& o) { return o.SetPropertyBool(L"Flag", TRUE); }, 0x80040901,
     1540, 1555},
    {"SetWord", L"Word", Call::Put,
     [](auto& o) { return o.SetProperty(L"Word", static_cast<unsigned short>(1)); }, 0x80040901, 1593, 1608},
    {"SetByte", L"Byte", Call::Put,
     [](auto& o) { return o.SetProperty(L"Byte", static_cast<unsigned char>(1)); }, 0x80040901, 1646, 1661},
    {"GetText", L"Text", Call::Get, [](auto& o) { return Read<CBstr>(o, L"Text"); }, 0x80040908, 1799, 1813,
     1832},
    {"GetFlag", L"Flag", Call::Get, [](auto& o) { return ReadBool(o, L"Flag"); }, 0x80040908, 1950, 1964,
     1983},
    {"GetByte", L"Byte", Call::Get, [](auto& o) { return Read<BYTE>(o, L"Byte"); }, 0x80040908, 2403, 2417,
     2436},
    {"SetNull", L"Text", Call::Put, [](auto& o) { return o.SetPropertyNull(L"Text"); }, 0x80040901, 2775,
     2790},
};

std::wstring Described(const wchar_t* object, const wchar_t* member)
{
    return std::wstring(object) + L"." + member;
}

class MemberTest : public FrameworkTest, public testing::WithParamInterface<MemberCase>
{
};

// Of those that take a type.
class ReaderTest : public MemberTest
{
};

std::vector<MemberCase> Readers()
{
    std::vector<MemberCase> readers(std::begin(kMembers), std::end(kMembers));
    std::erase_if(readers, [](const MemberCase& c) { return c.wrongType == 0; });
    return readers;
}

TEST(Members, FourOfThemTakeAType)
{
    EXPECT_EQ(4u, Readers().size());
}

TEST_P(MemberTest, WithoutAnObjectRaises)
{
    const MemberCase& c = GetParam();
    const auto wrapper = Wrapper();
    ExpectRaised(Thrown([&] { c.act(*wrapper); }), 0x80040902, E_FAIL, c.noObject,
                 Described(L"<no object>", c.member).c_str());
}

TEST_P(MemberTest, ARefusedCallRaises)
{
    const MemberCase& c = GetParam();
    const auto wrapper = Instance();
    m_plan->Fail(c.call, 1, kRefused);
    ExpectRaised(Thrown([&] { c.act(*wrapper); }), c.callStatus, kRefused, c.callFailed,
                 Described(L"Tolva_Sample", c.member).c_str());
}

TEST_P(ReaderTest, APropertyOfAnotherTypeRaises)
{
    const MemberCase& c = GetParam();
    for (const VARTYPE type : {VT_EMPTY, VT_I2, VT_R8})
    {
        CVariant other;
        other.vt = type;
        m_plan->Answer(c.member, std::move(other));
        const auto wrapper = Instance();
        ExpectRaised(Thrown([&] { c.act(*wrapper); }), 0x80040909, E_FAIL, c.wrongType,
                     Described(L"Tolva_Sample", c.member).c_str());
    }
}

TEST_P(MemberTest, WithTheSwitchOffAFailureIsTracedAndReturned)
{
    const MemberCase& c = GetParam();
    const auto wrapper = Instance(false);
    m_plan->Fail(c.call, 1, kRefused);
    const CTraceCapture trace;
    EXPECT_EQ(kRefused, c.act(*wrapper));
    char info[200];
    _snprintf(info, sizeof(info), "Info: 0x%x Tolva_Sample.%ls Common/src/WomClassObject %d 0x80041017",
              static_cast<unsigned>(c.callStatus), c.member, static_cast<int>(c.callFailed));
    EXPECT_THAT(trace.Lines(), testing::ElementsAre("Exception not thrown:", info));
}

TEST_P(MemberTest, SucceedsOnAnObject)
{
    const MemberCase& c = GetParam();
    const auto wrapper = Instance(false);
    EXPECT_EQ(S_OK, c.act(*wrapper));
    EXPECT_EQ(1, m_plan->Count(c.call));
}

INSTANTIATE_TEST_SUITE_P(Members, ReaderTest, testing::ValuesIn(Readers()), NameOf<MemberCase>);
INSTANTIATE_TEST_SUITE_P(Members, MemberTest, testing::ValuesIn(kMembers), NameOf<MemberCase>);

class PropertyTest : public FrameworkTest
{
  protected:
    const CCallPlan::CPut& Put(const std::function<HRESULT(CWomClassObject&)>& set)
    {
        EXPECT_EQ(S_OK, set(*m_instance));
        return m_plan->LastPut();
    }
    void TearDown() override { m_instance.Reset(); }

    ComPtr<CWomClassObject> m_instance = Instance();
};

TEST_F(PropertyTest, TheTypeComesFromTheClass)
{
    const auto& put = Put([](auto& o) { return o.SetProperty(L"Text", L"a\"b"); });
    EXPECT_EQ(L"Text", put.Name);
    EXPECT_EQ(0, put.Flags);
    EXPECT_EQ(0, put.Type);
    ASSERT_EQ(VT_BSTR, put.Value.vt);
    EXPECT_STREQ(L"a\"b", put.Value.bstrVal);
}

TEST_F(PropertyTest, NoTextIsAnEmptyText)
{
    const auto& put =
        Put([](auto& o) { return o.SetProperty(L"Text", static_cast<const wchar_t*>(nullptr)); });
    ASSERT_EQ(VT_BSTR, put.Value.vt);
    EXPECT_EQ(0u, SysStringLen(put.Value.bstrVal));
}

TEST_F(PropertyTest, NumbersTravelAsTheyAre)
{
    const auto& put = Put([](auto& o) { return o.SetProperty(L"Number", -2L); });
    EXPECT_EQ(VT_I4, put.Value.vt);
    EXPECT_EQ(-2, put.Value.lVal);
}

TEST_F(PropertyTest, A16BitValueTravelsAs32Bits)
{
    const auto& put = Put([](auto& o) { return o.SetProperty(L"Word", static_cast<unsigned short>(65535)); });
    EXPECT_EQ(VT_I4, put.Value.vt);
    EXPECT_EQ(65535, put.Value.lVal);
    DWORD stored = 0;
    EXPECT_EQ(S_OK, m_instance->GetProperty(L"Word", stored));
    EXPECT_EQ(65535u, stored);
}

TEST_F(PropertyTest, AByteTravelsAsAByte)
{
    const auto& put = Put([](auto& o) { return o.SetProperty(L"Byte", static_cast<unsigned char>(255)); });
    EXPECT_EQ(VT_UI1, put.Value.vt);
    EXPECT_EQ(255, put.Value.bVal);
}

TEST_F(PropertyTest, AnyValueButZeroIsTrue)
{
    const auto& yes = Put([](auto& o) { return o.SetPropertyBool(L"Flag", 2); });
    EXPECT_EQ(VT_BOOL, yes.Value.vt);
    EXPECT_EQ(VARIANT_TRUE, yes.Value.boolVal);
    const auto& no = Put([](auto& o) { return o.SetPropertyBool(L"Flag", FALSE); });
    EXPECT_EQ(VARIANT_FALSE, no.Value.boolVal);
}

TEST_F(PropertyTest, NullClearsTheProperty)
{
    Put([](auto& o) { return o.SetProperty(L"Text", L"x"); });
    EXPECT_EQ(VT_NULL, Put([](auto& o) { return o.SetPropertyNull(L"Text"); }).Value.vt);
    CBstr text;
    bool isNull = false;
    EXPECT_EQ(S_OK, m_instance->GetProperty(L"Text", text, &isNull));
    EXPECT_TRUE(isNull);
}

TEST_F(PropertyTest, TextsKeepTheirOrder)
{
    const auto& put = Put(
        [](auto& o) {
            return o.SetProperty(L"Texts", {CBstr(L"b"), CBstr(), CBstr(L"a")});
        });
    ASSERT_EQ(VT_ARRAY | VT_BSTR, put.Value.vt);
    const CSafeArrayView<BSTR> view(put.Value.parray, VT_BSTR);
    ASSERT_EQ(3u, view.Items().size());
    EXPECT_STREQ(L"b", view.Items()[0]);
    EXPECT_EQ(0u, SysStringLen(view.Items()[1]));
    EXPECT_STREQ(L"a", view.Items()[2]);
    EXPECT_EQ(0, put.Value.parray->rgsabound[0].lLbound);
}

TEST_F(PropertyTest, NumbersOfAnArrayKeepTheirOrder)
{
    const auto& put = Put([](auto& o) { return o.SetProperty(L"Numbers", std::vector<long>{3, -1}); });
    ASSERT_EQ(VT_ARRAY | VT_I4, put.Value.vt);
    const CSafeArrayView<LONG> view(put.Value.parray, VT_I4);
    ASSERT_EQ(2u, view.Items().size());
    EXPECT_EQ(3, view.Items()[0]);
    EXPECT_EQ(-1, view.Items()[1]);
}

TEST_F(PropertyTest, EmptyListsAreEmptyArrays)
{
    const auto& texts = Put([](auto& o) { return o.SetProperty(L"Texts", std::vector<CBstr>()); });
    ASSERT_EQ(VT_ARRAY | VT_BSTR, texts.Value.vt);
    EXPECT_EQ(0u, texts.Value.parray->rgsabound[0].cElements);
    const auto& numbers = Put([](auto& o) { return o.SetProperty(L"Numbers", std::vector<long>()); });
    ASSERT_EQ(VT_ARRAY | VT_I4, numbers.Value.vt);
    EXPECT_EQ(0u, numbers.Value.parray->rgsabound[0].cElements);
}

TEST_F(PropertyTest, GettersGiveWhatIsStored)
{
    m_instance->SetProperty(L"Text", L"key");
    m_instance->SetProperty(L"Number", -1L);
    m_instance->SetProperty(L"Byte", static_cast<unsigned char>(7));
    m_instance->SetPropertyBool(L"Flag", TRUE);

    bool isNull = true;
    CIMTYPE type = CIM_ILLEGAL;
    CBstr text;
    EXPECT_EQ(S_OK, m_instance->GetProperty(L"Text", text, &isNull, &type));
    EXPECT_EQ(L"key", text.View());
    EXPECT_FALSE(isNull);
    EXPECT_EQ(CIM_STRING, type);

    DWORD number = 0;
    isNull = true;
    EXPECT_EQ(S_OK, m_instance->GetProperty(L"Number", number, &isNull, &type));
    EXPECT_EQ(0xFFFFFFFFu, number);
    EXPECT_FALSE(isNull);
    EXPECT_EQ(CIM_SINT32, type);

    BYTE byte = 0;
    isNull = true;
    EXPECT_EQ(S_OK, m_instance->GetProperty(L"Byte", byte, &isNull, &type));
    EXPECT_EQ(7, byte);
    EXPECT_FALSE(isNull);
    EXPECT_EQ(CIM_UINT8, type);

    BOOL flag = FALSE;
    isNull = true;
    EXPECT_EQ(S_OK, m_instance->GetPropertyBool(L"Flag", flag, &isNull, &type));
    EXPECT_EQ(VARIANT_TRUE, flag);
    EXPECT_FALSE(isNull);
    EXPECT_EQ(CIM_BOOLEAN, type);
}

TEST_F(PropertyTest, ANullPropertyLeavesTheCallersValueAlone)
{
    CBstr text(L"mine");
    DWORD number = 42;
    BYTE byte = 42;
    BOOL flag = 42;
    for (const auto& get :
         std::initializer_list<std::function<HRESULT(bool*)>>{
             [&](bool* isNull) { return m_instance->GetProperty(L"Text", text, isNull); },
             [&](bool* isNull) { return m_instance->GetProperty(L"Number", number, isNull); },
             [&](bool* isNull) { return m_instance->GetProperty(L"Byte", byte, isNull); },
             [&](bool* isNull) { return m_instance->GetPropertyBool(L"Flag", flag, isNull); }})
    {
        bool isNull = false;
        EXPECT_EQ(S_OK, get(&isNull));
        EXPECT_TRUE(isNull);
        EXPECT_EQ(S_OK, get(nullptr));
    }
    EXPECT_EQ(L"mine", text.View());
    EXPECT_EQ(42u, number);
    EXPECT_EQ(42, byte);
    EXPECT_EQ(42, flag);
}

TEST_F(PropertyTest, ANumberIsNeverConvertedToText)
{
    m_instance->SetProperty(L"Number", 5L);
    CBstr text(L"mine");
    bool isNull = true;
    ExpectRaised(Thrown([&] { m_instance->GetProperty(L"Number", text, &isNull); }), 0x80040909, E_FAIL, 1832,
                 L"Tolva_Sample.Number");
    EXPECT_EQ(L"mine", text.View());
    EXPECT_TRUE(isNull);
}

TEST_F(PropertyTest, AnUnknownPropertyIsNotFound)
{
    m_instance->SetThrowing(false);
    CBstr text;
    EXPECT_EQ(WBEM_E_NOT_FOUND, static_cast<WBEMSTATUS>(m_instance->GetProperty(L"None", text)));
    EXPECT_EQ(WBEM_E_NOT_FOUND, static_cast<WBEMSTATUS>(m_instance->SetProperty(L"None", L"x")));
}

TEST_F(PropertyTest, ATextThatCannotBeCopiedIsRefusedByThePut)
{
    const CImportHook<decltype(&SysAllocString)> hook(
        __imp_SysAllocString, +[](const OLECHAR*) -> BSTR { return nullptr; });
    const auto e = Thrown([&] { m_instance->SetProperty(L"Text", L"x"); });
    EXPECT_EQ(VT_ERROR, m_plan->LastPut().Value.vt);
    EXPECT_EQ(E_OUTOFMEMORY, m_plan->LastPut().Value.scode);
    ASSERT_TRUE(e);
    EXPECT_EQ(657, e->Line());
    EXPECT_TRUE(FAILED(e->RequestResult()));
}

struct ArrayCase
{
    const char* name;
    const wchar_t* member;
    std::function<HRESULT(CWomClassObject&)> act;
    long create, element;
};
class ArrayTest : public PropertyTest, public testing::WithParamInterface<ArrayCase>
{
};

TEST_P(ArrayTest, AnArrayThatCannotBeMadeRaises)
{
    const CImportHook<decltype(&SafeArrayCreate)> hook(
        __imp_SafeArrayCreate, +[](VARTYPE, UINT, SAFEARRAYBOUND*) -> SAFEARRAY* { return nullptr; });
    ExpectRaised(Thrown([&] { GetParam().act(*m_instance); }), 0x80040905, E_FAIL, GetParam().create,
                 Described(L"Tolva_Sample", GetParam().member).c_str());
    EXPECT_EQ(0, m_plan->Count(Call::Put));
}

TEST_P(ArrayTest, AnElementThatCannotBePutRaises)
{
    const CImportHook<decltype(&SafeArrayPutElement)> hook(
        __imp_SafeArrayPutElement, +[](SAFEARRAY*, LONG*, void*) -> HRESULT { return E_OUTOFMEMORY; });
    ExpectRaised(Thrown([&] { GetParam().act(*m_instance); }), 0x80040906, E_FAIL, GetParam().element,
                 Described(L"Tolva_Sample", GetParam().member).c_str());
    EXPECT_EQ(0, m_plan->Count(Call::Put));
}

INSTANTIATE_TEST_SUITE_P(
    Arrays, ArrayTest,
    testing::Values(
        ArrayCase{"Texts", L"Texts",
                  [](auto& o) { return o.SetProperty(L"Texts", std::vector<CBstr>{CBstr(L"x")}); }, 770, 786},
        ArrayCase{"Numbers", L"Numbers",
                  [](auto& o) { return o.SetProperty(L"Numbers", std::vector<long>{1}); }, 954, 973}),
    NameOf<ArrayCase>);

struct ClassNameCase
{
    const char* name;
    VARTYPE type; // of "__CLASS"
    const wchar_t* description;
};
class DescriptionTest : public FrameworkTest, public testing::WithParamInterface<ClassNameCase>
{
};

TEST_P(DescriptionTest, StandsInForTheClassName)
{
    CVariant className;
    className.vt = GetParam().type;
    m_plan->Answer(L"__CLASS", std::move(className));
    const auto wrapper = Instance();
    m_plan->Fail(Call::Put, 1, kRefused);
    ExpectRaised(Thrown([&] { wrapper->SetProperty(L"Number", 1L); }), 0x80040901, kRefused, 711,
                 GetParam().description);
}

INSTANTIATE_TEST_SUITE_P(ClassNames, DescriptionTest,
                         testing::Values(ClassNameCase{"Null", VT_NULL, L"<null>.Number"},
                                         ClassNameCase{"OtherType", VT_I4, L"<no text>.Number"}),
                         NameOf<ClassNameCase>);

TEST_F(PropertyTest, AnUnreadableClassNameIsSaidToBe)
{
    m_plan->Fail(Call::Get, 2, kRefused);
    m_plan->Answer(L"Number", CVariant::FromText(L"no number"));
    DWORD number = 0;
    ExpectRaised(Thrown([&] { m_instance->GetProperty(L"Number", number); }), 0x80040909, E_FAIL, 1500,
                 L"<not readable>.Number");
}
} // namespace
