// What the tests of class objects and exceptions have in common: a name space with two classes whose objects
// follow a plan of failures, and a call context on it.
#pragma once

#include "Common/src/WomClassCache.h"
#include "Common/src/WomClassObject.h"
#include "Common/src/WomProviderException.h"
#include "standin/object/Objects.h"
#include "tests/support/FailingClassObject.h"
#include "tests/support/FakeResources.h"
#include "tests/support/FakeServices.h"
#include "tests/support/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

inline standin::CPropertyDefinition Property(const wchar_t* name, CIMTYPE type, bool key = false)
{
    standin::CPropertyDefinition property;
    property.Name = name;
    property.Type = type;
    property.Default = CVariant::Null();
    if (key)
        property.Qualifiers.Set(standin::MakeQualifier(L"key", CVariant::FromBool(true)));
    return property;
}

// Has a property of every type that the wrapper knows, named after it, and a method "Run".
inline standin::ClassDefinition SampleClass()
{
    auto definition = std::make_shared<standin::CClassDefinition>(L"Tolva_Sample");
    definition->SetProperty(Property(L"Text", CIM_STRING, true));
    definition->SetProperty(Property(L"Number", CIM_SINT32));
    definition->SetProperty(Property(L"Word", CIM_UINT16));
    definition->SetProperty(Property(L"Byte", CIM_UINT8));
    definition->SetProperty(Property(L"Flag", CIM_BOOLEAN));
    definition->SetProperty(Property(L"Texts", CIM_STRING | CIM_FLAG_ARRAY));
    definition->SetProperty(Property(L"Numbers", CIM_SINT32 | CIM_FLAG_ARRAY));
    definition->SetProperty(Property(L"Nested", CIM_OBJECT));

    auto out = std::make_shared<standin::CClassDefinition>(L"__PARAMETERS");
    out->SetProperty(Property(L"ReturnValue", CIM_UINT32));
    standin::CMethodDefinition method;
    method.Name = L"Run";
    method.Out = out;
    definition->SetMethod(method);
    method.Name = L"Mute";
    method.Out = nullptr;
    definition->SetMethod(method);
    return definition;
}

inline standin::ClassDefinition ExtendedStatusClass()
{
    auto definition = std::make_shared<standin::CClassDefinition>(L"Tolva_ExtendedStatus");
    for (const wchar_t* text :
         {L"Description", L"Operation", L"ParameterInfo", L"ProviderName", L"File", L"SessionHandle"})
        definition->SetProperty(Property(text, CIM_STRING));
    definition->SetProperty(Property(L"StatusCode", CIM_UINT32));
    definition->SetProperty(Property(L"Line", CIM_SINT32));
    definition->SetProperty(Property(L"RuleFailureReasons", CIM_STRING | CIM_FLAG_ARRAY));
    return definition;
}

class FrameworkTest : public testing::Test
{
  protected:
    using Call = CCallPlan::Call;

    FrameworkTest()
    {
        m_resources.Texts = {{{"_NWR", 1000}, "<no object>"},
                             {{"_NWR", 1001}, "<not readable>"},
                             {{"_NWR", 1002}, "<null>"},
                             {{"_NWR", 1003}, "<no text>"}};
    }
    // Every test ends with as many objects as it began with.
    ~FrameworkTest() override
    {
        m_context.reset();
        m_services.Reset();
        WomClassCache::Drop();
        m_plan.reset(); // remembers values
        EXPECT_EQ(m_objectsBefore, g_liveComObjects);
    }

    static ComPtr<CFakeServices> MakeServices(const CallPlan& plan)
    {
        return MakeCom<CFakeServices>(
            [plan](const std::wstring& path)
            {
                const standin::ClassDefinition definition = path == L"Tolva_Sample" ? SampleClass()
                                                            : path == L"Tolva_ExtendedStatus"
                                                                ? ExtendedStatusClass()
                                                                : nullptr;
                return definition ? ComPtr<IWbemClassObject>(MakeCom<CFailingClassObject>(
                                        standin::MakeClassObject(definition), plan))
                                  : ComPtr<IWbemClassObject>();
            });
    }
    // A context of one request; the test's own is the one that Wrapper uses.
    std::unique_ptr<CWomContext> MakeContext(IWbemContext* caller = nullptr,
                                             IWbemServices* services = nullptr)
    {
        return std::make_unique<CWomContext>(caller, 0x409, L"DREVOK_PROVIDER", L"GetObjectAsync",
                                             &m_resources, services ? services : m_services.Get(), 0, false);
    }
    ComPtr<CWomClassObject> Wrapper(bool throwing = true)
    {
        ComPtr<CWomClassObject> wrapper;
        wrapper.Attach(new CWomClassObject(m_context.get()));
        wrapper->SetThrowing(throwing);
        return wrapper;
    }
    ComPtr<CWomClassObject> Instance(bool throwing = true)
    {
        auto wrapper = Wrapper(throwing);
        EXPECT_EQ(S_OK, wrapper->CreateInstance(L"Tolva_Sample"));
        return wrapper;
    }

    // What the body throws; nothing where it throws nothing.
    template <class Body>
    static std::optional<CWomProviderException> Thrown(Body&& body)
    {
        try
        {
            body();
        }
        catch (const CWomProviderException& e)
        {
            return e;
        }
        return std::nullopt;
    }

    long m_objectsBefore = g_liveComObjects;
    CallPlan m_plan = std::make_shared<CCallPlan>();
    CFakeResources m_resources;
    ComPtr<CFakeServices> m_services = MakeServices(m_plan);
    std::unique_ptr<CWomContext> m_context = MakeContext();
};

// A failure as the provider's barrier sees it.
inline void ExpectRaised(const std::optional<CWomProviderException>& e, DWORD status, HRESULT result,
                         long line, const wchar_t* description)
{
    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(static_cast<HRESULT>(status), e->StatusCode());
    EXPECT_EQ(result, e->RequestResult());
    EXPECT_STREQ("Common/src/WomClassObject", e->SourceFile());
    EXPECT_EQ(line, e->Line());
    EXPECT_STREQ(description, e->ParameterInfo());
    EXPECT_EQ(std::string(e->MessageText()), std::string(description, description + wcslen(description)));
    EXPECT_TRUE(e->Reasons().empty());
}
