#include "standin/object/Objects.h"
#include "tests/support/ImportHook.h"
#include "tests/unit/provider/ProviderTest.h"

#include <algorithm>

ZEB_HOOKED_IMPORT("kernel32.dll", GetSystemDefaultLCID)

namespace
{
using Method = CFakeAgent::Method;

LCID g_systemLocale = 0x409;
LCID WINAPI SystemLocale()
{
    return g_systemLocale;
}

class InitializeTest : public ProviderTest
{
  protected:
    ~InitializeTest() override { g_systemLocale = 0x409; }

  private:
    const CImportHook<decltype(__imp_GetSystemDefaultLCID)> m_hook{__imp_GetSystemDefaultLCID, &SystemLocale};
};

// The lines that are looked for, in the order in which they were written.
std::vector<std::string> InOrder(const CTraceCapture& trace, const std::vector<std::string>& wanted)
{
    std::vector<std::string> found;
    for (const std::string& line : trace.Lines())
        for (const std::string& text : wanted)
            if (line.find(text) != std::string::npos)
                found.push_back(text);
    return found;
}

TEST_F(InitializeTest, ReportsInitialized)
{
    const CTraceCapture trace;
    EXPECT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED);
    const std::vector<std::string> steps = {
        "{ --> CProviderImp::Initialize",
        "{ --> CWomSecurity::OutputSecurityDebug",
        "Initialize user HALVERN\\tester locale ms_409",
        "{ --> CVormAgentMgr::Initialize",
        "ENU_NWR.dll",
        "ENU_8023.dll",
        "ENUDiag.dll",
        "Sending INITIALIZED",
        "{ --> CWomSecurity::RevertToSelf",
        "} <-- CProviderImp::Initialize",
    };
    std::vector<std::string> seen = InOrder(trace, steps);
    seen.erase(std::unique(seen.begin(), seen.end()), seen.end());
    // Reverting shows the security state once more.
    std::vector<std::string> expected = steps;
    expected.insert(expected.end() - 1, "{ --> CWomSecurity::OutputSecurityDebug");
    EXPECT_EQ(seen, expected);
    EXPECT_FALSE(trace.Has("CoImpersonateClient")) << "initialisation does not impersonate";
}

TEST_F(InitializeTest, EnglishStandsInForALanguageWithoutLibraries)
{
    g_systemLocale = 0x40C;
    const CTraceCapture trace;
    EXPECT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED);
    const std::vector<std::string> steps = {
        "FRA_NWR.dll", "ENU_NWR.dll", "FRA_8023.dll",        "ENU_8023.dll",
        "FRADiag.dll", "ENUDiag.dll", "Sending INITIALIZED",
    };
    std::vector<std::string> seen = InOrder(trace, steps);
    seen.erase(std::unique(seen.begin(), seen.end()), seen.end());
    EXPECT_EQ(seen, steps);
}

// What the next enumeration's context gives.
template <class Value>
class CSeen
{
  public:
    explicit CSeen(std::function<Value(CWomContext&)> read) : m_read(std::move(read)) {}
    Value In(CInProcessProvider& host, CProbeScript& probe)
    {
        Value seen{};
        probe.Enumerate = [&](CWomContext& context, IWbemObjectSink*)
        {
            seen = m_read(context);
            return S_OK;
        };
        EXPECT_EQ(S_OK, host.Provider->CreateInstanceEnumAsync(Bstr(L"Tolva_DiagTest").Get(), 0, nullptr,
                                                               MakeCom<CFakeSink>().Get()));
        return seen;
    }

  private:
    std::function<Value(CWomContext&)> m_read;
};

TEST_F(InitializeTest, EveryCallTakesTheSystemsLocaleAsTheDefault)
{
    CSeen<LCID> locale([](CWomContext& context) { return context.Locale(); });
    for (const LCID system : {0x40Cu, 0x407u})
    {
        g_systemLocale = system;
        EXPECT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED);
        EXPECT_EQ(locale.In(m_host, m_probe), system);
    }
}

TEST_F(InitializeTest, TheSystemsLibrariesStandInForLanguagesOfClients)
{
    EXPECT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED);
    for (const auto& [baseName, number] : {std::pair{"_NWR", 1000u}, {"_8023", 3501u}, {"Diag", 3u}})
    {
        CSeen<std::string> text([&](CWomContext& context)
                                { return context.Resources()->GetString(0x40C, number, baseName); });
        EXPECT_FALSE(text.In(m_host, m_probe).starts_with("No string found")) << baseName;
    }
}

