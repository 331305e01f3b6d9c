// A machine set up for one system test: the product's registry keys hold what the test says and nothing else,
// all files stand in a folder of the test's own, and at the end processes, keys and files are gone.
#pragma once

#include <functional>
#include <string>
#include <windows.h>

class CProviderMachine
{
  public:
    // Which agent the provider loads (the registry value "TestVorl").
    enum class Agent
    {
        Real = 0,
        Test = 1,
        Proxy = 2
    };

    explicit CProviderMachine(Agent agent = Agent::Test);
    ~CProviderMachine();
    CProviderMachine(const CProviderMachine&) = delete;
    CProviderMachine& operator=(const CProviderMachine&) = delete;

    // The folder of this test's files; ends with a backslash.
    const std::wstring& Folder() const noexcept { return m_folder; }
    // The script of the test and proxy agents, as JSON text.
    void SetScript(const std::string& json) const;
    // Values under the product's key; `subkey` is relative to it, such as L"ZebDiag".
    void SetNumber(const wchar_t* subkey, const wchar_t* name, DWORD value) const;
    void SetText(const wchar_t* subkey, const wchar_t* name, const std::wstring& value) const;
    void SetBinary(const wchar_t* subkey, const wchar_t* name, const std::string& bytes) const;
    // Puts the values back to those of a new machine, which has no script.
    void ForgetValues() const;

    // Files of the folder, as bytes. A missing file is empty.
    std::string ReadFileBytes(const std::wstring& name) const;
    void WriteFileBytes(const std::wstring& name, const std::string& bytes) const;
    bool HasFile(const std::wstring& name) const;
    void RemoveFile(const std::wstring& name) const;
    // Waits until the bytes of a file of the folder are as wanted; false after a minute.
    bool WaitForFile(const std::wstring& name, const std::function<bool(const std::string&)>& wanted) const;

    // How long the management service holds on to the provider after the last request, from now on.
    void SetIdleTime(DWORD milliseconds) const;
    // Whether it refuses of the provider's contract what a strict one may refuse, from now on.
    void SetStrict(bool strict) const;

    // Waits until the provider, the management service and the agents have ended by themselves.
    bool WaitUntilAllEnded() const;

  private:
    void ShowTrace() const;

    const Agent m_agent;
    const std::wstring m_folder;
};
