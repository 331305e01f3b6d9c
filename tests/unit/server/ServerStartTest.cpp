// How a server process starts, in the test's own process: what it sets up and in which order. The system's
// module functions are played here.
#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebRegistry.h"
#include "CDM/src/server/Server.h"
#include "CDM/src/server/ServerModule.h"
#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"
#include "tests/support/ImportHook.h"
#include "tests/support/RegistryScope.h"
#include "tests/support/TempFolder.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

ZEB_HOOKED_IMPORT("kernel32", Sleep)
ZEB_HOOKED_IMPORT("kernel32", WaitForSingleObject)
ZEB_HOOKED_IMPORT("ole32", CoInitializeEx)
ZEB_HOOKED_IMPORT("ole32", CoInitializeSecurity)
ZEB_HOOKED_IMPORT("user32", DispatchMessageA)

namespace
{
constexpr UINT kLastMessage = WM_APP + 7;

CCriticalSection g_section;
std::vector<std::string> g_log;
HRESULT g_registration = S_OK;
DWORD g_mainThread = 0;
std::function<void()> g_inApartment; // the first step of a start that a test can see

void Note(const char* step)
{
    const CLockScope lock(g_section);
    g_log.emplace_back(step);
}

const auto s_wait = __imp_WaitForSingleObject;
const auto s_sleep = __imp_Sleep;
const auto s_initialize = __imp_CoInitializeEx;

DWORD WINAPI WaitIdleAtOnce(HANDLE object, DWORD milliseconds)
{
    return milliseconds == 5000 ? WAIT_TIMEOUT : s_wait(object, milliseconds);
}

void WINAPI SleepNot(DWORD milliseconds)
{
    if (GetCurrentThreadId() != g_mainThread)
        s_sleep(milliseconds);
}

HRESULT WINAPI EnterApartment(void* reserved, DWORD flags)
{
    if (GetCurrentThreadId() == g_mainThread)
    {
        Note("apartment");
        EXPECT_EQ(static_cast<DWORD>(COINIT_MULTITHREADED), flags);
        if (g_inApartment)
            g_inApartment();
    }
    return s_initialize(reserved, flags);
}

HRESULT WINAPI NoteSecurity(PSECURITY_DESCRIPTOR descriptor, LONG services, SOLE_AUTHENTICATION_SERVICE* list,
                            void* reserved, DWORD authentication, DWORD impersonation, void* authentications,
                            DWORD capabilities, void* alsoReserved)
{
    Note("security");
    EXPECT_EQ(nullptr, descriptor);
    EXPECT_EQ(-1, services);
    EXPECT_EQ(nullptr, list);
    EXPECT_EQ(nullptr, reserved);
    EXPECT_EQ(3u, authentication);
    EXPECT_EQ(3u, impersonation);
    EXPECT_EQ(nullptr, authentications);
    EXPECT_EQ(0u, capabilities);
    EXPECT_EQ(nullptr, alsoReserved);
    return E_ACCESSDENIED; // not looked at
}

// The last message brings a client, who goes at once, and the end with it.
LRESULT WINAPI Dispatch(const MSG* message)
{
    if (message->message == ForceExitMessage())
        Note("force-exit message");
    if (message->message == kLastMessage)
    {
        Note("last message");
        CServerModule::Instance().Lock();
        CServerModule::Instance().Unlock();
    }
    return 0;
}

class ServerStartTest : public testing::Test
{
  protected:
    ServerStartTest()
    {
        g_mainThread = GetCurrentThreadId();
        g_log.clear();
    }
    ~ServerStartTest() override
    {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE))
            ;
        g_inApartment = nullptr;
        SetDllDirectoryW(nullptr); // as a new process has it
    }
    int Run() { return RunServer(GetModuleHandleW(nullptr)); }
    std::string TraceOfFailedStart()
    {
        const CTempFolder folder;
        m_registry.SetString(kZebDiagKey, "DebugFileName", folder.File("start.log").c_str());
        m_registry.SetNumber(kZebDiagKey, "DebugLevel", 2);
        g_registration = E_ACCESSDENIED;
        EXPECT_EQ(E_ACCESSDENIED, Run());
        g_registration = S_OK;
        ZebDebug().Close();
        std::ifstream file(folder.File("start.log"));
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static std::vector<std::string> Log()
    {
        const CLockScope lock(g_section);
        return g_log;
    }

    CRegistryScope m_registry;
    const CImportHook<decltype(__imp_WaitForSingleObject)> m_wait{__imp_WaitForSingleObject, &WaitIdleAtOnce};
    const CImportHook<decltype(__imp_Sleep)> m_sleep{__imp_Sleep, &SleepNot};
    const CImportHook<decltype(__imp_CoInitializeEx)> m_apartment{__imp_CoInitializeEx, &EnterApartment};
    const CImportHook<decltype(__imp_CoInitializeSecurity)> m_security{__imp_CoInitializeSecurity,
                                                                       &NoteSecurity};
    const CImportHook<decltype(__imp_DispatchMessageA)> m_dispatch{__imp_DispatchMessageA, &Dispatch};
};
} // namespace