TEST_F(InitializeTest, TheAgentIsAskedForItsTextsInEnglish)
{
    g_systemLocale = 0x40C;
    m_host.Initialize();
    const auto calls = m_host.Agent->Calls();
    const auto call =
        std::find_if(calls.begin(), calls.end(), [](const auto& c) { return c.What == Method::Initialize; });
    ASSERT_NE(calls.end(), call);
    EXPECT_EQ(call->TestID, 1033u);
}

TEST_F(InitializeTest, SecondCallReportsInitializedAndCreatesNothing)
{
    m_host.Initialize();
    const int calls = static_cast<int>(m_host.Agent->Calls().size());
    const CTraceCapture trace;
    EXPECT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED);
    EXPECT_EQ(trace.Count("Second call to CProviderImp::Initialize"), 1u);
    EXPECT_EQ(trace.Count("Sending INITIALIZED"), 1u);
    EXPECT_EQ(static_cast<int>(m_host.Agent->Calls().size()), calls);
}

TEST_F(InitializeTest, SecondCallReportsInitializedEvenIfTheFirstFailed)
{
    m_host.Agent->Fail(Method::Initialize, 1, E_ACCESSDENIED);
    EXPECT_EQ(m_host.Initialize(), wmi::Failed);
    const size_t calls = m_host.Agent->Calls().size();
    EXPECT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED);
    EXPECT_EQ(m_host.Agent->Calls().size(), calls);
    // There are still no handlers.
    EXPECT_EQ(Make(kRequests[0]), wmi::Failed);
    EXPECT_TRUE(m_sink->Statuses().empty());
}

struct FailingCall
{
    const char* name;
    Method method;
    bool throws;
    const char* line;
};

class FailingAgentTest : public InitializeTest, public testing::WithParamInterface<FailingCall>
{
};

