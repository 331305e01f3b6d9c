#include "CDM/src/ZebString.h"

#include "CDM/src/ZebDebug.h"
#include "Common/src/com/Text.h"

#include <new>
#include <string_view>

namespace
{
constexpr char kSource[] = "CDM/src/ZebString";
constexpr UINT kStringsPerBlock = 16;
// The language part of "the system's default", whose texts the system itself picks and converts.
constexpr WORD kSystemDefaultLanguage = 0x0800;

UINT CodePageOf(LCID locale) noexcept
{
    DWORD codePage = CP_ACP;
    if (locale != 0)
        GetLocaleInfoA(locale, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                       reinterpret_cast<char*>(&codePage), sizeof(codePage));
    return codePage;
}

std::string LoadThroughSystem(HMODULE library, UINT id)
{
    std::string text(1024, '\0');
    for (;;)
    {
        const int length = LoadStringA(library, id, text.data(), static_cast<int>(text.size()));
        if (length <= 0)
        {
            ZebDebug().Error(kSource, __LINE__, "Error in LoadString");
            return {};
        }
        if (static_cast<size_t>(length) < text.size() - 1)
        {
            text.resize(static_cast<size_t>(length));
            return text;
        }
        text.resize(text.size() * 2);
    }
}

// The text of the library as it is, in the library's language, whatever the thread's own language. A block
// holds sixteen strings, each a 16-bit length and as many units.
std::string LoadFromBlock(HMODULE library, UINT id, UINT codePage)
{
    HRSRC block = FindResourceA(library, MAKEINTRESOURCEA(id / kStringsPerBlock + 1),
                                reinterpret_cast<const char*>(RT_STRING));
    if (!block)
    {
        ZebDebug().Error(kSource, __LINE__, "Failed to find resource");
        return {};
    }
    HGLOBAL loaded = LoadResource(library, block);
    const auto* at = static_cast<const wchar_t*>(loaded ? LockResource(loaded) : nullptr);
    if (!at)
    {
        ZebDebug().Error(kSource, __LINE__, "Failed to lock resource.");
        return {};
    }
    // A damaged library must not lead outside the block.
    const wchar_t* const end = at + SizeofResource(library, block) / sizeof(wchar_t);
    for (UINT skip = id % kStringsPerBlock; skip > 0 && at < end; --skip)
        at += 1 + *at;
    if (at >= end || *at > end - at - 1)
        return {};
    return NarrowText({at + 1, *at}, codePage);
}
} // namespace

std::string LoadZebString(HMODULE library, UINT id, LCID locale) noexcept
try
{
    if (!library)
        return {};
    if (LOWORD(locale) == kSystemDefaultLanguage)
        return LoadThroughSystem(library, id);
    return LoadFromBlock(library, id, CodePageOf(locale));
}
catch (const std::bad_alloc&)
{
    ZebDebug().Error(kSource, __LINE__, "Out of memory");
    return {};
}
