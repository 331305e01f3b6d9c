#include "standin/service/CompileMof.h"

#include "Common/src/com/Text.h"
#include "standin/mof/Repository.h"
#include "standin/service/Settings.h"

#include <algorithm>
#include <cstdio>
#include <windows.h>

namespace standin
{
namespace
{
std::wstring AbsolutePath(const std::wstring& file)
{
    const DWORD size = GetFullPathNameW(file.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(GetFullPathNameW(file.c_str(), size, full.data(), nullptr));
    return full;
}
} // namespace

int CompileMof(const std::vector<std::wstring>& files)
{
    std::vector<std::wstring> all = ReadMofFiles();
    for (const std::wstring& file : files)
    {
        const std::wstring full = AbsolutePath(file);
        if (std::none_of(all.begin(), all.end(),
                         [&](const std::wstring& known) { return EqualNoCaseAscii(known, full); }))
            all.push_back(full);
    }
    CRepository repository(L".");
    for (const std::wstring& file : all)
    {
        try
        {
            repository.CompileFile(file);
        }
        catch (const std::exception& error)
        {
            std::fprintf(stderr, "%s\n", error.what());
            return 1;
        }
    }
    if (!WriteMofFiles(all))
    {
        std::fprintf(stderr, "The list of MOF files could not be written to the registry.\n");
        return 1;
    }
    std::printf("%u MOF files make up the repository.\n", static_cast<unsigned>(all.size()));
    return 0;
}
} // namespace standin
