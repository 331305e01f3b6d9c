// The whole program before a namespace with two adapters: "Ethernet" with a link test, and "Ethernet 2" with
// link, speed and sender.
#pragma once

#include "Common/src/com/Text.h"
#include "FakeConsole.h"
#include "FakeDiagnostics.h"
#include "FakeMachine.h"
#include "FakeRegistry.h"
#include "tests/support/TempFolder.h"
#include "tools/zebdiag/Application.h"
#include "tools/zebdiag/languages/Said.h"

#include <atomic>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace zebdiag
{
class CommandsTest : public testing::Test
{
  protected:
    CommandsTest()
    {
        m_seams.Connect = [this](const CTarget& target, const std::wstring& password)
        {
            m_password = password;
            return CWmiSession(m_world, target);
        };
        m_seams.Control.Stop = m_stop.Get();
        m_seams.Control.Abandon = m_abandon.Get();
        m_seams.Control.PollMilliseconds = 1;
        m_seams.Control.Now = [this] { return m_now.load(); };
        m_seams.Surroundings.Names = [](const CWmiSession&) {
            return AdapterNames{{L"{AAAA}", {L"Ethernet", L"Contoso"}},
                                {L"{BBBB}", {L"Ethernet 2", L"Fabrikam"}}};
        };
        m_seams.Surroundings.ServingProcesses = [](const CWmiSession&)
        { return std::vector<unsigned long>{312}; };
        m_seams.Surroundings.FullRunSeconds = [this](const CWmiSession&) { return m_fullRunSeconds; };

        m_seams.Surroundings.StoreRefuses = [](const CWmiSession&) { return false; };
        m_seams.Surroundings.Registry = &m_registry;
        m_seams.Surroundings.ProfileFile = (m_folder.Path() / "Maker" / "profiles.json").wstring();
        m_seams.Machine = &m_machine;
        m_seams.Locale = L"MS_409";

        m_world->Add(L"1@{AAAA}", L"Link");
        m_world->Add(L"1@{BBBB}", L"Link");
        m_world->Add(L"2@{BBBB}", L"Speed");
        m_world->Add(L"9@{BBBB}", L"Sender", true);
    }

    // The language of a run stays that of the process.
    ~CommandsTest() override { SpeakLanguageOf(0x409); }

    ExitCode Run(const std::vector<std::wstring>& arguments)
    {
        return RunApplication(arguments, m_console, m_seams);
    }
    nlohmann::json Document() const { return nlohmann::json::parse(Utf8Text(m_console.Output)); }

    // The test runs, in another program.
    void Occupy(const wchar_t* key)
    {
        m_world->Tests[key].InUse = true;
        m_world->Results[key] = {TestState::InProgress, 40, {}, {}};
        m_world->Tests[key].Stop = [this, key]
        {
            m_world->Tests[key].InUse = false;
            m_world->Results[key].State = TestState::Stopped;
            return true;
        };
    }

    ComPtr<CFakeDiagnostics> m_world = MakeCom<CFakeDiagnostics>();
    CFakeConsole m_console;
    CFakeRegistry m_registry;
    CFakeMachine m_machine;
    CTempFolder m_folder;
    CHandle m_stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    CHandle m_abandon{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::atomic<unsigned long long> m_now = 0;
    std::optional<unsigned> m_fullRunSeconds = 100;
    std::wstring m_password;
    CApplicationSeams m_seams;
};
} // namespace zebdiag
