// The whole life of a server process in the test's own process, from its entry to its exit code. The system's
// module functions are played here; nothing waits for as long as it asks to.
#include "CDM/src/server/Server.h"
#include "CDM/src/server/ServerModule.h"
#include "Common/src/com/CriticalSection.h"
#include "tests/support/ImportHook.h"
#include "tests/support/RegistryScope.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

ZEB_HOOKED_IMPORT("kernel32", Sleep)
ZEB_HOOKED_IMPORT("kernel32", WaitForSingleObject)

namespace
{
constexpr DWORD kIdleMilliseconds = 5000;

CCriticalSection g_section;
std::vector<std::string> g_log;
DWORD g_mainThread = 0;

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
    HRESULT WINAPI AtlModuleInit(atl::Module* module, atl::ObjectEntry*, HINSTANCE)
    {
        // The record tells of which version it is.
        EXPECT_EQ(sizeof(atl::Module), module->size);
        EXPECT_EQ(0x0300u, module->buildVersion);
        EXPECT_TRUE(module->version && module->version->Data1 == 0xB62F5910);
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
        CServerModule::Instance().Lock();
        CServerModule::Instance().Unlock();
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
TEST(ServerEndTest, FiveSecondsAfterTheLastReleaseItRevokesSleepsASecondAndEndsItsModule)
{
    CRegistryScope registry;
    g_mainThread = GetCurrentThreadId();
    const CImportHook wait(__imp_WaitForSingleObject, &WaitIdleAtOnce);
    const CImportHook sleep(__imp_Sleep, &SleepNot);
    EXPECT_EQ(0, RunServer(GetModuleHandleW(nullptr)));
    const CLockScope lock(g_section);
    EXPECT_EQ((std::vector<std::string>{"begin module", "register", "wait 5000", "revoke", "sleep 1000",
                                        "end module"}),
              g_log);
}
} // namespace
