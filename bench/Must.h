// Ends the benchmark where a step of it fails: a figure from half the work would be worse than none.
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>
#include <windows.h>

inline void Must(HRESULT hr, const char* step)
{
    if (SUCCEEDED(hr))
        return;
    char code[32];
    _snprintf(code, sizeof(code), " failed, 0x%08x", static_cast<unsigned>(hr));
    throw std::runtime_error(step + std::string(code));
}

inline void Must(bool done, const char* step)
{
    if (!done)
        throw std::runtime_error(step + std::string(" failed"));
}
