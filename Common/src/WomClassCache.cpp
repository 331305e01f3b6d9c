#include "Common/src/WomClassCache.h"

#include "Common/src/com/Bstr.h"
#include "Common/src/com/CriticalSection.h"

#include <algorithm>
#include <cwchar>
#include <functional>
#include <map>

struct WomClassCache::CEntry
{
    CCriticalSection section; // held by a place's holder
    ComPtr<IWbemClassObject> definition;
};

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

WomClassCache::CPlace::CPlace(const wchar_t* className, LCID locale, IWbemServices* services)
{
    CKey key{CBstr(className), locale, services};
    {
        CLockScope lock(Cache().section);
        auto& entries = Cache().entries;
        const auto known = entries.find(key);
        m_entry = known != entries.end()
                      ? known->second
                      : entries.emplace(std::move(key), std::make_shared<CEntry>()).first->second;
    }
    m_entry->section.Enter();
}

WomClassCache::CPlace::~CPlace()
{
    const CEntry* const mine = m_entry.get();
    const bool filled = static_cast<bool>(m_entry->definition);
    m_entry->section.Leave();
    decltype(CCache::entries)::node_type given; // released outside the lock
    CLockScope lock(Cache().section);
    m_entry.reset();
    if (filled)
        return;
    // Places are taken and left under the lock: one that only the cache still knows has no other holder.
    auto& entries = Cache().entries;
    const auto place =
        std::find_if(entries.begin(), entries.end(), [&](const auto& e) { return e.second.get() == mine; });
    if (place != entries.end() && place->second.use_count() == 1 && !place->second->definition)
        given = entries.extract(place);
}

ComPtr<IWbemClassObject>& WomClassCache::CPlace::Definition() noexcept
{
    return m_entry->definition;
}

void WomClassCache::Drop() noexcept
{
    decltype(CCache::entries) entries;
    {
        CLockScope lock(Cache().section);
        entries.swap(Cache().entries);
    }
}
