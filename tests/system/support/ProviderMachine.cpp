#include "tests/system/support/ProviderMachine.h"

#include "Common/src/com/Owned.h"
#include "tests/system/support/Process.h"

#include <exception>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace
{
constexpr wchar_t kProductKey[] = L"SOFTWARE\\Veltrane\\Halvern\\ZEB";
constexpr wchar_t kServiceKey[] = L"SOFTWARE\\WMI stand-in";
constexpr wchar_t kIdleTime[] = L"IdleMilliseconds";
constexpr wchar_t kStrict[] = L"Strict";
constexpr wchar_t kStartFailure[] = L"LastStartFailure";
constexpr DWORD kUsualIdleTime = 3000; // as scripts/register sets it

// Every process that may serve a client of the provider.
const wchar_t* const kServers[] = {L"WmiStandin.exe", L"Drevok.EXE", L"VorlProxy.exe"};

std::wstring MakeTestFolder()
{
    static unsigned count = 0;
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    // A test program that was killed leaves its folder behind, and process numbers come again.
    for (;;)
    {
        const std::wstring folder = std::wstring(temp) + L"zeb-system-" +
                                    std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
        if (CreateDirectoryW(folder.c_str(), nullptr))
            return folder + L"\\";
        if (GetLastError() != ERROR_ALREADY_EXISTS)
            throw std::runtime_error("no folder for the files of a test");
    }
}

void RemoveFolder(const std::wstring& folder)
{
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW((folder + L"*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE)
    {
        do
            DeleteFileW((folder + found.cFileName).c_str());
        while (FindNextFileW(search, &found));
        FindClose(search);
    }
    RemoveDirectoryW(folder.c_str());
}

struct ChangesTraits
{
    using Type = HANDLE;
    static Type Empty() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type h) noexcept { FindCloseChangeNotification(h); }
};

void SetServiceNumber(const wchar_t* name, DWORD number)
{
    if (RegSetKeyValueW(HKEY_LOCAL_MACHINE, kServiceKey, name, REG_DWORD, &number, sizeof number) !=
        ERROR_SUCCESS)
        throw std::runtime_error("a setting of the management service could not be set");
}

void SetValue(const wchar_t* subkey, const wchar_t* name, DWORD type, const void* data, size_t size)
{
    CRegKey key;
    const std::wstring path = std::wstring(kProductKey) + L"\\" + subkey;
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(),
                        nullptr) != ERROR_SUCCESS ||
        RegSetValueExW(key.Get(), name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size)) !=
            ERROR_SUCCESS)
        throw std::runtime_error("a registry value of a test could not be set");
}
void ShowStartFailure()
{
    DWORD failure = 0;
    DWORD size = sizeof failure;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kServiceKey, kStartFailure, RRF_RT_REG_DWORD, nullptr, &failure,
                     &size) != ERROR_SUCCESS)
        return;
    char step[100] = {};
    size = sizeof step;
    RegGetValueA(HKEY_LOCAL_MACHINE, "SOFTWARE\\WMI stand-in", "LastStartStep", RRF_RT_REG_SZ, nullptr, step,
                 &size);
    std::cout << "A provider of this test did not start: 0x" << std::hex << failure << std::dec << ", "
              << step << "\n";
}
} // namespace

CProviderMachine::CProviderMachine(Agent agent) : m_agent(agent), m_folder(MakeTestFolder())
{
    if (!WaitUntilAllEnded())
        throw std::runtime_error("a server of an earlier test still runs");
    SetIdleTime(kUsualIdleTime);
    SetStrict(false);
    // There are tests that make a start fail: what an earlier one caused says nothing about this one.
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kServiceKey, kStartFailure);
    ForgetValues();
}

CProviderMachine::~CProviderMachine()
{
    if (testing::Test::HasFailure() || std::uncaught_exceptions() > 0)
        ShowTrace();
    // That they end by themselves is a test of its own; waiting for it here would cost each machine ten
    // seconds.
    try
    {
        KillServers({std::begin(kServers), std::end(kServers)});
        SetIdleTime(kUsualIdleTime);
    }
    catch (const std::exception& failure)
    {
        ADD_FAILURE() << failure.what();
    }
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kProductKey);
    RemoveFolder(m_folder);
}

