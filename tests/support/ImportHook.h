// Failures of the operating system, on demand. A test program that defines a hooked import takes the place of
// the import library for that function: all code linked into the program calls through the variable, which
// holds the system's function until a hook is set. Static objects of the program must not need the function:
// the variable is filled while they are made.
#pragma once

#include <utility>
#include <windows.h>

// At file scope of one source file of the test program, for functions that the platform's headers declare as
// imported.
#define ZEB_HOOKED_IMPORT(library, function)                                                                 \
    extern "C"                                                                                               \
    {                                                                                                        \
        decltype(&(function)) __imp_##function = reinterpret_cast<decltype(&(function))>(                    \
            reinterpret_cast<void*>(GetProcAddress(LoadLibraryA(library), #function)));                      \
    }

// Replaces a function while it lives. Calls of other threads see it too.
template <class Function>
class CImportHook
{
  public:
    CImportHook(Function& import, Function replacement)
        : m_import(import), m_real(std::exchange(import, replacement))
    {
    }
    CImportHook(const CImportHook&) = delete;
    CImportHook& operator=(const CImportHook&) = delete;
    ~CImportHook() { m_import = m_real; }

    Function Real() const { return m_real; }

  private:
    Function& m_import;
    Function m_real;
};
