// The localised texts: one resource library per base name and language, found on first need and kept for the
// life of the process. Any thread may ask. No operation fails: a missing text is replaced by one that says
// so.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/CriticalSection.h"

#include <map>
#include <string>
#include <windows.h>

class CZebImpResourceMgr
{
  public:
    CZebImpResourceMgr() noexcept = default;
    virtual ~CZebImpResourceMgr() = default;
    CZebImpResourceMgr(const CZebImpResourceMgr&) = delete;
    CZebImpResourceMgr& operator=(const CZebImpResourceMgr&) = delete;

    // Finds the library of the locale's language, for example ENU_NWR.dll for "_NWR". A locale is tried once;
    // a failure is remembered too. With `registerDefault` the first library found stands in for the languages
    // that have none. Always S_OK; `library` receives null if nothing was found. The handle stays ours.
    HRESULT LoadResourceDll(LCID locale, const char* baseName, bool registerDefault,
                            HMODULE* library = nullptr) noexcept;

    // The text of a string; empty if it is missing, for callers that have something to say instead. Throws
    // std::bad_alloc only.
    virtual std::string FindString(LCID locale, UINT id, const char* baseName);
    // The text of a string, never empty: a missing one gives a text that says which is missing. Throws
    // std::bad_alloc only.
    virtual std::string GetString(LCID locale, UINT id, const char* baseName);
    // The same as a BSTR; null if the text could not be widened as a whole.
    virtual CBstr GetStringBstr(LCID locale, UINT id, const char* baseName);

  private:
    using LocaleMap = std::map<LCID, HMODULE>;

    bool FindLoaded(LCID locale, const char* baseName, HMODULE& library);
    HMODULE FindOrLoad(LCID locale, const char* baseName);
    void Record(LCID locale, const char* baseName, bool registerDefault, HMODULE library);

    CCriticalSection m_lock;
    std::map<std::string, LocaleMap> m_libraries; // null: not found, and not looked for again
    std::map<std::string, HMODULE> m_defaults;
};