// The last lines of the last provider's trace: the reason of a failure is often there, and the file goes.
void CProviderMachine::ShowTrace() const
{
    constexpr size_t kMost = 4000;
    const std::string trace = ReadFileBytes(L"ZebDiagDbg.log");
    std::cout << "The end of the provider's trace:\n"
              << trace.substr(trace.size() > kMost ? trace.size() - kMost : 0) << "\n";
    ShowStartFailure();
}

void CProviderMachine::ForgetValues() const
{
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kProductKey);
    SetText(L"ZebDiag", L"InstalledDir", m_folder);
    SetText(L"ZebDiag", L"DebugFileName", m_folder + L"ZebDiagDbg.log");
    SetNumber(L"ZebDiag", L"DebugLevel", 2);
    SetNumber(L"WMI\\Providers", L"TestVorl", static_cast<DWORD>(m_agent));
}

void CProviderMachine::SetScript(const std::string& json) const
{
    WriteFileBytes(L"script.json", json);
    SetText(L"VorlTest", L"Script", m_folder + L"script.json");
}

void CProviderMachine::SetNumber(const wchar_t* subkey, const wchar_t* name, DWORD value) const
{
    SetValue(subkey, name, REG_DWORD, &value, sizeof value);
}

void CProviderMachine::SetText(const wchar_t* subkey, const wchar_t* name, const std::wstring& value) const
{
    SetValue(subkey, name, REG_SZ, value.c_str(), (value.size() + 1) * sizeof(wchar_t));
}

void CProviderMachine::SetBinary(const wchar_t* subkey, const wchar_t* name, const std::string& bytes) const
{
    SetValue(subkey, name, REG_BINARY, bytes.data(), bytes.size());
}

std::string CProviderMachine::ReadFileBytes(const std::wstring& name) const
{
    // Whoever writes the file must not notice that it is being read.
    const CFileHandle file(CreateFileW((m_folder + name).c_str(), GENERIC_READ,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::string bytes;
    char buffer[65536];
    DWORD size = 0;
    while (file && ReadFile(file.Get(), buffer, sizeof buffer, &size, nullptr) && size > 0)
        bytes.append(buffer, size);
    return bytes;
}

void CProviderMachine::WriteFileBytes(const std::wstring& name, const std::string& bytes) const
{
    std::ofstream file((m_folder + name).c_str(), std::ios::binary);
    file << bytes;
    if (!file.flush())
        throw std::runtime_error("a file of a test could not be written");
}

bool CProviderMachine::HasFile(const std::wstring& name) const
{
    return GetFileAttributesW((m_folder + name).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void CProviderMachine::RemoveFile(const std::wstring& name) const
{
    if (!DeleteFileW((m_folder + name).c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND)
        throw std::runtime_error("a file of a test could not be removed");
}

bool CProviderMachine::WaitForFile(const std::wstring& name,
                                   const std::function<bool(const std::string&)>& wanted) const
{
    constexpr ULONGLONG kLongest = 60000;
    const COwned<ChangesTraits> changes(FindFirstChangeNotificationW(
        m_folder.c_str(), FALSE,
        FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_SIZE | FILE_NOTIFY_CHANGE_LAST_WRITE));
    if (!changes)
        throw std::runtime_error("the folder of a test cannot be watched");
    const ULONGLONG end = GetTickCount64() + kLongest;
    while (!wanted(ReadFileBytes(name)))
    {
        const ULONGLONG now = GetTickCount64();
        if (now >= end || WaitForSingleObject(changes.Get(), static_cast<DWORD>(end - now)) != WAIT_OBJECT_0)
            return false;
        FindNextChangeNotification(changes.Get());
    }
    return true;
}

void CProviderMachine::SetIdleTime(DWORD milliseconds) const
{
    SetServiceNumber(kIdleTime, milliseconds);
}

void CProviderMachine::SetStrict(bool strict) const
{
    SetServiceNumber(kStrict, strict);
}

bool CProviderMachine::WaitUntilAllEnded() const
{
    bool all = true;
    for (const wchar_t* server : kServers)
        all = WaitForNoProcess(server) && all;
    return all;
}
