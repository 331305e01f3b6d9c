#include "CDM/src/engine/results/store/ResultChanges.h"

#include "CDM/src/engine/SharedLock.h"

#include <atomic>
#include <map>
#include <utility>

namespace
{
struct CNewest
{
    CSharedLock lock;
    std::map<std::pair<std::wstring, std::wstring>, ULONGLONG> changes;
};

// Lives until the process is gone, as a thread may still store results then.
CNewest& Newest()
{
    static CNewest& newest = *new CNewest;
    return newest;
}

std::atomic<ULONGLONG> s_last{0};
} // namespace

ULONGLONG ResultChanges::Next() noexcept
{
    return ++s_last;
}

bool ResultChanges::Claim(const std::wstring& path, const wchar_t* resultId, ULONGLONG change)
{
    std::pair<std::wstring, std::wstring> name(path, resultId);
    CNewest& newest = Newest();
    const CWriteScope held(newest.lock);
    ULONGLONG& stored = newest.changes[std::move(name)];
    if (change < stored)
        return false;
    stored = change;
    return true;
}
