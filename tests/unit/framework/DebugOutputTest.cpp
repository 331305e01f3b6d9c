#include "Common/src/com/SafeArray.h"
#include "tests/support/CaseName.h"
#include "tests/unit/framework/FrameworkTest.h"
#include "tests/unit/framework/Imports.h"

#include <algorithm>
#include <functional>

using testing::ElementsAre;

namespace
{
constexpr HRESULT kRefused = static_cast<HRESULT>(0x80041017);

class DebugOutputTest : public FrameworkTest
{
  protected:
    // The dump's lines between entry and exit, without the system's properties.
    std::vector<std::string> Dump(CWomClassObject& wrapper)
    {
        const CTraceCapture trace;
        wrapper.DebugOutput();
        std::vector<std::string> lines = trace.Lines();
        EXPECT_EQ(" { --> CWomClassObject::DebugOutput", lines.front());
        EXPECT_EQ(" } <-- CWomClassObject::DebugOutput", lines.back());
        lines.erase(lines.begin());
        lines.pop_back();
        std::erase_if(lines, [](const std::string& line) { return line.starts_with("__"); });
        return lines;
    }
};

TEST_F(DebugOutputTest, WithoutAnObjectThereIsOneLine)
{
    EXPECT_THAT(Dump(*Wrapper()), ElementsAre("<null class object>"));
}

TEST_F(DebugOutputTest, ShowsEveryPropertyByNameWithItsValue)
{
    const auto instance = Instance();
    instance->SetProperty(L"Text", L"key");
    instance->SetProperty(L"Word", static_cast<unsigned short>(9));
    instance->SetProperty(L"Numbers", std::vector<long>{1, 2});
    EXPECT_THAT(Dump(*instance),
                ElementsAre("Byte = <null>", "Flag = <null>", "Nested = <null>", "Number = <null>",
                            "Numbers = ARRAY I4 1,2", "[key] Text = BSTR \"key\"", "Texts = <null>",
                            "Word = I4 9 (0x9)"));
}

TEST_F(DebugOutputTest, SortsTheNames)
{
    m_plan->AfterNames = [](SAFEARRAY* names)
    {
        const CSafeArrayView<BSTR> view(names, VT_BSTR);
        std::reverse(view.Items().begin(), view.Items().end());
    };
    EXPECT_THAT(Dump(*Instance()),
                ElementsAre("Byte = <null>", "Flag = <null>", "Nested = <null>", "Number = <null>",
                            "Numbers = <null>", "[key] Text = <null>", "Texts = <null>", "Word = <null>"));
    m_plan->AfterNames = nullptr;
}

TEST_F(DebugOutputTest, ShowsTheSystemsPropertiesButNotWhereTheObjectIs)
{
    const auto instance = Instance();
    standin::Decorate(instance->Object(), L"SERVER", L"root\\cimv2");
    const CTraceCapture trace;
    instance->DebugOutput();
    EXPECT_TRUE(trace.Has("__CLASS = BSTR \"Tolva_Sample\""));
    EXPECT_TRUE(trace.Has("__RELPATH = "));
    EXPECT_FALSE(trace.Has("__SERVER"));
    EXPECT_FALSE(trace.Has("__PATH"));
}

TEST_F(DebugOutputTest, AnEmbeddedObjectFollowsItsName)
{
    CVariant nested;
    nested.vt = VT_UNKNOWN;
    nested.punkVal = standin::MakeInstance(ExtendedStatusClass()).Detach();
    const auto instance = Instance();
    ASSERT_EQ(S_OK, instance->Object()->Put(L"Nested", 0, &nested, 0));
    const CTraceCapture trace;
    instance->DebugOutput();
    const std::vector<std::string> lines = trace.Lines();
    const auto name = std::find(lines.begin(), lines.end(), "Nested = object");
    ASSERT_NE(lines.end(), name);
    EXPECT_EQ("     { --> CWomClassObject::DebugOutput", name[1]);
    EXPECT_TRUE(trace.Has("__CLASS = BSTR \"Tolva_ExtendedStatus\""));
}

TEST_F(DebugOutputTest, EveryEmbeddedObjectOfAnArrayFollows)
{
    CSafeArray array(SafeArrayCreateVector(VT_UNKNOWN, 0, 2));
    for (LONG i = 0; i < 2; ++i)
    {
        const auto element = standin::MakeInstance(ExtendedStatusClass());
        ASSERT_EQ(S_OK, SafeArrayPutElement(array.Get(), &i, element.Get()));
    }
    m_plan->Answer(L"Nested", CVariant::FromArray(array.Detach(), VT_UNKNOWN));
    const CTraceCapture trace;
    Instance()->DebugOutput();
    EXPECT_EQ(2u, trace.Count("__CLASS = BSTR \"Tolva_ExtendedStatus\""));
    m_plan->Answer(L"Nested", CVariant::Null()); // releases the array
}

struct StepCase
{
    const char* name;
    const char* text;
    std::function<void(CCallPlan&)> fail;
};

// The array of names is at fault, not the objects, which use arrays of their own.
template <class Function>
std::function<void(CCallPlan&)> Hooked(Function& import, Function replacement)
{
    return [&import, replacement](CCallPlan& plan)
    {
        plan.AfterNames = [&import, replacement, hook = std::shared_ptr<void>()](SAFEARRAY*) mutable
        { hook = std::make_shared<CImportHook<Function>>(import, replacement); };
    };
}
std::function<void(CCallPlan&)> Planned(CCallPlan::Call call, int n)
{
    return [call, n](CCallPlan& plan) { plan.Fail(call, n, kRefused); };
}

HRESULT WINAPI RefuseBound(SAFEARRAY*, UINT, LONG*)
{
    return kRefused;
}
HRESULT WINAPI RefuseElement(SAFEARRAY*, LONG*, void*)
{
    return kRefused;
}

decltype(&SafeArrayGetElement) s_element;
int s_elements;
HRESULT WINAPI RefuseThirdElement(SAFEARRAY* array, LONG* index, void* element)
{
    return ++s_elements == 3 ? kRefused : s_element(array, index, element);
}

const StepCase kSteps[] = {
    {"Names", "Couldn't GetNames", Planned(CCallPlan::Call::GetNames, 1)},
    {"LowerBound", "Couldn't get safe array lbound", Hooked(__imp_SafeArrayGetLBound, &RefuseBound)},
    {"UpperBound", "Couldn't get safe array ubound", Hooked(__imp_SafeArrayGetUBound, &RefuseBound)},
    {"Element", "Couldn't get safe array element", Hooked(__imp_SafeArrayGetElement, &RefuseElement)},
    {"Qualifiers", "Could not GetPropertyQualifierSet", Planned(CCallPlan::Call::GetPropertyQualifierSet, 1)},
    {"Key", "Could not get key qualifier", Planned(CCallPlan::Call::GetQualifier, 1)},
    {"CimType", "Could not get CIMTYPE qualifier", Planned(CCallPlan::Call::GetQualifier, 2)},
    {"Value", "Couldn't get Property Value", Planned(CCallPlan::Call::Get, 1)},
};

class DebugStepTest : public DebugOutputTest, public testing::WithParamInterface<StepCase>
{
  protected:
    void TearDown() override { m_plan->AfterNames = nullptr; }
};

TEST_P(DebugStepTest, AFailingStepRaises)
{
    const auto instance = Instance();
    GetParam().fail(*m_plan);
    const CTraceCapture trace;
    const auto e = Thrown([&] { instance->DebugOutput(); });
    ASSERT_TRUE(e);
    EXPECT_EQ(static_cast<HRESULT>(0x8004090E), e->StatusCode());
    EXPECT_EQ(kRefused, e->RequestResult());
    EXPECT_STREQ(GetParam().text, e->MessageText());
    EXPECT_STREQ(L"CWomClassObject::DebugOutput", e->ParameterInfo());
    EXPECT_EQ(" } <-- CWomClassObject::DebugOutput", trace.Lines().back());
}

TEST_P(DebugStepTest, WithTheSwitchOffAFailingStepIsTraced)
{
    const auto instance = Instance(false);
    GetParam().fail(*m_plan);
    const CTraceCapture trace;
    instance->DebugOutput();
    EXPECT_EQ(1u, trace.Count("Exception not thrown:"));
    EXPECT_TRUE(trace.Has("Info: 0x8004090e CWomClassObject::DebugOutput Common/src/WomClassObject "));
}

// Each of them with the third property.
const StepCase kThirdSteps[] = {
    {"Element", "Couldn't get safe array element", Hooked(__imp_SafeArrayGetElement, &RefuseThirdElement)},
    {"Qualifiers", "Could not GetPropertyQualifierSet", Planned(CCallPlan::Call::GetPropertyQualifierSet, 3)},
    {"Key", "Could not get key qualifier", Planned(CCallPlan::Call::GetQualifier, 5)},
    {"CimType", "Could not get CIMTYPE qualifier", Planned(CCallPlan::Call::GetQualifier, 6)},
    {"Value", "Couldn't get Property Value", Planned(CCallPlan::Call::Get, 3)},
};

class LaterDebugStepTest : public DebugStepTest
{
};

TEST_P(LaterDebugStepTest, KeepsTheLinesBeforeIt)
{
    s_element = __imp_SafeArrayGetElement;
    s_elements = 0;
    const auto instance = Instance();
    GetParam().fail(*m_plan);
    const CTraceCapture trace;
    const auto e = Thrown([&] { instance->DebugOutput(); });
    ASSERT_TRUE(e);
    EXPECT_STREQ(GetParam().text, e->MessageText());
    const std::vector<std::string> lines = trace.Lines();
    ASSERT_LE(3u, lines.size());
    EXPECT_EQ("Byte = <null>", lines[1]);
    EXPECT_EQ("Flag = <null>", lines[2]);
    EXPECT_FALSE(trace.Has("Nested"));
}

INSTANTIATE_TEST_SUITE_P(Steps, LaterDebugStepTest, testing::ValuesIn(kThirdSteps), NameOf<StepCase>);
INSTANTIATE_TEST_SUITE_P(Steps, DebugStepTest, testing::ValuesIn(kSteps), NameOf<StepCase>);
} // namespace
