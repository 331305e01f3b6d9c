// The class definitions that requests have fetched, shared by all of them. A definition is fetched once per
// name, locale (it carries texts of that locale) and name space, and is neither refreshed nor dropped while
// requests are served. A failed fetch leaves nothing behind.
#pragma once

#include "Common/src/com/ComPtr.h"

#include <memory>
#include <wbemcli.h>
#include <windows.h>

namespace WomClassCache
{
struct CEntry;

// Holds the place of one definition for one caller. A holder that finds it empty fetches the definition, so
// that callers of one class wait for the first one's fetch and callers of other classes do not. A place that
// is still empty when its last holder goes is removed.
class CPlace
{
  public:
    // Waits for other holders. The cache keeps a reference on `services`, so that the pointer never comes to
    // mean another name space. Throws std::bad_alloc.
    CPlace(const wchar_t* className, LCID locale, IWbemServices* services);
    ~CPlace();
    CPlace(const CPlace&) = delete;
    CPlace& operator=(const CPlace&) = delete;

    ComPtr<IWbemClassObject>& Definition() noexcept;

  private:
    std::shared_ptr<CEntry> m_entry;
};

// Releases every definition. For the end of the process, before COM is uninitialised, when no request runs
// any more. Nothing is released later than that: static destructors run when the objects' modules may be
// gone.
void Drop() noexcept;
} // namespace WomClassCache
