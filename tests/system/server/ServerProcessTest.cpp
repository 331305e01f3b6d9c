// The server as a process: registered by its command line, started by COM, ended by itself.
#include "CDM/src/server/ServerIds.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"
#include "tests/system/support/Process.h"
#include "tests/system/support/ProviderMachine.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <set>
#include <string>

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

// The one server process that runs.
CHandle OpenServer()
{
    const std::vector<DWORD> ids = ProcessesOf(kServer);
    EXPECT_EQ(ids.size(), 1u);
    return CHandle(ids.empty() ? nullptr
                               : OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, ids[0]));
}

// Whatever a test does, the provider that was built is the registered one afterwards.
class ServerProcessTest : public testing::Test
{
  protected:
    ~ServerProcessTest() override
    {
        EXPECT_TRUE(WaitForNoProcess(kServer));
        EXPECT_EQ(RunProgram(Quoted(Built()) + L" /RegServer").ExitCode, 0u);
    }

    static std::wstring Built() { return BinFolder() + kServer; }

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

TEST_F(ServerProcessTest, EndsByItselfAfterTheLastRelease)
{
    ComPtr<IUnknown> first, second;
    ASSERT_EQ(Activate(first), S_OK);
    ASSERT_EQ(Activate(second), S_OK);
    const CHandle process = OpenServer();
    ASSERT_TRUE(process);
    first.Reset();
    second.Reset();
    ASSERT_EQ(WaitForSingleObject(process.Get(), kPatience), WAIT_OBJECT_0);
    DWORD exitCode = 1;
    EXPECT_TRUE(GetExitCodeProcess(process.Get(), &exitCode));
    EXPECT_EQ(exitCode, 0u);
    const std::string trace = m_machine.ReadFileBytes(L"ZebDiagDbg.log");
    EXPECT_TRUE(trace.starts_with("<center><h1>ZebDiag</h1></center>")) << trace.substr(0, 100);
    EXPECT_NE(trace.find("} <-- ~CVormAgentMgr()"), trace.npos) << "the provider objects were destroyed";
}

TEST_F(ServerProcessTest, IsStartedAnewForTheNextClient)
{
    std::set<DWORD> ids;
    for (int i = 0; i < 2; ++i)
    {
        ComPtr<IUnknown> provider;
        ASSERT_EQ(Activate(provider), S_OK);
        for (const DWORD id : ProcessesOf(kServer))
            ids.insert(id);
        provider.Reset();
        EXPECT_TRUE(WaitForNoProcess(kServer));
    }
    EXPECT_EQ(ids.size(), 2u);
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

TEST_F(ServerProcessTest, RunsFromAFolderWithBlanksInItsName)
{
    const std::wstring folder = m_machine.Folder() + L"Program Files";
    ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    const std::wstring copy = folder + L"\\" + kServer;
    ASSERT_TRUE(CopyFileW(Built().c_str(), copy.c_str(), FALSE));
    EXPECT_EQ(RunProgram(Quoted(copy) + L" /RegServer").ExitCode, 0u);
    EXPECT_EQ(RegisteredServer(), copy);
    ComPtr<IUnknown> provider;
    EXPECT_EQ(Activate(provider), S_OK);
    {
        const CHandle process = OpenServer();
        wchar_t image[MAX_PATH] = {};
        DWORD size = MAX_PATH;
        EXPECT_TRUE(QueryFullProcessImageNameW(process.Get(), 0, image, &size));
        EXPECT_EQ(std::wstring(image), copy);
    }
    provider.Reset();
    EXPECT_TRUE(WaitForNoProcess(kServer));
    DeleteFileW(copy.c_str());
    RemoveDirectoryW(folder.c_str());
}
} // namespace
