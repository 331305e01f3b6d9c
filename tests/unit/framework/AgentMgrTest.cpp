#include "Common/src/VormAgentMgr.h"

#include "CDM/src/ZebRegistry.h"
#include "Common/src/com/ComObject.h"
#include "agent/VorlIds.h"
#include "tests/support/CaseName.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/framework/Imports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>

using testing::ElementsAre;

namespace
{
class CAgentRoot final : public CComObject<IVormRoot>
{
  public:
    HRESULT Answer = S_OK;
    bool ThrowsOnInitialize = false;
    std::vector<ULONG> Flags;

    STDMETHODIMP Initialize(ULONG flags) override
    {
        Flags.push_back(flags);
        if (ThrowsOnInitialize)
            throw std::runtime_error("agent");
        return Answer;
    }
};

// Serves one object as a class of this process.
class CServedClass final : public CComObject<IClassFactory>
{
  public:
    explicit CServedClass(ComPtr<IUnknown> object) : m_object(std::move(object)) {}

    STDMETHODIMP CreateInstance(IUnknown*, REFIID riid, void** out) override
    {
        return m_object->QueryInterface(riid, out);
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

  private:
    ComPtr<IUnknown> m_object;
};

class CClassRegistration
{
  public:
    CClassRegistration(const CLSID& clsid, IUnknown* object, DWORD context = CLSCTX_INPROC_SERVER)
    {
        const auto served = MakeCom<CServedClass>(ComPtr<IUnknown>(object));
        EXPECT_EQ(S_OK, CoRegisterClassObject(clsid, served.Get(), context, REGCLS_MULTIPLEUSE, &m_cookie));
    }
    CClassRegistration(const CClassRegistration&) = delete;
    ~CClassRegistration() { CoRevokeClassObject(m_cookie); }

  private:
    DWORD m_cookie = 0;
};

class AgentMgrTest : public testing::Test
{
  protected:
    void Select(DWORD mode) { m_registry.SetNumber(kProvidersKey, "TestVorl", mode); }

