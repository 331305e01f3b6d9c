// install.cmd and remove.cmd as an administrator runs them, and what they leave.
#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"
#include "tests/system/standin/SavedSetting.h"
#include "tests/system/support/Process.h"
#include "tests/system/support/ProviderMachine.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>

namespace
{
constexpr wchar_t kSettings[] = L"SOFTWARE\\Veltrane\\Halvern\\ZEB\\ZebDiag";
constexpr wchar_t kClass[] = L"SOFTWARE\\Classes\\CLSID\\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E20}";
constexpr wchar_t kAppId[] = L"SOFTWARE\\Classes\\AppID\\{6C1F0A52-3B7E-4E1B-9A55-0D6B7A3C8E21}";

bool HasKey(const wchar_t* path)
{
    CRegKey key;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, key.Put()) == ERROR_SUCCESS;
}

std::wstring Text(const wchar_t* key, const wchar_t* name)
{
    wchar_t text[1024] = {};
    DWORD size = sizeof text;
    RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_SZ, nullptr, text, &size);
    return text;
}

std::optional<DWORD> Number(const wchar_t* key, const wchar_t* name)
{
    DWORD number = 0;
    DWORD size = sizeof number;
    const LSTATUS read =
        RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_DWORD, nullptr, &number, &size);
    return read == ERROR_SUCCESS ? std::optional(number) : std::nullopt;
}

std::wstring Program(const wchar_t* name)
{
    return L"\"" + BinFolder() + name + L"\"";
}

// A machine whose folder for programs' data is the test's own, and whose schema is compiled by the stand-in.
// What development needs is registered again afterwards.
class Installation : public testing::Test
{
  protected:
    Installation()
    {
        m_machine.SetScript(R"({ "Adapters": [ { "Key": "ALPHA", "Tests": [ { "TestID": 1 } ] } ] })");
        SetEnvironmentVariableW(L"ProgramData", (m_machine.Folder() + L"data").c_str());
        SetEnvironmentVariableW(L"MOFCOMP", (Program(L"WmiStandin.exe") + L" /compile").c_str());
    }
    ~Installation() override
    {
        // Unregistering first, because the account stays with the registration.
        for (const wchar_t* option : {L" /UnregServer", L" /RegServer"})
            EXPECT_EQ(0u, RunProgram(Program(L"Drevok.EXE") + option).ExitCode) << NarrowText(option);
        EXPECT_EQ(0u, RunProgram(L"regsvr32.exe /s " + Program(L"VorlUnderWine.dll")).ExitCode);
        m_mofFiles.PutBack();
        KillServers({L"WmiStandin.exe", L"Drevok.EXE"}); // they hold files there
        std::filesystem::remove_all(m_machine.Folder() + L"data");
    }

    static CRunResult Run(const wchar_t* script) { return RunProgram(L"cmd.exe /c " + Program(script)); }
    std::wstring DataFolder() const { return m_machine.Folder() + L"data\\Veltrane\\ZEB\\"; }

    const CSavedSetting m_mofFiles{L"MofFiles"};
    const CProviderMachine m_machine{CProviderMachine::Agent::Test};
};

TEST_F(Installation, SetsUpWhatTheProviderNeedsAndIsRemoved)
{
    const CRunResult installed = Run(L"install.cmd");
    EXPECT_EQ(0u, installed.ExitCode) << installed.Output;
    EXPECT_NE(std::string::npos, installed.Output.find("ZEB Diagnostics is installed.")) << installed.Output;
    // The stand-in's compiler knows of one language only, which does not hold the installation up.
    EXPECT_NE(std::string::npos, installed.Output.find("zebdiag-de.mfl could not be compiled (code 1): "))
        << installed.Output;
    EXPECT_EQ(DataFolder(), Text(kSettings, L"InstalledDir"));
    EXPECT_EQ(DataFolder() + L"ZebDiagDbg.log", Text(kSettings, L"DebugFileName"));
    EXPECT_EQ(1u, Number(kSettings, L"StoreAfterRun"));
    EXPECT_EQ(L"NT AUTHORITY\\LocalService", Text(kAppId, L"RunAs"));
    EXPECT_TRUE(std::filesystem::is_directory(DataFolder()));

    const CRunResult doctor = RunProgram(Program(L"zebdiag.exe") + L" doctor");
    EXPECT_EQ(0u, doctor.ExitCode) << doctor.Output;
    // Each result is stored at once.
    const CRunResult run = RunProgram(Program(L"zebdiag.exe") + L" run --test 1");
    EXPECT_EQ(0u, run.ExitCode) << run.Output;
    EXPECT_TRUE(std::filesystem::exists(DataFolder() + L"ZebDiag.bin"));

    const CRunResult again = Run(L"install.cmd");
    EXPECT_EQ(0u, again.ExitCode) << again.Output;

    const CRunResult removed = Run(L"remove.cmd");
    EXPECT_EQ(0u, removed.ExitCode) << removed.Output;
    EXPECT_NE(std::string::npos, removed.Output.find("ZEB Diagnostics is removed.")) << removed.Output;
    for (const wchar_t* key : {kSettings, kClass, kAppId})
        EXPECT_FALSE(HasKey(key)) << std::filesystem::path(key);
    EXPECT_TRUE(std::filesystem::exists(DataFolder() + L"ZebDiag.bin"));
}

TEST_F(Installation, ThatFailsSaysAtWhat)
{
    SetEnvironmentVariableW(L"MOFCOMP", L"cmd.exe /c exit 3 &rem");
    const CRunResult installed = Run(L"install.cmd");
    EXPECT_EQ(1u, installed.ExitCode) << installed.Output;
    EXPECT_NE(
        std::string::npos,
        installed.Output.find("ZEB Diagnostics is not installed: zebdiag.mof cannot be compiled (code 3)."))
        << installed.Output;
}
} // namespace
