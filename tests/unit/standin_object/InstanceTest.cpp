// Instances: spawning, putting, getting, system properties.
#include "Common/src/com/SafeArray.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/Objects.h"
#include "tests/unit/standin_object/SampleClass.h"

#include <gtest/gtest.h>

using namespace standin;

namespace
{
std::wstring Text(IWbemClassObject& object, const wchar_t* name)
{
    CVariant value;
    EXPECT_EQ(object.Get(name, 0, &value, nullptr, nullptr), S_OK);
    if (value.vt == VT_NULL)
        return L"<null>";
    EXPECT_EQ(value.vt, VT_BSTR);
    return value.vt == VT_BSTR ? value.bstrVal : L"<other type>";
}

HRESULT PutText(IWbemClassObject& object, const wchar_t* name, const wchar_t* text)
{
    CVariant value = CVariant::FromText(text);
    return object.Put(name, 0, &value, 0);
}
} // namespace

TEST(Instance, HoldsWhatIsPut)
{
    const auto lamp = MakeInstance(sample::Lamp());
    EXPECT_EQ(PutText(*lamp, L"nAME", L"desk"), S_OK);
    EXPECT_EQ(Text(*lamp, L"Name"), L"desk");
    CVariant watts = CVariant::FromLong(40);
    EXPECT_EQ(lamp->Put(L"Watts", 0, &watts, 0), S_OK);
    CVariant read;
    CIMTYPE type = 0;
    LONG flavor = -1;
    EXPECT_EQ(lamp->Get(L"Watts", 0, &read, &type, &flavor), S_OK);
    EXPECT_EQ(read.vt, VT_I4);
    EXPECT_EQ(read.lVal, 40);
    EXPECT_EQ(type, CIM_UINT16);
    EXPECT_EQ(flavor, WBEM_FLAVOR_ORIGIN_LOCAL);
}

TEST(Instance, RefusesUnknownProperties)
{
    const auto lamp = MakeInstance(sample::Lamp());
    EXPECT_EQ(PutText(*lamp, L"Weight", L"1"), wmi::NotFound);
    EXPECT_EQ(lamp->Get(L"Weight", 0, nullptr, nullptr, nullptr), wmi::NotFound);
}

TEST(Instance, TellsWhereItIs)
{
    const auto lamp = MakeInstance(sample::Lamp());
    EXPECT_EQ(Text(*lamp, L"__RELPATH"), L"<null>");
    PutText(*lamp, L"Name", L"a \"b\" \\c");
    EXPECT_EQ(Text(*lamp, L"__RELPATH"), L"Lamp.Name=\"a \\\"b\\\" \\\\c\"");
    EXPECT_EQ(Text(*lamp, L"__PATH"), L"<null>");
    EXPECT_EQ(Decorate(lamp.Get(), L"PC", L"root\\cimv2"), S_OK);
    EXPECT_EQ(Text(*lamp, L"__PATH"), L"\\\\PC\\root\\cimv2:Lamp.Name=\"a \\\"b\\\" \\\\c\"");
}
