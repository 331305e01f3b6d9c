#include "CDM/src/ZebImpResourceMgr.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebHelpers.h"
#include "CDM/src/ZebRegistry.h"
#include "CDM/src/ZebString.h"
#include "CDM/src/ZebTrace.h"

#include <new>

namespace
{
constexpr DWORD kFolderMax = 260;

std::string LanguageOf(LCID locale)
{
    char name[16] = {};
    GetLocaleInfoA(locale, LOCALE_SABBREVLANGNAME, name, sizeof(name));
    return name;
}

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
        ZebDebug().Write("Loaded %s", file.c_str()); // sic, not the path
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

// Loads the library of the locale's language for a base name from the first folder that has it: the override
// folder, the common resource folder, the provider's folder, the system's search order. Null if none has;
// each step is traced. Throws std::bad_alloc only.
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
} // namespace

HRESULT CZebImpResourceMgr::LoadResourceDll(LCID locale, const char* baseName, bool registerDefault,
                                            HMODULE* library) noexcept
try
{
    CZebTrace trace("CZebImpResourceMgr::LoadResourceDll");
    ZebDebug().Write("Locale: 0x%4X", locale);
    HMODULE found = nullptr;
    if (library)
        *library = nullptr;
    if (FindLoaded(locale, baseName, found))
    {
        ZebDebug().Write("Already loaded");
        if (library)
            *library = found;
        return S_OK;
    }
    // Outside the lock: looking for a library must not keep other lookups waiting. What is found, or missing,
    // counts for every client.
    {
        const CProcessIdentity asProcess;
        found = SearchResourceDll(locale, baseName);
    }
    Record(locale, baseName, registerDefault, found);
    if (library)
        *library = found;
    return S_OK;
}
catch (const std::bad_alloc&)
{
    ZebDebug().Write("Out of memory");
    return S_OK;
}

bool CZebImpResourceMgr::FindLoaded(LCID locale, const char* baseName, HMODULE& library)
{
    LocaleMap* locales = nullptr;
    {
        CZebLock lock(m_lock);
        locales = &m_libraries[baseName];
    }
    CZebLock lock(m_lock);
    const auto entry = locales->find(locale);
    if (entry == locales->end())
        return false;
    library = entry->second;
    return true;
}

void CZebImpResourceMgr::Record(LCID locale, const char* baseName, bool registerDefault, HMODULE library)
{
    CZebLock lock(m_lock);
    HMODULE& recorded = m_libraries[baseName][locale];
    // Another thread may have looked at the same moment; what one of them found stays.
    if (!recorded)
        recorded = library;
    if (!registerDefault)
        return;
    HMODULE& standIn = m_defaults[baseName];
    if (!standIn)
        standIn = library;
}

HMODULE CZebImpResourceMgr::FindOrLoad(LCID locale, const char* baseName)
{
    CZebLock lock(m_lock);
    HMODULE library = nullptr;
    const auto locales = m_libraries.find(baseName);
    if (locales == m_libraries.end() || !locales->second.contains(locale))
        LoadResourceDll(locale, baseName, false, &library);
    else
        library = locales->second[locale];
    if (library)
        return library;
    const auto fallback = m_defaults.find(baseName);
    return fallback == m_defaults.end() ? nullptr : fallback->second;
}

std::string CZebImpResourceMgr::FindString(LCID locale, UINT id, const char* baseName)
{
    return LoadZebString(FindOrLoad(locale, baseName), id, locale);
}

std::string CZebImpResourceMgr::GetString(LCID locale, UINT id, const char* baseName)
{
    std::string text = FindString(locale, id, baseName);
    if (!text.empty())
        return text;
    // A missing string shows in the client's text instead of a blank.
    char missing[512];
    _snprintf(missing, sizeof(missing) - 1, "No string found. Id %d DLL %s Locale %x", id, baseName,
              static_cast<unsigned>(locale));
    missing[sizeof(missing) - 1] = '\0';
    return missing;
}

CBstr CZebImpResourceMgr::GetStringBstr(LCID locale, UINT id, const char* baseName)
{
    const std::string text = GetString(locale, id, baseName);
    const int length = static_cast<int>(text.size());
    const int full = MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0);
    CBstr wide = CBstr::Attach(SysAllocStringLen(nullptr, static_cast<UINT>(full)));
    if (full == 0 || !wide || MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.Get(), full) != full)
        return CBstr();
    return wide;
}
