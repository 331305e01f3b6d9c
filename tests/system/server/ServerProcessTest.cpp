// The server as a process: registered by its command line, started by COM, ended by itself.
#include "CDM/src/server/ProviderFactory.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"
#include "tests/system/support/Process.h"
#include "tests/system/support/ProviderMachine.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <objbase.h>
#include <string>
#include <vector>

namespace
{
constexpr wchar_t kServer[] = L"Drevok.EXE";
constexpr wchar_t kClassKey[] = L"CLSID\\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E20}";
constexpr DWORD kPatience = 60000;

bool HasKey(const wchar_t* path)
{
    CRegKey key;
    return RegOpenKeyExW(HKEY_CLASSES_ROOT, path, 0, KEY_READ, key.Put()) == ERROR_SUCCESS;
}

std::wstring RegisteredServer()
{
    wchar_t text[MAX_PATH] = {};
    DWORD size = sizeof text;
    RegGetValueW(HKEY_CLASSES_ROOT, (std::wstring(kClassKey) + L"\\LocalServer32").c_str(), nullptr,
                 RRF_RT_REG_SZ, nullptr, text, &size);
    return text;
}

std::wstring Quoted(const std::wstring& path)
{
    return L"\"" + path + L"\"";
}

HRESULT Activate(ComPtr<IUnknown>& provider)
{
    return CoCreateInstance(kClsidProviderImp, nullptr, CLSCTX_LOCAL_SERVER, IID_IUnknown,
                            provider.PutVoid());
}

std::wstring Built()
{
    return BinFolder() + kServer;
}

// Whatever a test does, the provider that was built is the registered one afterwards.
void PutBackRegistration()
{
    EXPECT_TRUE(WaitForNoProcess(kServer));
    EXPECT_EQ(RunProgram(Quoted(Built()) + L" /RegServer").ExitCode, 0u);
}

class ServerProcessTest : public testing::Test
{
  protected:
    ~ServerProcessTest() override { PutBackRegistration(); }