TEST_P(FailingAgentTest, ReportsFailed)
{
    if (GetParam().throws)
        m_host.Agent->Throw(GetParam().method, 1);
    else
        m_host.Agent->Fail(GetParam().method, 1, E_ACCESSDENIED);
    const CTraceCapture trace;
    EXPECT_EQ(m_host.Initialize(), wmi::Failed);
    EXPECT_EQ(trace.Count(GetParam().line), 1u);
    EXPECT_EQ(trace.Count("Sending FAILED"), 1u);
    for (const CRequest& request : kRequests)
    {
        SCOPED_TRACE(request.name);
        EXPECT_EQ(Make(request), wmi::Failed);
    }
    EXPECT_TRUE(m_sink->Statuses().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Calls, FailingAgentTest,
    testing::Values(FailingCall{"Initialize", Method::Initialize, false,
                                "CProviderImp::ClassesInit:Vorl initialize failed hr = <80070005>"},
                    FailingCall{"InitializeThrows", Method::Initialize, true,
                                "CProviderImp::ClassesInit:Vorl initialize failed hr = <"},
                    FailingCall{"QueryInterface", Method::QueryDiagnostics, false,
                                "CProviderImp::ClassesInit:DiagMgr initialize failed hr = <80004002>"},
                    FailingCall{"EnumAdapters", Method::EnumAdapters, false,
                                "CProviderImp::ClassesInit:DiagMgr initialize failed hr = <80070005>"},
                    FailingCall{"EnumAdaptersThrows", Method::EnumAdapters, true,
                                "CProviderImp::ClassesInit:DiagMgr initialize failed hr = <"},
                    FailingCall{"EnumDiagTests", Method::EnumDiagTests, false,
                                "CProviderImp::ClassesInit:DiagMgr initialize failed hr = <80041001>"}),
    [](const auto& info) { return info.param.name; });

TEST_F(InitializeTest, NullArgumentsAreHarmless)
{
    const auto sink = MakeCom<CInitSink>();
    EXPECT_EQ(m_host.Provider->Initialize(nullptr, 0, nullptr, nullptr, nullptr, nullptr, sink.Get()),
              wmi::NoError);
    EXPECT_EQ(sink->Statuses, (std::vector<LONG>{wmi::Failed}));
    EXPECT_EQ(
        m_host.Provider->Initialize(nullptr, 0, nullptr, nullptr, m_host.Services.Get(), nullptr, nullptr),
        wmi::NoError);
    EXPECT_EQ(Make(kRequests[0]), S_OK) << "initialised without a sink";
}

TEST_F(InitializeTest, RequestsBeforeItFindNoClass)
{
    for (const CRequest& request : kRequests)
    {
        SCOPED_TRACE(request.name);
        EXPECT_EQ(Make(request), wmi::Failed);
    }
    EXPECT_TRUE(m_sink->Statuses().empty());
}

// The schema's own class of services, as management services declare it.
struct KeyCase
{
    const char* name;
    void (*change)(standin::CClassDefinition& definition); // null: there is no such class
    bool expected;
    bool traced;
};

standin::CPropertyDefinition& SystemProperty(standin::CClassDefinition& definition)
{
    return definition.PropertyAt(definition.IndexOf(L"SystemCreationClassName"));
}

class KeyModeTest : public InitializeTest, public testing::WithParamInterface<KeyCase>
{
};

TEST_P(KeyModeTest, FollowsTheKeyQualifierOfTheSystemsName)
{
    const CallPlan plan = m_host.Plan;
    m_host.Services = MakeCom<CFakeServices>(
        [plan](const std::wstring& path) -> ComPtr<IWbemClassObject>
        {
            if (path != L"CIM_Service")
                return ServedSchema().GetClass(kServedNamespace, path);
            if (!GetParam().change)
                return nullptr;
            auto definition = std::make_shared<standin::CClassDefinition>(
                *ServedSchema().GetDefinition(kServedNamespace, L"CIM_Service"));
            GetParam().change(*definition);
            return standin::MakeClassObject(definition);
        });
    const CTraceCapture trace;
    EXPECT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED);
    bool mode = !GetParam().expected;
    m_probe.Enumerate = [&](CWomContext& context, IWbemObjectSink*)
    {
        mode = context.CimKeyMode();
        return S_OK;
    };
    EXPECT_EQ(
        m_host.Provider->CreateInstanceEnumAsync(Bstr(L"Tolva_DiagTest").Get(), 0, nullptr, m_sink.Get()),
        S_OK);
    EXPECT_EQ(mode, GetParam().expected);
    EXPECT_EQ(
        trace.Count("CProviderImp::CheckForMicrosoftKeys:GetPropertyQualifierSet failed, hr = <80041002>"),
        GetParam().traced ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Schemas, KeyModeTest,
    testing::Values(
        KeyCase{"NoSuchClass", nullptr, true, false},
        KeyCase{"NoSuchProperty",
                [](standin::CClassDefinition& d) { d.RemoveProperty(d.IndexOf(L"SystemCreationClassName")); },
                true, true},
        KeyCase{"NoKeyQualifier",
                [](standin::CClassDefinition& d) { SystemProperty(d).Qualifiers.Remove(L"key"); }, true,
                false},
        KeyCase{"Key",
                [](standin::CClassDefinition& d) {
                    SystemProperty(d).Qualifiers.Set(
                        standin::MakeQualifier(L"key", CVariant::FromBool(true)));
                },
                false, false},
        KeyCase{"KeyIsFalse",
                [](standin::CClassDefinition& d) {
                    SystemProperty(d).Qualifiers.Set(
                        standin::MakeQualifier(L"key", CVariant::FromBool(false)));
                },
                true, false},
        KeyCase{"KeyIsNoBoolean",
                [](standin::CClassDefinition& d)
                { SystemProperty(d).Qualifiers.Set(standin::MakeQualifier(L"key", CVariant::FromLong(1))); },
                true, false}),
    [](const auto& info) { return info.param.name; });

// The handlers are there by then, and a second call would do nothing.
TEST_F(InitializeTest, KeyModeThatCannotBeFoundOutCostsNoClass)
{
    m_host.Services = MakeCom<CFakeServices>(
        [](const std::wstring& path) -> ComPtr<IWbemClassObject>
        {
            if (path == L"CIM_Service")
                throw std::bad_alloc();
            return ServedSchema().GetClass(kServedNamespace, path);
        });
    EXPECT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED);
    bool mode = false;
    m_probe.Enumerate = [&](CWomContext& context, IWbemObjectSink*)
    {
        mode = context.CimKeyMode();
        return S_OK;
    };
    EXPECT_EQ(
        m_host.Provider->CreateInstanceEnumAsync(Bstr(L"Tolva_DiagTest").Get(), 0, nullptr, m_sink.Get()),
        S_OK);
    EXPECT_TRUE(mode);
}

TEST_F(InitializeTest, KeyModeIsDecidedEvenIfClassesFail)
{
    m_host.Agent->Fail(Method::Initialize, 1, E_FAIL);
    const ComPtr<IWbemContext> caller = standin::MakeContext();
    m_host.Initialize(caller.Get());
    const auto calls = m_host.Services->GetCalls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].Path, L"CIM_Service");
    EXPECT_EQ(calls[0].Flags, 0);
    EXPECT_EQ(calls[0].Context, caller.Get());
}

// The handlers

TEST_F(InitializeTest, ServesTheSevenClassesInTheirOrder)
{
    std::vector<std::wstring> names;
    for (const CHandlerRow& row : ServedHandlers())
        names.emplace_back(row.create()->GetClassName());
    EXPECT_EQ(names, (std::vector<std::wstring>{L"Tolva_DiagTest", L"Tolva_DiagSetting", L"Tolva_DiagResult",
                                                L"Tolva_DiagTestForMSE", L"Tolva_DiagResultForMSE",
                                                L"Tolva_DiagResultForTest", L"Tolva_DiagSettingForTest"}));
}

