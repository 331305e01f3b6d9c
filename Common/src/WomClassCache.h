// The class definitions that requests have fetched, shared by all of them. A definition is fetched once per
// name, locale (it carries texts of that locale) and name space, and is neither refreshed nor dropped while
// requests are served.
#pragma once

#include "Common/src/com/ComPtr.h"
#include "Common/src/com/CriticalSection.h"

#include <memory>
#include <wbemcli.h>
#include <windows.h>

namespace WomClassCache
{
// The place of one definition. Whoever finds it empty fetches the definition while holding `section`, so that
// callers of one class wait for the first one's fetch and those of other classes do not.
struct CEntry
{
    CCriticalSection section;
    ComPtr<IWbemClassObject> definition;
};

// The place under a key; made where there is none. The cache keeps a reference on `services`, so that the
// pointer never comes to mean another name space. Throws std::bad_alloc.
std::shared_ptr<CEntry> Find(const wchar_t* className, LCID locale, IWbemServices* services);

// Releases every definition. For the end of the process, before COM is uninitialised, when no request runs
// any more. Nothing is released later than that: static destructors run when the objects' modules may be
// gone.
void Drop() noexcept;
} // namespace WomClassCache
