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
    CRepository repository(L".");
    size_t lasting = 0; // the files before this one were compiled before another one removed something
    const auto compile = [&](size_t i)
    {
        if (repository.CompileFile(all[i]))
            lasting = i + 1;
    };
    try
    {
        for (size_t i = 0; i < all.size(); ++i)
            compile(i);
        for (const std::wstring& file : files)
        {
            const std::wstring full = AbsolutePath(file);
            if (std::any_of(all.begin() + lasting, all.end(),
                            [&](const std::wstring& known) { return EqualNoCaseAscii(known, full); }))
                continue;
            all.push_back(full);
            compile(all.size() - 1);
        }
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
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
