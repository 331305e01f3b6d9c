#include "CDM/src/ResourceSearch.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebRegistry.h"

#include <string>

namespace
{
constexpr DWORD kFolderMax = 260;

std::string LanguageOf(LCID locale)
{
    char name[16] = {};
    GetLocaleInfoA(locale, LOCALE_SABBREVLANGNAME, name, sizeof(name));
    return name;
}

// Two of the steps show the path of the library that they loaded and two its bare name: support knows it so.
HMODULE LoadOverride(const std::string& file)
{
    ZebDebug().Write("Check for override");
    const std::optional<std::string> folder = ReadTerminatedString(kProvidersKey, "ResourcePath", kFolderMax);
    if (!folder)
        return nullptr;
    const std::string path = *folder + "\\" + file;
    ZebDebug().Write("Looking in %s", path.c_str());
    HMODULE library = LoadLibraryA(path.c_str());
    if (library)
        ZebDebug().Write("Loaded %s", path.c_str());
    return library;
}

HMODULE LoadCommon(const std::string& file)
{
    ZebDebug().Write("Check in common resource folder");
    const std::optional<std::string> folder = ReadTerminatedString(kZebKey, "ResourcePath", kFolderMax);
    if (!folder)
        return nullptr;
    // The value carries its own trailing backslash.
    const std::string path = *folder + file;
    ZebDebug().Write("Looking in %s", path.c_str());
    HMODULE library = LoadLibraryA(path.c_str());
    if (library)
        ZebDebug().Write("Loaded %s", file.c_str());
    return library;
}

HMODULE LoadFromProvider(const std::string& file)
{
    const std::optional<std::string> image = ReadTerminatedString(kZebKey, "ImagePath", kFolderMax);
    if (!image)
        return nullptr;
    const std::string folder = *image + "WMI Providers\\bin";
    ZebDebug().Write("Looking in provider directory");
    const std::string path = folder + "\\" + file;
    ZebDebug().Write("Looking for resource DLL in image path %s", file.c_str());
    HMODULE library = LoadLibraryA(path.c_str());
    if (library)
        ZebDebug().Write("Loaded %s", path.c_str());
    return library;
}

HMODULE LoadLocally(const std::string& file)
{
    ZebDebug().Write("Looking locally");
    ZebDebug().Write("Looking for resource DLL on default path %s", file.c_str());
    HMODULE library = LoadLibraryA(file.c_str());
    if (library)
        ZebDebug().Write("Loaded %s", file.c_str());
    else
        ZebDebug().Write("load failed");
    return library;
}
} // namespace

HMODULE SearchResourceDll(LCID locale, const char* baseName)
{
    const std::string language = LanguageOf(locale);
    ZebDebug().Write("Language code: %s", language.c_str());
    char name[MAX_PATH] = {};
    _snprintf(name, sizeof(name) - 1, "%s%s.dll", language.c_str(), baseName);
    const std::string file = name;
    for (const auto load : {LoadOverride, LoadCommon, LoadFromProvider, LoadLocally})
        if (HMODULE library = load(file))
        {
            ZebDebug().Write("load succeeded");
            return library;
        }
    return nullptr;
}
