#include "agent/server/ServerLife.h"

#include <condition_variable>
#include <mutex>

namespace
{
struct CLife
{
    std::mutex Mutex;
    std::condition_variable Changed;
    long Locks = 0;
};

CLife& Life() noexcept
{
    static CLife life;
    return life;
}

void Count(long step) noexcept
{
    CLife& life = Life();
    const std::lock_guard lock(life.Mutex);
    life.Locks += step;
    life.Changed.notify_all();
}
} // namespace

CServerLock::CServerLock() noexcept
{
    AddServerLock();
}

CServerLock::~CServerLock()
{
    DropServerLock();
}

void AddServerLock() noexcept
{
    Count(1);
}

void DropServerLock() noexcept
{
    Count(-1);
}

bool ServerIsUnused() noexcept
{
    CLife& life = Life();
    const std::lock_guard lock(life.Mutex);
    return life.Locks == 0;
}

void WaitUntilServerIsUnused(std::chrono::milliseconds firstUse, std::chrono::milliseconds grace)
{
    CLife& life = Life();
    std::unique_lock lock(life.Mutex);
    const auto used = [&life] { return life.Locks > 0; };
    auto patience = firstUse;
    while (life.Changed.wait_for(lock, patience, used))
    {
        life.Changed.wait(lock, [&life] { return life.Locks == 0; });
        patience = grace;
    }
}