extern "C"
{
    HRESULT WINAPI AtlModuleInit(atl::Module*, atl::ObjectEntry*, HINSTANCE)
    {
        Note("begin module");
        return S_OK;
    }
    HRESULT WINAPI AtlModuleTerm(atl::Module*)
    {
        Note("end module");
        return S_OK;
    }
    HRESULT WINAPI AtlModuleRegisterClassObjects(atl::Module*, DWORD, DWORD)
    {
        Note("register");
        MSG message;
        PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE); // makes the thread's queue
        PostThreadMessageA(g_mainThread, ForceExitMessage(), 0, 0);
        PostThreadMessageA(g_mainThread, kLastMessage, 0, 0);
        return g_registration;
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
TEST_F(ServerStartTest, ServesUntilNobodyIsLeftWhateverMessagesCome)
{
    EXPECT_EQ(0, Run());
    EXPECT_EQ((std::vector<std::string>{"apartment", "security", "begin module", "register",
                                        "force-exit message", "last message", "revoke", "end module"}),
              Log());
}

TEST_F(ServerStartTest, ClassesThatCannotBeRegisteredEndTheProcess)
{
    const std::string trace = TraceOfFailedStart();
    EXPECT_EQ((std::vector<std::string>{"apartment", "security", "begin module", "register", "end module"}),
              Log());
    EXPECT_NE(trace.npos,
              trace.find("The server ends because its class could not be registered, hr = <80070005>"))
        << trace;
}

TEST_F(ServerStartTest, TheTraceIsOpenBeforeTheConfigurationIsRead)
{
    const std::string trace = TraceOfFailedStart();
    EXPECT_TRUE(trace.starts_with("<center><h1>ZebDiag</h1></center>\n")) << trace;
    EXPECT_NE(trace.npos, trace.find("Query Value failed, <2>")) << "of the folder, which is not set";
}

class CCurrentDirectory
{
  public:
    explicit CCurrentDirectory(const std::filesystem::path& path) { std::filesystem::current_path(path); }
    ~CCurrentDirectory() { std::filesystem::current_path(m_former); }
    CCurrentDirectory(const CCurrentDirectory&) = delete;
    CCurrentDirectory& operator=(const CCurrentDirectory&) = delete;

  private:
    const std::filesystem::path m_former = std::filesystem::current_path();
};

TEST_F(ServerStartTest, NoLibraryIsLoadedFromTheCurrentDirectory)
{
    wchar_t program[MAX_PATH] = {};
    ASSERT_NE(0u, GetModuleFileNameW(nullptr, program, MAX_PATH));
    const CTempFolder folder;
    std::filesystem::copy_file(std::filesystem::path(program).replace_filename(L"TestStrings.dll"),
                               folder.Path() / L"ISL_NWR.dll");
    const CCurrentDirectory there(folder.Path());
    const auto loads = [] { return static_cast<bool>(CModule(LoadLibraryA("ISL_NWR.dll"))); };
    ASSERT_TRUE(loads()) << "before the start, the system looks there";
    SetDllDirectoryW(L"");
    const bool isHonoured = !loads();
    SetDllDirectoryW(nullptr);
    if (!isHonoured)
        GTEST_SKIP() << "Wine looks into the current directory, whatever it is told.";
    bool loaded = true;
    g_inApartment = [&] { loaded = loads(); };
    EXPECT_EQ(0, Run());
    EXPECT_FALSE(loaded);
    EXPECT_FALSE(loads());
}
} // namespace
