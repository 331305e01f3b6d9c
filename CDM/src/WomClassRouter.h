// Finds the handler of a management class by name, without regard to case by the rules of the ANSI code page.
// Filled while the provider initialises, read from any thread afterwards. Owns no handler.
#pragma once

#include <map>
#include <string>
#include <windows.h>

class CWomClassHandler;

class CWomClassRouter
{
  public:
    // Registers the handler under the name that it gives; the first of a name stays.
    void AddClass(CWomClassHandler* handler);
    // Null where no handler serves the class, or the name is null.
    CWomClassHandler* FindClass(const wchar_t* className) const;
    void Clear() noexcept { m_handlers.clear(); }

  private:
    std::map<std::wstring, CWomClassHandler*> m_handlers;
};
