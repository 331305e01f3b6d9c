#include "Common/src/WomClassCache.h"

#include "Common/src/com/Bstr.h"

#include <cwchar>
#include <functional>
#include <map>

namespace
{
struct CKey
{
    CBstr name;
    LCID locale;
    ComPtr<IWbemServices> services;
};

struct CKeyOrder
{
    bool operator()(const CKey& a, const CKey& b) const noexcept
    {
        if (const int order = Compare(a.name.Get(), b.name.Get()))
            return order < 0;
        if (a.locale != b.locale)
            return a.locale < b.locale;
        return std::less<>()(a.services.Get(), b.services.Get());
    }

  private:
    // A null name comes before every other.
    static int Compare(const wchar_t* a, const wchar_t* b) noexcept
    {
        return a && b ? wcscmp(a, b) : (a ? 1 : 0) - (b ? 1 : 0);
    }
};

struct CCache
{
    CCriticalSection section;
    std::map<CKey, std::shared_ptr<WomClassCache::CEntry>, CKeyOrder> entries;
};

// Lives until the process is gone: see Drop.
CCache& Cache()
{
    static CCache& cache = *new CCache;
    return cache;
}
} // namespace

std::shared_ptr<WomClassCache::CEntry> WomClassCache::Find(const wchar_t* className, LCID locale,
                                                           IWbemServices* services)
{
    CKey key{CBstr(className), locale, services};
    CLockScope lock(Cache().section);
    std::shared_ptr<CEntry>& entry = Cache().entries[std::move(key)];
    if (!entry)
        entry = std::make_shared<CEntry>();
    return entry;
}

void WomClassCache::Drop() noexcept
{
    decltype(CCache::entries) entries;
    {
        CLockScope lock(Cache().section);
        entries.swap(Cache().entries);
    }
}
