// The whole life of a server process in the test's own process, from its entry to its exit code. The system's
// module functions are played here; nothing waits for as long as it asks to.
#include "CDM/src/engine/DiagAgent.h"
#include "CDM/src/engine/results/store/StoreSession.h"
#include "CDM/src/server/Server.h"
#include "CDM/src/server/ServerModule.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/CriticalSection.h"
#include "tests/support/FakeAgent.h"
#include "tests/support/ImportHook.h"
#include "tests/support/RegistryScope.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>
#include <wbemprov.h>

ZEB_HOOKED_IMPORT("kernel32", Sleep)
ZEB_HOOKED_IMPORT("kernel32", WaitForSingleObject)
ZEB_HOOKED_IMPORT("kernel32", TerminateProcess)

namespace
{
constexpr DWORD kIdleMilliseconds = 5000;

CCriticalSection g_section;
std::vector<std::string> g_log;
DWORD g_mainThread = 0;
atl::ObjectEntry* g_objects = nullptr;
void ComeAndGo()
{
    CServerModule::Instance().Lock();
    CServerModule::Instance().Unlock();
}
std::function<void()> g_client = &ComeAndGo;

void Note(std::string step)
{
    const CLockScope lock(g_section);
    g_log.push_back(std::move(step));
}

const auto s_wait = __imp_WaitForSingleObject;
const auto s_sleep = __imp_Sleep;

DWORD WINAPI WaitIdleAtOnce(HANDLE object, DWORD milliseconds)
{
    if (milliseconds != kIdleMilliseconds)
        return s_wait(object, milliseconds);
    Note("wait 5000");
    return WAIT_TIMEOUT;
}

// The process goes on, for the test's sake.
BOOL WINAPI TerminateNot(HANDLE, UINT exitCode)
{
    Note("terminate " + std::to_string(exitCode));
    return TRUE;
}

void WINAPI SleepNot(DWORD milliseconds)
{
    if (GetCurrentThreadId() == g_mainThread)
        Note("sleep " + std::to_string(milliseconds));
    else
        s_sleep(milliseconds);
}
} // namespace

extern "C"
{
    HRESULT WINAPI AtlModuleInit(atl::Module* module, atl::ObjectEntry* objects, HINSTANCE)
    {
        // The record tells of which version it is.
        EXPECT_EQ(sizeof(atl::Module), module->size);
        EXPECT_EQ(0x0300u, module->buildVersion);
        EXPECT_TRUE(module->version && module->version->Data1 == 0xB62F5910);
        g_objects = objects;
        Note("begin module");
        return S_OK;
    }
    HRESULT WINAPI AtlModuleTerm(atl::Module*)
    {
        Note("end module");
        return S_OK;
    }
    // A client comes, and goes at once.
    HRESULT WINAPI AtlModuleRegisterClassObjects(atl::Module*, DWORD context, DWORD flags)
    {
        EXPECT_EQ(static_cast<DWORD>(CLSCTX_LOCAL_SERVER), context);
        EXPECT_EQ(static_cast<DWORD>(REGCLS_MULTIPLEUSE | REGCLS_SUSPENDED), flags);
        Note("register");
        // The monitor does not wait here: the thread that it sends its message to must have a queue by now.
        MSG message;
        PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);
        g_client();
        return S_OK;
    }
    HRESULT WINAPI AtlModuleRevokeClassObjects(atl::Module*)
    {
        Note("revoke");
        return S_OK;
    }
    HRESULT WINAPI AtlModuleRegisterServer(atl::Module*, BOOL, const CLSID*)
    {
        return E_UNEXPECTED;
    }
    HRESULT WINAPI AtlModuleUnregisterServerEx(atl::Module*, BOOL, const CLSID*)
    {
        return E_UNEXPECTED;
    }
    HRESULT WINAPI AtlModuleUpdateRegistryFromResourceD(atl::Module*, const wchar_t*, BOOL, void*, IUnknown*)
    {
        return E_UNEXPECTED;
    }
}

namespace
{
class ServerEndTest : public testing::Test
{
  protected:
    ServerEndTest()
    {
        g_mainThread = GetCurrentThreadId();
        g_log.clear();
        g_client = &ComeAndGo;
    }

    std::vector<std::string> Run()
    {
        const CImportHook wait(__imp_WaitForSingleObject, &WaitIdleAtOnce);
        const CImportHook sleep(__imp_Sleep, &SleepNot);
        const CImportHook terminate(__imp_TerminateProcess, &TerminateNot);
        EXPECT_EQ(0, RunServer(GetModuleHandleW(nullptr)));
        const CLockScope lock(g_section);
        std::vector<std::string> log = g_log;
        log.erase(std::unique(log.begin(), log.end()), log.end());
        return log;
    }

    CRegistryScope m_registry;
};

TEST_F(ServerEndTest, FiveSecondsAfterTheLastReleaseItRevokesSleepsASecondAndEndsItsModule)
{
    EXPECT_EQ(Run(), (std::vector<std::string>{"begin module", "register", "wait 5000", "revoke",
                                               "sleep 1000", "end module"}));
}

// A provider object has given its lock up and waits for its turn to store its results, for longer than the
// server waits: what it works with must not be taken away.
TEST_F(ServerEndTest, WhileAProviderStillStoresTheProcessIsEndedAsItStands)
{
    std::thread ending;
    auto turn = std::make_unique<CStoreSession>(PlatformStoreFiles(), L"", CStoreSession::Purpose::Change);
    g_client = [&]
    {
        ComPtr<IWbemProviderInit> provider;
        ASSERT_EQ(S_OK, g_objects->createInstance(nullptr, IID_IWbemProviderInit, provider.PutVoid()));
        ending = std::thread([last = provider.Detach()] { last->Release(); });
    };
    const std::vector<std::string> log = Run();
    turn.reset();
    ending.join();
    const auto at = std::find(log.begin(), log.end(), "terminate 0");
    ASSERT_NE(at, log.end());
    EXPECT_EQ(*(at - 1), "sleep 50");
    EXPECT_EQ(std::vector<std::string>(at + 1, log.end()), (std::vector<std::string>{"end module"}))
        << "nothing is taken away before";
}
// A run that goes on without its manager, say.
TEST_F(ServerEndTest, WhileTheAgentIsInUseTheProcessIsEndedAsItStands)
{
    const auto fake = MakeCom<CFakeAgent>();
    std::shared_ptr<CDiagAgent> use;
    ASSERT_EQ(S_OK, CDiagAgent::Query(fake.Get(), use));
    const std::vector<std::string> log = Run();
    ASSERT_GE(log.size(), 2u);
    EXPECT_EQ(std::vector<std::string>(log.end() - 2, log.end()),
              (std::vector<std::string>{"terminate 0", "end module"}));
}
} // namespace
