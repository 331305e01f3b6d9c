#include "tests/system/provider/ProviderFixture.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

namespace
{
constexpr char kCountsFile[] = "counts.json";

unsigned CallsIn(const std::string& text, const char* test, const char* call)
{
    const nlohmann::json counts = nlohmann::json::parse(text, nullptr, false);
    if (counts.is_discarded())
        return 0; // not there yet
    const nlohmann::json calls = counts.at("Tests").value(test, nlohmann::json::object());
    return calls.value(call, 0u);
}
} // namespace

const wchar_t kTrace[] = L"ZebDiagDbg.log";

const char kTwoAdapters[] = R"([
    { "Key": "ALPHA", "Tests": [ { "TestID": 1 }, { "TestID": 2, "Outcome": "0x80040321" }, { "TestID": 9 } ] },
    { "Key": "BETA", "Tests": [ { "TestID": 1 }, { "TestID": 15 } ] }
])";

void SetAdapters(const CProviderMachine& machine, const std::string& adapters)
{
    const nlohmann::json counts = NarrowText(machine.Folder()) + kCountsFile;
    machine.SetScript("{ \"CountsFile\": " + counts.dump() + ", \"Adapters\": " + adapters + " }");
}

unsigned CallsOf(const CProviderMachine& machine, const char* test, const char* call)
{
    return CallsIn(machine.ReadFileBytes(WidenText(kCountsFile)), test, call);
}

bool WaitForCalls(const CProviderMachine& machine, const char* test, const char* call, unsigned count)
{
    return machine.WaitForFile(WidenText(kCountsFile),
                               [&](const std::string& text) { return CallsIn(text, test, call) >= count; });
}

std::wstring ZebdiagCommand(const std::wstring& arguments)
{
    // English, whatever the language of whoever runs the tests.
    const wchar_t* language = arguments.find(L"--locale") == std::wstring::npos ? L" --locale en-US" : L"";
    return L"\"" + BinFolder() + L"zebdiag.exe\" " + arguments + language;
}

CRunResult Zebdiag(const std::wstring& arguments)
{
    return RunProgram(ZebdiagCommand(arguments));
}

nlohmann::json ZebdiagJson(const std::wstring& arguments, DWORD expectedExitCode)
{
    const CRunResult result = RunProgram(ZebdiagCommand(arguments + L" --json"), Errors::Dropped);
    EXPECT_EQ(expectedExitCode, result.ExitCode) << NarrowText(arguments) << "\n" << result.Output;
    nlohmann::json document = nlohmann::json::parse(result.Output, nullptr, false);
    EXPECT_FALSE(document.is_discarded()) << result.Output;
    return document;
}

std::string StateOf(const nlohmann::json& results, const std::string& key)
{
    for (const auto& result : results.at("results"))
        if (result.at("test").at("key") == key)
            return result.at("state");
    return "none";
}

std::vector<std::string> RunScript(const wchar_t* file, const std::wstring& arguments)
{
    const CRunResult result =
        RunProgram(L"cscript.exe /nologo \"" + BinFolder() + L"scripts\\" + file + L"\" " + arguments);
    EXPECT_EQ(0u, result.ExitCode) << result.Output;
    std::vector<std::string> lines;
    std::istringstream output(result.Output);
    for (std::string line; std::getline(output, line);)
    {
        if (line.ends_with('\r'))
            line.pop_back();
        lines.push_back(std::move(line));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::vector<std::string> TestKeys(const nlohmann::json& list)
{
    std::vector<std::string> keys;
    for (const auto& adapter : list.at("adapters"))
        for (const auto& test : adapter.at("tests"))
            keys.push_back(test.at("key").get<std::string>());
    std::sort(keys.begin(), keys.end());
    return keys;
}

CResultTexts AllResults(const CWmiClient& client)
{
    CResultTexts results;
    for (const auto& result : client.Instances(L"Tolva_DiagResult"))
        results.emplace(PropertyText(result.Get(), L"DiagnosticName").value(),
                        AllPropertyTexts(result.Get()));
    return results;
}

void RunUntilStopped(const CProviderMachine& machine)
{
    constexpr DWORD kForEver = 1000000;
    machine.SetNumber(L"ZebDiag", L"CheckTime", 1);
    machine.SetNumber(L"ZebDiag", L"TimeoutSndRsp", kForEver);
    machine.SetNumber(L"ZebDiag", L"MaxPktsRcvd", kForEver * 1000);
}

std::string NewTrace(const CProviderMachine& machine, const std::string& before)
{
    const std::string now = machine.ReadFileBytes(kTrace);
    return now.starts_with(before) ? now.substr(before.size()) : now;
}

size_t CountOf(const std::string& text, const char* mark)
{
    size_t count = 0;
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1))
        ++count;
    return count;
}

HRESULT CallTest(const CWmiClient& client, const std::wstring& key, const wchar_t* method,
                 ComPtr<IWbemClassObject>& out)
{
    return client.Exec(TestPath(key), method,
                       {{L"SystemElement", AdapterPath(key.substr(key.find(L'@') + 1))}}, out);
}

HRESULT CallTest(const CWmiClient& client, const std::wstring& key, const wchar_t* method)
{
    ComPtr<IWbemClassObject> out;
    return CallTest(client, key, method, out);
}

HRESULT PutCoverage(const CWmiClient& client, IWbemClassObject* setting, BYTE percent)
{
    CVariant value = CVariant::FromByte(percent);
    const HRESULT hr = setting->Put(L"PercentOfTestCoverage", 0, &value, 0);
    return FAILED(hr) ? hr : client.Services()->PutInstance(setting, WBEM_FLAG_UPDATE_ONLY, nullptr, nullptr);
}

std::wstring TestPath(const std::wstring& key)
{
    return L"Tolva_DiagTest.Name=\"" + EscapedKey(key) + L"\"";
}

std::wstring AdapterPath(const std::wstring& deviceId)
{
    return L"Tolva_EthernetAdapter.DeviceID=\"" + EscapedKey(deviceId) + L"\"";
}