    CRegistryScope m_registry;
    ComPtr<CAgentRoot> m_real = MakeCom<CAgentRoot>();
    ComPtr<CAgentRoot> m_test = MakeCom<CAgentRoot>();
    CClassRegistration m_realClass{kClsidVorl, m_real.Get()};
    CClassRegistration m_testClass{kClsidVorlTest, m_test.Get()};
};

TEST_F(AgentMgrTest, LoadsAndInitialisesTheRealAgent)
{
    const CTraceCapture trace;
    CVormAgentMgr manager;
    EXPECT_EQ(nullptr, manager.Root());
    EXPECT_EQ(S_OK, manager.Initialize(1033, kClsidVorl));
    EXPECT_EQ(m_real.Get(), manager.Root());
    EXPECT_THAT(m_real->Flags, ElementsAre(1033u));
    EXPECT_THAT(trace.Lines(),
                ElementsAre(" { --> CVormAgentMgr::Initialize",
                            "Failed to get WMI base path - using real Vorl", "Using real Vorl",
                            "Successfully loaded Vorl", "     { --> CVormRoot::SetInterfaceSecurity",
                            "     } <-- CVormRoot::SetInterfaceSecurity", "Vorl Initialize returned 0x0",
                            " } <-- CVormAgentMgr::Initialize"));
}

struct ModeCase
{
    const char* name;
    std::optional<DWORD> selector;
    bool test;
    const char* line;
};
class AgentModeTest : public AgentMgrTest, public testing::WithParamInterface<ModeCase>
{
};

TEST_P(AgentModeTest, ChoosesTheAgent)
{
    if (GetParam().selector)
        Select(*GetParam().selector);
    const CTraceCapture trace;
    CVormAgentMgr manager;
    EXPECT_EQ(S_OK, manager.Initialize(0, kClsidVorl));
    EXPECT_EQ(GetParam().test ? m_test.Get() : m_real.Get(), manager.Root());
    EXPECT_TRUE(trace.Has(GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(Modes, AgentModeTest,
                         testing::Values(ModeCase{"Absent", std::nullopt, false, "Using real Vorl"},
                                         ModeCase{"Zero", 0, false, "Using real Vorl"},
                                         ModeCase{"Test", 1, true, "Using test Vorl"},
                                         ModeCase{"Three", 3, false, "Using real Vorl"}),
                         NameOf<ModeCase>);

// What a mode asks COM for.
struct CActivation
{
    CLSID Class;
    DWORD Context;
    IID Interface;
};
std::vector<CActivation> g_activations;
HRESULT g_activationResult;
IUnknown* g_activated;

HRESULT WINAPI RecordActivation(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID iid, void** out)
{
    EXPECT_EQ(nullptr, outer);
    g_activations.push_back({clsid, context, iid});
    *out = g_activated;
    if (g_activated)
        g_activated->AddRef();
    return g_activationResult;
}

class AgentActivationTest : public AgentMgrTest
{
  protected:
    AgentActivationTest()
    {
        g_activations.clear();
        g_activationResult = S_OK;
        g_activated = m_real.Get();
    }

    CImportHook<decltype(&CoCreateInstance)> m_hook{__imp_CoCreateInstance, &RecordActivation};
};

struct ActivationCase
{
    const char* name;
    DWORD selector;
    CLSID clsid;
    DWORD context;
    IID iid;
};
class AgentActivationModeTest : public AgentActivationTest, public testing::WithParamInterface<ActivationCase>
{
};

TEST_P(AgentActivationModeTest, AsksComFor)
{
    Select(GetParam().selector);
    CVormAgentMgr manager;
    EXPECT_EQ(S_OK, manager.Initialize(0, kClsidVorl));
    ASSERT_EQ(1u, g_activations.size());
    EXPECT_TRUE(IsEqualGUID(GetParam().clsid, g_activations[0].Class));
    EXPECT_EQ(GetParam().context, g_activations[0].Context);
    EXPECT_TRUE(IsEqualGUID(GetParam().iid, g_activations[0].Interface));
}

INSTANTIATE_TEST_SUITE_P(Modes, AgentActivationModeTest,
                         testing::Values(ActivationCase{"Real", 0, kClsidVorl, 0x17, __uuidof(IVormRoot)},
                                         ActivationCase{"Test", 1, kClsidVorlTest, 0x17, __uuidof(IVormRoot)},
                                         ActivationCase{"Proxy", 2, kClsidVorl, 4, __uuidof(IUnknown)}),
                         NameOf<ActivationCase>);

TEST_F(AgentActivationTest, AProxyThatIsNoAgentFailsToLoad)
{
    Select(2);
    auto stranger = MakeCom<CServedClass>(nullptr);
    g_activated = stranger.Get();
    const CTraceCapture trace;
    {
        CVormAgentMgr manager;
        EXPECT_EQ(E_NOINTERFACE, manager.Initialize(0, kClsidVorl));
        EXPECT_EQ(nullptr, manager.Root());
    }
    EXPECT_TRUE(trace.Has("Using proxy Vorl"));
    EXPECT_TRUE(trace.Has("Common/src/VormAgentMgr (307): Failed to load Vorl 0x80004002"));
    const long held = g_liveComObjects;
    stranger.Reset();
    EXPECT_EQ(held - 1, g_liveComObjects);
}

TEST_F(AgentActivationTest, AProxyKeepsOnlyTheRootInterface)
{
    Select(2);
    auto agent = MakeCom<CAgentRoot>();
    g_activated = static_cast<IVormRoot*>(agent.Get());
    {
        CVormAgentMgr manager;
        EXPECT_EQ(S_OK, manager.Initialize(7, kClsidVorl));
        EXPECT_EQ(agent.Get(), manager.Root());
        EXPECT_THAT(agent->Flags, ElementsAre(7u));
    }
    const long held = g_liveComObjects;
    agent.Reset();
    EXPECT_EQ(held - 1, g_liveComObjects);
}

TEST_F(AgentActivationTest, SuccessWithoutAPointerIsAFailure)
{
    g_activated = nullptr;
    const CTraceCapture trace;
    CVormAgentMgr manager;
    EXPECT_EQ(E_FAIL, manager.Initialize(0, kClsidVorl));
    EXPECT_TRUE(trace.Has("Common/src/VormAgentMgr (320): No Vorl pointer"));
    EXPECT_FALSE(trace.Has("Vorl Initialize returned"));
}

TEST_F(AgentActivationTest, AFailedLoadGivesComsCodeUnchanged)
{
    g_activated = nullptr;
    g_activationResult = REGDB_E_CLASSNOTREG;
    const CTraceCapture trace;
    CVormAgentMgr manager;
    EXPECT_EQ(REGDB_E_CLASSNOTREG, manager.Initialize(0, kClsidVorl));
    EXPECT_EQ(nullptr, manager.Root());
    EXPECT_TRUE(trace.Has("Common/src/VormAgentMgr (307): Failed to load Vorl 0x80040154"));
    EXPECT_FALSE(trace.Has("Successfully loaded Vorl"));
}

TEST(AgentMgr, AProxyThatIsNotInstalledFailsToLoad)
{
    CRegistryScope registry;
    registry.SetNumber(kProvidersKey, "TestVorl", 2);
    const CLSID nobody = {0x6C1F0A52, 0x3B7E, 0x4E1B, {0x9A, 0x55, 0x0D, 0x6B, 0x7A, 0x3C, 0x8E, 0xFF}};
    const CTraceCapture trace;
    CVormAgentMgr manager;
    EXPECT_EQ(REGDB_E_CLASSNOTREG, manager.Initialize(0, nobody));
    EXPECT_TRUE(trace.Has("(307): Failed to load Vorl 0x80040154"));
}

TEST_F(AgentMgrTest, AnAgentThatRefusesIsKeptUntilDestruction)
{
    m_real->Answer = 0x80040123;
    const CTraceCapture trace;
    {
        CVormAgentMgr manager;
        EXPECT_EQ(static_cast<HRESULT>(0x80040123), manager.Initialize(0, kClsidVorl));
        EXPECT_EQ(m_real.Get(), manager.Root());
    }
    EXPECT_TRUE(trace.Has("Vorl Initialize returned 0x80040123"));
}

TEST_F(AgentMgrTest, AnAgentThatThrowsWhileInitialisingFails)
{
    m_real->ThrowsOnInitialize = true;
    const CTraceCapture trace;
    CVormAgentMgr manager;
    EXPECT_EQ(E_UNEXPECTED, manager.Initialize(0, kClsidVorl));
    EXPECT_TRUE(trace.Has("Vorl Initialize returned 0x8000ffff"));
}

TEST(AgentMgr, ReleasesTheAgentOnce)
{
    const long before = g_liveComObjects;
    {
        auto agent = MakeCom<CAgentRoot>();
        const CTraceCapture trace;
        {
            CVormAgentMgr manager(agent.Get());
            EXPECT_EQ(agent.Get(), manager.Root());
            agent.Reset();
            EXPECT_EQ(before + 1, g_liveComObjects);
        }
        EXPECT_THAT(trace.Lines(), ElementsAre(" { --> ~CVormAgentMgr()", " } <-- ~CVormAgentMgr()"));
    }
    EXPECT_EQ(before, g_liveComObjects);
}

// An agent that is gone: its proxy's last release throws.
class CDeadRoot final : public IVormRoot
{
  public:
    int References = 0;

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return ++References; }
    STDMETHODIMP_(ULONG) Release() override
    {
        --References;
        throw std::runtime_error("agent");
    }
    STDMETHODIMP Initialize(ULONG) override { return S_OK; }
};

TEST(AgentMgr, AnAgentThatThrowsWhileReleasedDoesNotStopShutdown)
{
    CDeadRoot agent;
    const CTraceCapture trace;
    {
        const CVormAgentMgr manager(&agent);
        EXPECT_EQ(1, agent.References);
    }
    EXPECT_EQ(0, agent.References);
    EXPECT_THAT(trace.Lines(),
                ElementsAre(" { --> ~CVormAgentMgr()", "CATCH IN Vorl RELEASE", " } <-- ~CVormAgentMgr()"));
}

TEST(AgentMgr, WithoutAnAgentThereIsNothingToRelease)
{
    const CTraceCapture trace;
    {
        CVormAgentMgr manager;
    }
    EXPECT_THAT(trace.Lines(), ElementsAre(" { --> ~CVormAgentMgr()", " } <-- ~CVormAgentMgr()"));
}
} // namespace
