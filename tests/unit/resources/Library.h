// A shipped library of texts, loaded as plain data: what is looked at is the file, not its loading.
#pragma once

#include "CDM/src/ZebString.h"

#include <string>

inline HMODULE Library(const std::string& file)
{
    return LoadLibraryExA(file.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
}
