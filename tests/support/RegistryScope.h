// A registry of the test's own: while the object lives, HKEY_LOCAL_MACHINE of this process is an empty,
// volatile key, which is removed at the end. Scopes may nest; they end in reverse order. For one test at a
// time: the redirection holds for all threads of the process.
#pragma once

#include "Common/src/com/Owned.h"

#include <string>
#include <string_view>
#include <windows.h>

class CRegistryScope
{
  public:
    CRegistryScope();
    ~CRegistryScope();
    CRegistryScope(const CRegistryScope&) = delete;
    CRegistryScope& operator=(const CRegistryScope&) = delete;

    // Each creates the subkey where it is missing. Names and texts are ANSI.
    void CreateKey(const char* subkey);
    void SetString(const char* subkey, const char* name, const char* value);
    void SetNumber(const char* subkey, const char* name, DWORD value);
    void SetBinary(const char* subkey, const char* name, std::string_view bytes);
    // The bytes as they stand, of any type: a text keeps its missing NUL.
    void SetRaw(const char* subkey, const char* name, DWORD type, std::string_view bytes);

  private:
    CRegKey m_root;
    std::string m_path;
    HKEY m_outer = nullptr;
};
