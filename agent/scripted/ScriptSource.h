// Where the script comes from: the file that the registry names, or the one that is built in.
#pragma once

#include "agent/scripted/Script.h"

// Below HKEY_LOCAL_MACHINE; the value "Script" names the file.
inline constexpr wchar_t kScriptKey[] = L"SOFTWARE\\Veltrane\\Halvern\\ZEB\\VorlTest";

// The script to perform. Where it cannot be used, CScriptError is thrown after the reason was written to the
// debugger and, where the account may, to the value "ScriptError" beside "Script".
CScript LoadScript();

// The script that is performed where the registry names none; the same text as agent/scripted/example.json.
std::string_view DefaultScriptText() noexcept;
