#include "CDM/src/ZebDebug.h"
#include "Common/src/VormAgentMgr.h"
#include "Common/src/WomSecurity.h"
#include "tests/support/CaseName.h"
#include "tests/support/FakeCallContext.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/framework/Imports.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace
{
DWORD g_level = SecurityImpersonation;

BOOL WINAPI GiveToken(HANDLE, DWORD access, BOOL asSelf, HANDLE* token)
{
    *token = CreateEventW(nullptr, FALSE, FALSE, nullptr); // a handle that can be closed
    return access == TOKEN_QUERY && asSelf;
}

BOOL WINAPI GiveLevel(HANDLE, TOKEN_INFORMATION_CLASS what, void* level, DWORD, DWORD*)
{
    *static_cast<DWORD*>(level) = g_level;
    return what == TokenImpersonationLevel;
}

BOOL WINAPI GiveNoLevel(HANDLE, TOKEN_INFORMATION_CLASS, void*, DWORD, DWORD*)
{
    return FALSE;
}

TEST(Security, ImpersonatesTheClientOfTheCall)
{
    const auto call = MakeCom<CFakeCallContext>();
    CCallContextScope scope(*call);
    const CWomSecurity security;
    EXPECT_FALSE(security.Impersonating());
    EXPECT_EQ(S_OK, security.Impersonate());
    EXPECT_TRUE(security.Impersonating());
    security.RevertToSelf();
    EXPECT_FALSE(security.Impersonating());
    EXPECT_EQ(1, call->Impersonations);
    EXPECT_EQ(1, call->Reverts);
}

TEST(Security, AFailedImpersonationIsTracedAndTheRequestGoesOn)
{
    const auto call = MakeCom<CFakeCallContext>();
    call->Answer = E_ACCESSDENIED;
    CCallContextScope scope(*call);
    const CTraceCapture trace;
    EXPECT_EQ(E_ACCESSDENIED, CWomSecurity().Impersonate());
    ASSERT_EQ(1u, trace.Lines().size());
    EXPECT_THAT(trace.Lines()[0],
                testing::MatchesRegex("Common/src/WomSecurity .*: CoImpersonateClient failed "
                                      "<80070005>"));
}

TEST(Security, OutsideACallThereIsNobodyToImpersonate)
{
    const CTraceCapture trace;
    const CWomSecurity security;
    EXPECT_FALSE(security.Impersonating());
    EXPECT_TRUE(FAILED(security.Impersonate()));
    EXPECT_TRUE(trace.Has("CoImpersonateClient failed <"));
}

TEST(Security, WithTheSwitchOffTheThreadIsLeftAlone)
{
    const auto call = MakeCom<CFakeCallContext>();
    call->Running = true;
    CCallContextScope scope(*call);
    const CTraceCapture trace;
    const CWomSecurity security(false);
    EXPECT_FALSE(security.Enabled());
    EXPECT_FALSE(security.Impersonating());
    EXPECT_EQ(S_FALSE, security.Impersonate());
    security.RevertToSelf();
    EXPECT_EQ(0, call->Impersonations);
    EXPECT_EQ(0, call->Reverts);
    EXPECT_THAT(trace.Lines(), ElementsAre(" { --> CWomSecurity::RevertToSelf", "Security not enabled",
                                           " } <-- CWomSecurity::RevertToSelf"));
}

TEST(Security, RevertToSelfTracesTheSecurityStateBeforeReverting)
{
    const auto call = MakeCom<CFakeCallContext>();
    call->OnRevert = [] { ZebDebug().Write("reverted"); };
    CCallContextScope scope(*call);
    const CImportHook token(__imp_OpenThreadToken, &GiveToken);
    const CImportHook level(__imp_GetTokenInformation, &GiveLevel);
    g_level = SecurityImpersonation;
    const CTraceCapture trace;
    CWomSecurity().RevertToSelf();
    EXPECT_THAT(trace.Lines(),
                ElementsAre(" { --> CWomSecurity::RevertToSelf",
                            "     { --> CWomSecurity::OutputSecurityDebug", "Security has been compiled in",
                            "User name", "Current user name is HALVERN\\tester", "SecurityImpersonation",
                            "     } <-- CWomSecurity::OutputSecurityDebug", "reverted",
                            " } <-- CWomSecurity::RevertToSelf"));
}

TEST(SecurityDebug, SaysThatTheSwitchIsOff)
{
    const CTraceCapture trace;
    CWomSecurity(false).OutputSecurityDebug();
    EXPECT_TRUE(trace.Has("Security has NOT been compiled in"));
}

TEST(SecurityDebug, SaysThatTheUserNameIsNotKnown)
{
    const char* const name = std::exchange(g_userName, nullptr);
    const CTraceCapture trace;
    CWomSecurity().OutputSecurityDebug();
    g_userName = name;
    EXPECT_TRUE(trace.Has("GetUserName failed"));
    EXPECT_FALSE(trace.Has("Current user name is"));
}

TEST(SecurityDebug, AUserNameMayHave256Characters)
{
    const std::string longest(256, 'u');
    const char* const name = std::exchange(g_userName, longest.c_str());
    const CTraceCapture trace;
    CWomSecurity().OutputSecurityDebug();
    g_userName = name;
    EXPECT_TRUE(trace.Has("Current user name is " + longest));
}

TEST(SecurityDebug, AThreadWithoutATokenOfItsOwnIsAnError)
{
    const CTraceCapture trace;
    CWomSecurity().OutputSecurityDebug();
    EXPECT_EQ("Common/src/WomSecurity (248): Unable to read thread token", trace.Lines()[4]);
    EXPECT_EQ(" } <-- CWomSecurity::OutputSecurityDebug", trace.Lines()[5]);
}

TEST(SecurityDebug, ALevelThatCannotBeReadIsAnError)
{
    const CImportHook token(__imp_OpenThreadToken, &GiveToken);
    const CImportHook level(__imp_GetTokenInformation, &GiveNoLevel);
    const CTraceCapture trace;
    CWomSecurity().OutputSecurityDebug();
    EXPECT_EQ("Common/src/WomSecurity (263): Unable to read impersonation level", trace.Lines()[4]);
}

struct LevelCase
{
    const char* name;
    DWORD level;
    const char* line;
};
class SecurityLevelTest : public testing::TestWithParam<LevelCase>
{
};

TEST_P(SecurityLevelTest, IsTracedByName)
{
    const CImportHook token(__imp_OpenThreadToken, &GiveToken);
    const CImportHook level(__imp_GetTokenInformation, &GiveLevel);
    g_level = GetParam().level;
    const CTraceCapture trace;
    CWomSecurity().OutputSecurityDebug();
    EXPECT_EQ(GetParam().line, trace.Lines()[4]);
}

INSTANTIATE_TEST_SUITE_P(
    Levels, SecurityLevelTest,
    testing::Values(LevelCase{"Anonymous", 0, "SecurityAnonymous"},
                    LevelCase{"Identification", 1, "SecurityIdentification"},
                    LevelCase{"Impersonation", 2, "SecurityImpersonation"},
                    LevelCase{"Delegation", 3, "SecurityDelegation"},
                    LevelCase{"Unknown", 4,
                              "Common/src/WomSecurity (287): Unable to determine impersonation level"}),
    NameOf<LevelCase>);

// A proxy, as far as its security blanket goes.
class CFakeProxy final : public CComObject<IClientSecurity>
{
  public:
    struct CBlanket
    {
        IUnknown* Proxy;
        DWORD Authentication, Authorisation;
        OLECHAR* Principal;
        DWORD Level, Impersonation;
        void* Identity;
        DWORD Capabilities;
    };
    std::vector<CBlanket> Blankets;

    STDMETHODIMP QueryBlanket(IUnknown*, DWORD*, DWORD*, OLECHAR**, DWORD*, DWORD*, void**, DWORD*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP SetBlanket(IUnknown* proxy, DWORD authentication, DWORD authorisation, OLECHAR* principal,
                            DWORD level, DWORD impersonation, void* identity, DWORD capabilities) override
    {
        Blankets.push_back(
            {proxy, authentication, authorisation, principal, level, impersonation, identity, capabilities});
        return E_ACCESSDENIED; // ignored
    }
    STDMETHODIMP CopyProxy(IUnknown*, IUnknown**) override { return E_NOTIMPL; }
};

TEST(InterfaceSecurity, CallsCarryTheCallersIdentity)
{
    const auto proxy = MakeCom<CFakeProxy>();
    const CTraceCapture trace;
    CVormRoot().SetInterfaceSecurity(proxy.Get());
    ASSERT_EQ(1u, proxy->Blankets.size());
    const CFakeProxy::CBlanket& blanket = proxy->Blankets[0];
    EXPECT_EQ(proxy.Get(), blanket.Proxy);
    EXPECT_EQ(10u, blanket.Authentication);
    EXPECT_EQ(0u, blanket.Authorisation);
    EXPECT_EQ(nullptr, blanket.Principal);
    EXPECT_EQ(3u, blanket.Level);
    EXPECT_EQ(3u, blanket.Impersonation);
    EXPECT_EQ(nullptr, blanket.Identity);
    EXPECT_EQ(0u, blanket.Capabilities);
    EXPECT_THAT(trace.Lines(), ElementsAre(" { --> CVormRoot::SetInterfaceSecurity",
                                           " } <-- CVormRoot::SetInterfaceSecurity"));
}

TEST(InterfaceSecurity, WithTheSwitchOffTheProxyIsLeftAlone)
{
    const auto proxy = MakeCom<CFakeProxy>();
    const CTraceCapture trace;
    CVormRoot(false).SetInterfaceSecurity(proxy.Get());
    EXPECT_TRUE(proxy->Blankets.empty());
    EXPECT_THAT(trace.Lines(), ElementsAre(" { --> CVormRoot::SetInterfaceSecurity", "Not enabled",
                                           " } <-- CVormRoot::SetInterfaceSecurity"));
}

TEST(InterfaceSecurity, ObjectsWithoutAProxyAndNoObjectAreFine)
{
    const auto object = MakeCom<CFakeCallContext>();
    const ULONG references = object->AddRef();
    const CTraceCapture trace;
    CVormRoot().SetInterfaceSecurity(object.Get());
    CVormRoot().SetInterfaceSecurity(nullptr);
    EXPECT_EQ(references - 1, object->Release());
    EXPECT_THAT(trace.Lines(), ElementsAre(" { --> CVormRoot::SetInterfaceSecurity",
                                           " } <-- CVormRoot::SetInterfaceSecurity",
                                           " { --> CVormRoot::SetInterfaceSecurity",
                                           " } <-- CVormRoot::SetInterfaceSecurity"));
}
} // namespace
