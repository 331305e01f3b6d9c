// The class definitions that requests have fetched, shared by all of them. A definition is fetched once per
// name, locale (it carries texts of that locale) and name space, and is neither refreshed nor dropped while
// requests are served.
#pragma once

#include "Common/src/com/ComPtr.h"

#include <functional>
#include <wbemcli.h>
#include <windows.h>

namespace WomClassCache
{
using Fetch = std::function<HRESULT(ComPtr<IWbemClassObject>&)>;

// Gives the definition under the key, calling `fetch` where there is none. Callers of one key wait for the
// first one's fetch; other keys do not. A failed fetch leaves nothing behind; its code is returned.
// Throws std::bad_alloc.
HRESULT Get(const wchar_t* className, LCID locale, IWbemServices* services, const Fetch& fetch,
            ComPtr<IWbemClassObject>& definition);

// Releases every definition. For the end of the process, before COM is uninitialised, when no request runs
// any more: nothing is released after that, because the objects may live in other modules.
void Drop() noexcept;
} // namespace WomClassCache
