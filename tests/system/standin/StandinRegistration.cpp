// Registers the stand-in, the classes of StandinTest.mof and their providers before the first test. After the
// last one everything has ended by itself, and the other tests that share the registry find it as it was.
#include "tests/system/standin/SavedSetting.h"
#include "tests/system/standin/TestProviderIds.h"
#include "tests/system/support/Process.h"

#include <gtest/gtest.h>
#include <objbase.h>

namespace
{
std::wstring Quoted(const std::wstring& path)
{
    return L"\"" + path + L"\"";
}

void RunOrFail(const std::wstring& commandLine)
{
    const CRunResult result = RunProgram(commandLine);
    ASSERT_EQ(0u, result.ExitCode) << result.Output;
}

std::wstring ClassKey(const CLSID& clsid)
{
    wchar_t text[40] = {};
    StringFromGUID2(clsid, text, 40);
    return std::wstring(L"SOFTWARE\\Classes\\CLSID\\") + text;
}

void RegisterProvider(const CLSID& clsid)
{
    const std::wstring server = Quoted(BinFolder() + L"StandinTestProvider.exe");
    ASSERT_EQ(ERROR_SUCCESS,
              RegSetKeyValueW(HKEY_LOCAL_MACHINE, (ClassKey(clsid) + L"\\LocalServer32").c_str(), nullptr,
                              REG_SZ, server.c_str(),
                              static_cast<DWORD>((server.size() + 1) * sizeof(wchar_t))));
}

class CStandinRegistration : public testing::Environment
{
  public:
    void SetUp() override
    {
        // One that still runs serves what was registered before.
        ASSERT_TRUE(WaitForNoProcess(L"WmiStandin.exe"));
        const std::wstring service = Quoted(BinFolder() + L"WmiStandin.exe");
        RunOrFail(L"regsvr32.exe /s " + Quoted(BinFolder() + L"WmiStandin.dll"));
        RunOrFail(service + L" /compile " + Quoted(BinFolder() + L"system.mof") + L" " +
                  Quoted(BinFolder() + L"standin-test\\StandinTest.mof"));
        SetIdleTime(CNoIdleTime::kLongIdleTime);
        RegisterProvider(kTestProvider);
        RegisterProvider(kBrokenProvider);
    }
    void TearDown() override
    {
        SetIdleTime(0);
        EXPECT_TRUE(WaitForNoProcess(L"WmiStandin.exe"));
        EXPECT_TRUE(WaitForNoProcess(L"StandinTestProvider.exe"));
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClassKey(kTestProvider).c_str());
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, ClassKey(kBrokenProvider).c_str());
        m_mofFiles.PutBack();
        m_idleTime.PutBack();
    }

  private:
    const CSavedSetting m_mofFiles{L"MofFiles"};
    const CSavedSetting m_idleTime{L"IdleMilliseconds"};
};

const testing::Environment* const g_registration =
    testing::AddGlobalTestEnvironment(new CStandinRegistration);
} // namespace