std::unique_ptr<CWomClassHandler> CreateNothing()
{
    return nullptr;
}

TEST_F(InitializeTest, AMissingHandlerIsNoError)
{
    constexpr const char* kFailures[] = {
        "CProviderImp::ClassesInit:Failed to create CTolva_DiagTest",
        "CProviderImp::ClassesInit:Failed to create Tolva_DiagSetting",
        "CProviderImp::ClassesInit:Failed to create CTolva_DiagResult",
        "CProviderImp::ClassesInit:Failed to create CTolva_DiagTestMSEAssoc",
        "CProviderImp::ClassesInit:Failed to create CTolva_DiagResultMSEAssoc",
        "CProviderImp::ClassesInit:Failed to create CTolva_DiagResultTestAssoc",
        "CProviderImp::ClassesInit:Failed to create CTolva_DiagSettingTestAssoc",
    };
    const std::vector<CHandlerRow> served(ServedHandlers().begin(), ServedHandlers().end());
    ASSERT_EQ(served.size(), std::size(kFailures));
    for (size_t missing = 0; missing < served.size(); ++missing)
    {
        SCOPED_TRACE(kFailures[missing]);
        std::vector<CHandlerRow> rows = served;
        rows[missing].create = &CreateNothing;
        m_host.Restart(rows);
        const CTraceCapture trace;
        EXPECT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED);
        const std::vector<std::string> lines = trace.Lines();
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                [&](const std::string& line) { return line.ends_with(kFailures[missing]); }),
                  1);
        for (size_t i = 0; i < served.size(); ++i)
        {
            const CBstr name(served[i].create()->GetClassName());
            EXPECT_EQ(m_host.Provider->CreateInstanceEnumAsync(name.Get(), 0, nullptr, m_sink.Get()),
                      i == missing ? wmi::Failed : S_OK);
        }
        m_host.Release();
    }
}

// Lifetime

TEST_F(InitializeTest, HoldsOneLockForItsLifetime)
{
    EXPECT_EQ(m_host.Lock.Count(), 1);
    m_host.Initialize();
    EXPECT_EQ(m_host.Lock.Count(), 1);
    m_host.Release();
    EXPECT_EQ(m_host.Lock.Count(), 0);
}

TEST_F(InitializeTest, EndsLockFirstThenHandlersThenManagerThenAgent)
{
    std::vector<std::string> order;
    m_probe.OnDestroyed = [&]
    { order.push_back(m_host.Lock.Count() ? "handler, locked" : "handler, unlocked"); };
    m_host.Initialize();
    const CTraceCapture trace;
    m_host.Release();
    EXPECT_EQ(order, (std::vector<std::string>{"handler, unlocked"}));
    EXPECT_EQ(InOrder(trace, {"{ --> CDiagMgr::StoreResults", "{ --> ~CVormAgentMgr()"}),
              (std::vector<std::string>{"{ --> CDiagMgr::StoreResults", "{ --> ~CVormAgentMgr()"}));
}

TEST_F(InitializeTest, HandlersEndInTheOrderOfTheirCreation)
{
    static std::vector<std::wstring> s_ended;
    static CProbeScript s_scripts[3];
    s_ended.clear();
    for (size_t i = 0; i < std::size(s_scripts); ++i)
    {
        s_scripts[i].ClassName = L"Tolva_Probe" + std::to_wstring(i);
        s_scripts[i].OnDestroyed = [i] { s_ended.push_back(s_scripts[i].ClassName); };
    }
    static size_t s_next;
    s_next = 0;
    const auto create = []
    {
        CProbeHandler::Use(&s_scripts[s_next++]);
        return CProbeHandler::Create();
    };
    const CHandlerRow rows[] = {{create, "1"}, {create, "2"}, {create, "3"}};
    m_host.Restart(rows);
    EXPECT_EQ(m_host.Initialize(), WBEM_S_INITIALIZED);
    m_host.Release();
    EXPECT_EQ(s_ended, (std::vector<std::wstring>{L"Tolva_Probe0", L"Tolva_Probe1", L"Tolva_Probe2"}));
}

TEST_F(InitializeTest, LeavesNothingBehind)
{
    m_host.Release();
    m_host.Restart(kProbeRows);
    const long before = g_liveComObjects;
    m_host.Initialize();
    m_host.Release();
    m_host.Restart(kProbeRows);
    EXPECT_EQ(g_liveComObjects, before);
}
} // namespace
