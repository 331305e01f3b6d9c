// The source of the script: the file that the registry names, or the one that is built in.
#pragma once

#include "agent/scripted/Script.h"

// Below HKEY_LOCAL_MACHINE; the value "Script" names the file.
inline constexpr wchar_t kScriptKey[] = L"SOFTWARE\\Veltrane\\Halvern\\ZEB\\VorlTest";

// The script to perform. If it cannot be used, the reason is written to the debugger and, if the account may,
// to the value "ScriptError" beside "Script", and CScriptError is thrown.
CScript LoadScript();

// The script that is performed if the registry names none; the same text as agent/scripted/example.json.
std::string_view DefaultScriptText() noexcept;
