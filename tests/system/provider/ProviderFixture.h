// What the system tests of the provider share: clients and the shapes of their answers.
#pragma once

#include "tests/system/support/Process.h"
#include "tests/system/support/ProviderMachine.h"
#include "tests/system/support/WmiClient.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// Two adapters with an ordinary test each that passes, one that fails, and a sender.
extern const char kScriptOfTwoAdapters[];

// Runs "zebdiag ARGUMENTS --json" and reads its document. The exit code must be the expected one.
nlohmann::json ZebdiagJson(const std::wstring& arguments, DWORD expectedExitCode = 0);
std::wstring ZebdiagCommand(const std::wstring& arguments);
// Runs "zebdiag ARGUMENTS" to its end.
CRunResult Zebdiag(const std::wstring& arguments);
// Runs a script of this folder with cscript; the lines that it printed, sorted.
std::vector<std::string> RunScript(const wchar_t* file, const std::wstring& arguments = L"");

// The keys of all tests that a document of "list" names, sorted.
std::vector<std::string> TestKeys(const nlohmann::json& list);

// The object path of a Tolva_DiagTest and of an adapter.
std::wstring TestPath(const std::wstring& key);
std::wstring AdapterPath(const std::wstring& deviceId);
