// What the system tests of the provider share: clients and the shapes of their answers.
#pragma once

#include "tests/system/support/Process.h"
#include "tests/system/support/ProviderMachine.h"
#include "tests/system/support/WmiClient.h"

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// Two adapters with an ordinary test each that passes, one that fails, and a sender.
extern const char kTwoAdapters[];

// Sets a script whose adapters are given as JSON text and whose calls are counted, for WaitForCalls.
void SetAdapters(const CProviderMachine& machine, const std::string& adapters);
// How often the agent was called for a test, such as "RunDiagTest" for "9@ALPHA", since the provider loaded
// it.
unsigned CallsOf(const CProviderMachine& machine, const char* test, const char* call);
// Waits until the agent was called so often; false after a minute.
bool WaitForCalls(const CProviderMachine& machine, const char* test, const char* call, unsigned count);

// Runs "zebdiag ARGUMENTS --json" and reads its document. The exit code must be the expected one.
nlohmann::json ZebdiagJson(const std::wstring& arguments, DWORD expectedExitCode = 0);
std::wstring ZebdiagCommand(const std::wstring& arguments);
// Runs "zebdiag ARGUMENTS" to its end.
CRunResult Zebdiag(const std::wstring& arguments);
// What a document of "results" says of a test: "passed", "stopped" and so on; "none" where it has no result.
std::string StateOf(const nlohmann::json& results, const std::string& key);
// Runs a script of this folder with cscript; the lines that it printed, sorted.
std::vector<std::string> RunScript(const wchar_t* file, const std::wstring& arguments = L"");

// The keys of all tests that a document of "list" names, sorted.
std::vector<std::string> TestKeys(const nlohmann::json& list);

// All results by the keys of their tests, each with all its properties.
using CResultTexts = std::map<std::wstring, CPropertyTexts>;
CResultTexts AllResults(const CWmiClient& client);

// From now on a sender's or responder's run polls every second and ends by nothing but a stop.
void RunUntilStopped(const CProviderMachine& machine);

// What is in the trace, and what came to it since it was seen before. A new process begins a new trace.
extern const wchar_t kTrace[];
std::string NewTrace(const CProviderMachine& machine, const std::string& before);
size_t CountOf(const std::string& text, const char* mark);

// Calls a method of a test for the adapter that its key names. `out` is what the method gave back.
HRESULT CallTest(const CWmiClient& client, const std::wstring& key, const wchar_t* method,
                 ComPtr<IWbemClassObject>& out);
HRESULT CallTest(const CWmiClient& client, const std::wstring& key, const wchar_t* method);

// Stores a setting with another coverage.
HRESULT PutCoverage(const CWmiClient& client, IWbemClassObject* setting, BYTE percent);

// The object path of a Tolva_DiagTest and of an adapter.
std::wstring TestPath(const std::wstring& key);
std::wstring AdapterPath(const std::wstring& deviceId);
