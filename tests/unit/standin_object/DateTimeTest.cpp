// Which texts are date-times: for a strict service, and for one that takes the contract's offsets.
#include "Common/src/com/WmiStatus.h"
#include "standin/object/DateTimeForm.h"
#include "standin/object/Strictness.h"
#include "tests/support/CaseName.h"
#include "tests/support/RegistryScope.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;

namespace
{
struct DateTimeCase
{
    const char* name;
    const wchar_t* text;
    bool strictly;
    bool withAnyOffset;
};

class DateTime : public testing::TestWithParam<DateTimeCase>
{
};
} // namespace

TEST_P(DateTime, HasItsForm)
{
    EXPECT_EQ(IsDateTime(GetParam().text, false), GetParam().strictly);
    EXPECT_EQ(IsDateTime(GetParam().text, true), GetParam().withAnyOffset);
}

// Each object reads the setting for itself.
TEST_P(DateTime, IsTakenAsTheSettingSays)
{
    CRegistryScope registry;
    CSafeArray array(SafeArrayCreateVector(VT_BSTR, 0, 1));
    CSafeArrayView<BSTR>(array.Get(), VT_BSTR).Items()[0] = CBstr(GetParam().text).Detach();
    CVariant texts = CVariant::FromArray(array.Detach(), VT_BSTR);
    for (const bool strict : {false, true})
    {
        if (strict)
            registry.SetNumber("SOFTWARE\\WMI stand-in", "Strict", 1);
        const auto parameters =
            MakeClassObject(sample::Class(L"__PARAMETERS", {sample::Property(L"When", CIM_DATETIME)}));
        const auto list =
            MakeInstance(sample::Class(L"C", {sample::Property(L"When", CIM_DATETIME | CIM_FLAG_ARRAY)}));
        const bool taken = strict ? GetParam().strictly : GetParam().withAnyOffset;
        EXPECT_EQ(sample::PutText(*parameters, L"When", GetParam().text), taken ? S_OK : wmi::TypeMismatch);
        EXPECT_EQ(list->Put(L"When", 0, &texts, 0), taken ? S_OK : wmi::TypeMismatch);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, DateTime,
    testing::Values(DateTimeCase{"West", L"20240229235959.123456-300", true, true},
                    DateTimeCase{"East", L"00010101000000.000000+000", true, true},
                    DateTimeCase{"Interval", L"99999999235959.000000:000", true, true},
                    DateTimeCase{"OffsetOfOneDigit", L"20240101000000.000000-0", false, true},
                    DateTimeCase{"OffsetOfTwoDigits", L"20240101000000.000000+60", false, true},
                    DateTimeCase{"TwoSigns", L"20240101000000.000000--60", false, true},
                    DateTimeCase{"TwoSignsAndThreeDigits", L"20240101000000.000000--120", false, true},
                    DateTimeCase{"OffsetOfFourDigits", L"20240101000000.000000+1000", false, true},
                    DateTimeCase{"PlusAndMinus", L"20240101000000.000000+-60", false, true},
                    DateTimeCase{"ThreeSigns", L"20240101000000.000000---6", false, false},
                    DateTimeCase{"NoOffset", L"20240101000000.000000+", false, false},
                    DateTimeCase{"NoDigitsInOffset", L"20240101000000.000000+abc", false, false},
                    DateTimeCase{"NoSign", L"20240101000000.000000", false, false},
                    DateTimeCase{"OtherSign", L"20240101000000.000000 060", false, false},
                    DateTimeCase{"NoFraction", L"20240101000000+060", false, false},
                    DateTimeCase{"ShortFraction", L"20240101000000.000+060", false, false},
                    DateTimeCase{"CommaForPoint", L"20240101000000,000000+060", false, false},
                    DateTimeCase{"Asterisks", L"********123000.000000+060", false, false},
                    DateTimeCase{"Month0", L"20240001000000.000000+060", false, false},
                    DateTimeCase{"Month13", L"20241301000000.000000+060", false, false},
                    DateTimeCase{"Day0", L"20240100000000.000000+060", false, false},
                    DateTimeCase{"Day32", L"20240132000000.000000+060", false, false},
                    DateTimeCase{"Hour24", L"20240101240000.000000+060", false, false},
                    DateTimeCase{"Minute60", L"20240101006000.000000+060", false, false},
                    DateTimeCase{"Second60", L"20240101000060.000000+060", false, false},
                    DateTimeCase{"IntervalHour24", L"00000001240000.000000:000", false, false},
                    DateTimeCase{"IntervalWithOffset", L"00000001000000.000000:060", false, false},
                    DateTimeCase{"ShortInterval", L"00000001000000.000000:00", false, false},
                    DateTimeCase{"Readable", L"2024-01-01 00:00:00", false, false},
                    DateTimeCase{"Empty", L"", false, false}),
    NameOf<DateTimeCase>);
