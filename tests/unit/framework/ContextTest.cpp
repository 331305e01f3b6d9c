#include "Common/src/WomContext.h"

#include "Common/src/com/Variant.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/Objects.h"
#include "tests/support/CaseName.h"
#include "tests/support/FakeCallContext.h"
#include "tests/support/FakeResources.h"
#include "tests/support/FakeServices.h"
#include "tests/support/TraceCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

using testing::ElementsAre;

namespace
{
constexpr LCID kDefault = 0x411;

ComPtr<IWbemContext> Caller(std::initializer_list<std::pair<const wchar_t*, const wchar_t*>> values)
{
    auto caller = standin::MakeContext();
    for (const auto& [name, value] : values)
    {
        CVariant text = CVariant::FromText(value);
        EXPECT_EQ(S_OK, caller->SetValue(name, 0, &text));
    }
    return caller;
}

CWomContext Context(IWbemContext* caller, CZebImpResourceMgr* resources = nullptr)
{
    return CWomContext(caller, kDefault, L"PROVIDER", L"Operation", resources, nullptr, 0, false);
}

TEST(Context, GivesBackWhatItWasMadeFrom)
{
    const auto caller = Caller({});
    const auto services = MakeCom<CFakeServices>(nullptr);
    CFakeResources resources;
    const CWomContext context(caller.Get(), kDefault, L"PROVIDER", L"Operation", &resources, services.Get(),
                              5, true);
    EXPECT_STREQ(L"PROVIDER", context.ProviderName());
    EXPECT_STREQ(L"Operation", context.OperationName());
    EXPECT_EQ(services.Get(), context.Namespace());
    EXPECT_EQ(caller.Get(), context.CallerContext());
    EXPECT_EQ(&resources, context.Resources());
    EXPECT_EQ(5, context.Flags());
    EXPECT_TRUE(context.CimKeyMode());
    EXPECT_TRUE(context.Security().Enabled());
}

TEST(Context, HoldsItsReferencesAsLongAsItLives)
{
    const long before = g_liveComObjects;
    {
        auto services = MakeCom<CFakeServices>(nullptr);
        auto caller = Caller({});
        const CWomContext context(caller.Get(), kDefault, L"", L"", nullptr, services.Get(), 0, false);
        const long held = g_liveComObjects;
        services.Reset();
        caller.Reset();
        EXPECT_EQ(held, g_liveComObjects);
    }
    EXPECT_EQ(before, g_liveComObjects);
}

TEST(Context, ConstructionIsTraced)
{
    const auto caller = Caller({});
    const CTraceCapture trace;
    const CWomContext context = Context(caller.Get());
    char pointer[40];
    _snprintf(pointer, sizeof(pointer), "Context %p", static_cast<void*>(caller.Get()));
    EXPECT_THAT(trace.Lines(),
                ElementsAre(" { --> CWomContext::CWomContext", pointer, " } <-- CWomContext::CWomContext"));
}

TEST(Context, TheSessionHandleComesFromTheCaller)
{
    EXPECT_STREQ(L"{42}", Context(Caller({{L"SessionHandle", L"{42}"}}).Get()).SessionHandle());
}

TEST(Context, ACallerWithoutASessionHandleHasAnEmptyOne)
{
    EXPECT_STREQ(L"", Context(Caller({}).Get()).SessionHandle());
    EXPECT_STREQ(L"", Context(nullptr).SessionHandle());
}

TEST(Context, NamedValuesAreTexts)
{
    const auto caller = Caller({{L"Name", L"value"}});
    CVariant number = CVariant::FromLong(7);
    ASSERT_EQ(S_OK, caller->SetValue(L"Number", 0, &number));
    CVariant null = CVariant::Null();
    ASSERT_EQ(S_OK, caller->SetValue(L"Null", 0, &null));

    const CWomContext context = Context(caller.Get());
    CBstr value;
    EXPECT_EQ(S_OK, context.GetNamedValue(L"Name", value));
    EXPECT_EQ(L"value", value.View());
    EXPECT_EQ(S_OK, context.GetNamedValue(L"Number", value));
    EXPECT_EQ(L"7", value.View());
    EXPECT_EQ(wmi::NotFound, context.GetNamedValue(L"None", value));
    EXPECT_EQ(wmi::TypeMismatch, context.GetNamedValue(L"Null", value));
    EXPECT_EQ(L"7", value.View());
    EXPECT_EQ(wmi::NotFound, Context(nullptr).GetNamedValue(L"Name", value));
}

struct LocaleCase
{
    const char* name;
    const wchar_t* id; // null: the caller names none
    LCID locale;
};
class ContextLocaleTest : public testing::TestWithParam<LocaleCase>
{
};

TEST_P(ContextLocaleTest, ComesFromTheCaller)
{
    const auto caller = standin::MakeContext();
    if (GetParam().id)
    {
        CVariant id = CVariant::FromText(GetParam().id);
        ASSERT_EQ(S_OK, caller->SetValue(L"LocaleID", 0, &id));
    }
    const CWomContext context = Context(caller.Get());
    EXPECT_EQ(GetParam().locale, context.Locale());
    EXPECT_EQ(GetParam().locale, context.Locale());
}

INSTANTIATE_TEST_SUITE_P(
    Locales, ContextLocaleTest,
    testing::Values(LocaleCase{"LowerCase", L"ms_407", 0x407}, LocaleCase{"UpperCase", L"MS_409", 0x409},
                    LocaleCase{"MixedCase", L"Ms_40a", 0x40A}, LocaleCase{"Absent", nullptr, kDefault},
                    LocaleCase{"OtherForm", L"de-DE", kDefault}, LocaleCase{"PrefixAlone", L"MS_", kDefault},
                    LocaleCase{"PrefixInside", L"XMS_407", kDefault}, LocaleCase{"Empty", L"", kDefault}),
    NameOf<LocaleCase>);

TEST(Context, TheCallersLocaleIsTraced)
{
    const auto caller = Caller({{L"LocaleID", L"ms_407"}});
    const CWomContext context = Context(caller.Get());
    const CTraceCapture trace;
    context.Locale();
    EXPECT_THAT(trace.Lines(), ElementsAre("Locale: 407"));
}

TEST(Context, AnOverrideComesBeforeTheCallersLocale)
{
    const auto caller = Caller({{L"LocaleID", L"ms_407"}});
    CWomContext context = Context(caller.Get());
    context.SetLocale(0x40C);
    EXPECT_EQ(0x40Cu, context.Locale());
    context.SetLocale(0);
    EXPECT_EQ(0x407u, context.Locale());
}

TEST(Context, WithoutACallersContextTheDefaultLocaleHolds)
{
    EXPECT_EQ(kDefault, Context(nullptr).Locale());
}

TEST(Context, ResourceStringsAreOfTheCallersLocale)
{
    CFakeResources resources;
    resources.Texts[{"_8023", 7}] = "text";
    const auto caller = Caller({{L"LocaleID", L"ms_407"}});
    const CWomContext context = Context(caller.Get(), &resources);
    CBstr text;
    EXPECT_EQ(S_OK, context.GetResourceString(7, "_8023", text));
    EXPECT_EQ(L"text", text.View());
    EXPECT_THAT(resources.Locales, ElementsAre(0x407u));
    EXPECT_EQ(S_OK, context.GetResourceString(8, "_8023", text));
    EXPECT_EQ(L"No string found. Id 8 DLL _8023 Locale 407", text.View());
}

TEST(Context, AResourceStringThatCannotBeWidenedFails)
{
    class CUnwidened final : public CZebImpResourceMgr
    {
        CBstr GetStringBstr(LCID, UINT, const char*) override { return CBstr(); }
    } resources;
    CBstr text(L"before");
    EXPECT_EQ(E_FAIL, Context(nullptr, &resources).GetResourceString(7, "_8023", text));
    EXPECT_FALSE(text);
    EXPECT_EQ(E_FAIL, Context(nullptr).GetResourceString(7, "_8023", text));
}

TEST(ContextDebug, SaysThatThereIsNoCallersContext)
{
    const CWomContext context = Context(nullptr);
    const CTraceCapture trace;
    context.DebugOutput();
    EXPECT_THAT(trace.Lines(), ElementsAre(" { --> CWomContext::DebugOutput", "<null> context",
                                           " } <-- CWomContext::DebugOutput"));
}

TEST(ContextDebug, ShowsEveryValueAndImpersonatesTheClient)
{
    const auto caller = Caller({{L"LocaleID", L"ms_407"}});
    CVariant number = CVariant::FromLong(7);
    ASSERT_EQ(S_OK, caller->SetValue(L"Number", 0, &number));
    const CWomContext context = Context(caller.Get());
    const auto call = MakeCom<CFakeCallContext>();
    CCallContextScope scope(*call);
    const CTraceCapture trace;
    context.DebugOutput();
    EXPECT_EQ(1, call->Impersonations);
    EXPECT_THAT(trace.Lines(), ElementsAre(" { --> CWomContext::DebugOutput", "LocaleID = BSTR \"ms_407\"",
                                           "Number = I4 7 (0x7)", " } <-- CWomContext::DebugOutput"));
}

// The caller's values, and when their enumeration begins.
class CNotingContext final : public CComObject<IWbemContext>
{
  public:
    CNotingContext(ComPtr<IWbemContext> inner, std::vector<std::string>& notes)
        : m_inner(std::move(inner)), m_notes(notes)
    {
    }
    STDMETHODIMP Clone(IWbemContext** copy) override { return m_inner->Clone(copy); }
    STDMETHODIMP GetNames(LONG flags, SAFEARRAY** names) override { return m_inner->GetNames(flags, names); }
    STDMETHODIMP BeginEnumeration(LONG flags) override
    {
        m_notes.push_back("begin");
        return m_inner->BeginEnumeration(flags);
    }
    STDMETHODIMP Next(LONG flags, BSTR* name, VARIANT* value) override
    {
        m_notes.push_back("next");
        return m_inner->Next(flags, name, value);
    }
    STDMETHODIMP EndEnumeration() override
    {
        m_notes.push_back("end");
        return m_inner->EndEnumeration();
    }
    STDMETHODIMP SetValue(LPCWSTR name, LONG flags, VARIANT* value) override
    {
        return m_inner->SetValue(name, flags, value);
    }
    STDMETHODIMP GetValue(LPCWSTR name, LONG flags, VARIANT* value) override
    {
        return m_inner->GetValue(name, flags, value);
    }
    STDMETHODIMP DeleteValue(LPCWSTR name, LONG flags) override { return m_inner->DeleteValue(name, flags); }
    STDMETHODIMP DeleteAll() override { return m_inner->DeleteAll(); }

  private:
    ComPtr<IWbemContext> m_inner;
    std::vector<std::string>& m_notes;
};

TEST(ContextDebug, BeginsTheEnumerationAndThenImpersonates)
{
    std::vector<std::string> notes;
    const auto caller = MakeCom<CNotingContext>(Caller({{L"Name", L"value"}}), notes);
    const CWomContext context = Context(caller.Get());
    const auto call = MakeCom<CFakeCallContext>();
    call->OnImpersonate = [&] { notes.push_back("impersonate"); };
    CCallContextScope scope(*call);
    const CTraceCapture trace; // opens the trace, so that there is a dump
    context.DebugOutput();
    EXPECT_THAT(notes, ElementsAre("begin", "impersonate", "next", "next", "end"));
}

TEST(ContextDebug, EndsTheEnumeration)
{
    const auto caller = Caller({{L"Name", L"value"}});
    const CWomContext context = Context(caller.Get());
    context.DebugOutput();
    CBstr name;
    CVariant value;
    EXPECT_TRUE(FAILED(caller->Next(0, name.Put(), value.Put())));
}
} // namespace