    CProviderMachine m_machine;
};

TEST_F(ServerProcessTest, CommandLineRegistersAndUnregisters)
{
    EXPECT_EQ(RunProgram(Quoted(Built()) + L" /UnregServer").ExitCode, 0u);
    EXPECT_FALSE(HasKey(kClassKey));
    EXPECT_FALSE(HasKey(L"Drevok.ProviderImp"));
    EXPECT_FALSE(HasKey(L"Drevok.ProviderImp.1"));
    EXPECT_FALSE(HasKey(L"AppID\\Drevok.EXE"));
    EXPECT_FALSE(HasKey(L"AppID\\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E21}"));
    EXPECT_FALSE(HasKey(L"TypeLib\\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E22}"));
    EXPECT_TRUE(HasKey(L"CLSID"));
    ComPtr<IUnknown> provider;
    EXPECT_NE(Activate(provider), S_OK);

    EXPECT_EQ(RunProgram(Quoted(Built()) + L" -regserver").ExitCode, 0u);
    EXPECT_EQ(RegisteredServer(), Built());
    EXPECT_TRUE(HasKey(L"TypeLib\\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E22}\\1.0\\0\\win64"));
}

// A copy whose type library cannot be read.
TEST_F(ServerProcessTest, SaysWhyItCouldNotBeRegistered)
{
    std::ifstream original(std::filesystem::path(Built()), std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(original), {}};
    const size_t library = bytes.find("MSFT\x02");
    ASSERT_NE(bytes.npos, library);
    bytes.replace(library, 4, "none");
    const std::wstring copy = m_machine.Folder() + kServer;
    std::ofstream(std::filesystem::path(copy), std::ios::binary).write(bytes.data(), bytes.size());
    const CRunResult run = RunProgram(Quoted(copy) + L" /RegServer");
    DeleteFileW(copy.c_str());
    EXPECT_TRUE(FAILED(static_cast<HRESULT>(run.ExitCode))) << run.ExitCode;
    EXPECT_TRUE(run.Output.starts_with("Drevok.EXE could not be registered: ")) << run.Output;
}

TEST_F(ServerProcessTest, ServesWhereSomethingFollowsTheSwitch)
{
    RunProgram(Quoted(Built()) + L" /UnregServer");
    CRunningProgram program(Quoted(Built()) + L" /RegServer /s");
    const CHandle process(OpenProcess(SYNCHRONIZE, FALSE, program.Id()));
    // Between two attempts the process has a moment to get ready, unless it ends.
    ComPtr<IUnknown> provider;
    while (FAILED(Activate(provider)))
        ASSERT_EQ(WaitForSingleObject(process.Get(), 50), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_FALSE(HasKey(kClassKey));
    provider.Reset();
    EXPECT_EQ(program.Finish().ExitCode, 0u);
}

// A server process from its clients' coming to its end. The open handle keeps its number from coming again.
struct CLife
{
    bool Served = true; // every client
    CHandle Process;
    std::wstring Image;
    bool Ended = false;
};

CLife Live(size_t clients)
{
    CLife life;
    std::vector<ComPtr<IUnknown>> providers(clients);
    for (ComPtr<IUnknown>& provider : providers)
        life.Served = Activate(provider) == S_OK && life.Served;
    life.Process = OpenProcessOf(kServer);
    wchar_t image[MAX_PATH] = {};
    DWORD size = MAX_PATH;
    if (QueryFullProcessImageNameW(life.Process.Get(), 0, image, &size))
        life.Image = image;
    providers.clear();
    life.Ended = WaitForSingleObject(life.Process.Get(), kPatience) == WAIT_OBJECT_0;
    return life;
}

// Two lives, one after the other, as ending takes a server some seconds: two clients of the server that was
// built, then one client of a copy in a folder with blanks in its name.
class ServerLives : public testing::Test
{
  public:
    static void SetUpTestSuite()
    {
        BecomeFirstClientOfCom();
        const CProviderMachine machine;
        s_first = Live(2);
        s_trace = machine.ReadFileBytes(L"ZebDiagDbg.log");

        const std::wstring folder = machine.Folder() + L"Program Files";
        s_copy = folder + L"\\" + kServer;
        ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
        ASSERT_TRUE(CopyFileW(Built().c_str(), s_copy.c_str(), FALSE));
        EXPECT_EQ(RunProgram(Quoted(s_copy) + L" /RegServer").ExitCode, 0u);
        s_registered = RegisteredServer();
        s_second = Live(1);
        s_secondTrace = machine.ReadFileBytes(L"ZebDiagDbg.log");
        PutBackRegistration();
        DeleteFileW(s_copy.c_str());
        RemoveDirectoryW(folder.c_str());
    }
    static void TearDownTestSuite()
    {
        s_first.Process.Reset();
        s_second.Process.Reset();
    }

  protected:
    static inline CLife s_first, s_second;
    static inline std::string s_trace; // of the first
    static inline std::string s_secondTrace;
    static inline std::wstring s_copy, s_registered;
};

TEST_F(ServerLives, EndByThemselvesAfterTheLastRelease)
{
    ASSERT_TRUE(s_first.Served);
    ASSERT_TRUE(s_first.Process);
    ASSERT_TRUE(s_first.Ended);
    DWORD exitCode = 1;
    EXPECT_TRUE(GetExitCodeProcess(s_first.Process.Get(), &exitCode));
    EXPECT_EQ(exitCode, 0u);
    EXPECT_TRUE(s_trace.starts_with("<center><h1>ZebDiag</h1></center>")) << s_trace.substr(0, 100);
    EXPECT_NE(s_trace.find("} <-- ~CVormAgentMgr()"), s_trace.npos) << "the provider objects were destroyed";
}

TEST_F(ServerLives, BeginAnewForTheNextClient)
{
    ASSERT_TRUE(s_first.Process);
    ASSERT_TRUE(s_second.Process);
    EXPECT_NE(GetProcessId(s_first.Process.Get()), GetProcessId(s_second.Process.Get()));
    EXPECT_TRUE(s_first.Ended);
    EXPECT_TRUE(s_second.Ended);
}

TEST_F(ServerLives, LeaveTheTraceOfTheLastOneAlone)
{
    EXPECT_TRUE(s_secondTrace.starts_with("<center><h1>ZebDiag</h1></center>"))
        << s_secondTrace.substr(0, 100);
    EXPECT_FALSE(s_secondTrace.starts_with(s_trace));
}

TEST_F(ServerLives, RunFromAFolderWithBlanksInItsName)
{
    EXPECT_EQ(s_registered, s_copy);
    EXPECT_TRUE(s_second.Served);
    EXPECT_EQ(s_second.Image, s_copy);
    EXPECT_TRUE(s_second.Ended);
}
} // namespace
