// The values that go along with a call.
#include "Common/src/com/WmiStatus.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;

namespace
{
HRESULT Set(IWbemContext& context, const wchar_t* name, const wchar_t* text)
{
    CVariant value = CVariant::FromText(text);
    return context.SetValue(name, 0, &value);
}

std::wstring Get(IWbemContext& context, const wchar_t* name)
{
    CVariant value;
    return context.GetValue(name, 0, &value) == S_OK && value.vt == VT_BSTR ? value.bstrVal : L"<none>";
}
} // namespace

TEST(Context, KeepsValuesByNameWithoutCase)
{
    const auto context = MakeContext();
    EXPECT_EQ(Set(*context, L"LocaleID", L"ms_409"), S_OK);
    EXPECT_EQ(Set(*context, L"localeid", L"ms_407"), S_OK);
    EXPECT_EQ(Get(*context, L"LOCALEID"), L"ms_407");
    CVariant value;
    EXPECT_EQ(context->GetValue(L"Other", 0, &value), wmi::NotFound);
}

TEST(Context, IsEnumeratedAndCloned)
{
    const auto context = MakeContext();
    Set(*context, L"B", L"1");
    Set(*context, L"A", L"2");
    CBstr name;
    CVariant value;
    EXPECT_EQ(context->Next(0, name.Put(), &value), static_cast<HRESULT>(WBEM_E_UNEXPECTED));
    ASSERT_EQ(context->BeginEnumeration(0), S_OK);
    ASSERT_EQ(context->Next(0, name.Put(), &value), S_OK);
    EXPECT_EQ(name.View(), L"B");
    EXPECT_STREQ(value.bstrVal, L"1");
    ASSERT_EQ(context->Next(0, name.Put(), value.Put()), S_OK);
    EXPECT_EQ(context->Next(0, name.Put(), value.Put()), WBEM_S_NO_MORE_DATA);
    EXPECT_EQ(context->EndEnumeration(), S_OK);
    ComPtr<IWbemContext> copy;
    ASSERT_EQ(context->Clone(copy.Put()), S_OK);
    Set(*context, L"A", L"3");
    EXPECT_EQ(Get(*copy, L"A"), L"2");
}

TEST(Context, HoldsAnyValueAndRefusesBadArguments)
{
    const auto context = MakeContext();
    CVariant number = CVariant::FromLong(5);
    CVariant nothing = CVariant::Null();
    CVariant empty;
    EXPECT_EQ(context->SetValue(L"N", 0, &number), S_OK);
    EXPECT_EQ(context->SetValue(L"Null", 0, &nothing), S_OK);
    EXPECT_EQ(context->SetValue(L"E", 0, &empty), wmi::InvalidParameter);
    EXPECT_EQ(context->SetValue(nullptr, 0, &number), wmi::InvalidParameter);
    EXPECT_EQ(context->SetValue(L"N", 1, &number), wmi::InvalidParameter);
    EXPECT_EQ(context->GetValue(L"N", 0, nullptr), wmi::InvalidParameter);
    CVariant read;
    EXPECT_EQ(context->GetValue(L"N", 0, &read), S_OK);
    EXPECT_EQ(read.lVal, 5);
}
