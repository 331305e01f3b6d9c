// Counts what keeps a server of an agent alive: its objects and the locks that clients take on its factory.
#pragma once

#include <chrono>

// One reason to stay; every object that a client can hold has one as a member. Free-threaded.
class CServerLock
{
  public:
    CServerLock() noexcept;
    ~CServerLock();
    CServerLock(const CServerLock&) = delete;
    CServerLock& operator=(const CServerLock&) = delete;
};

// For IClassFactory::LockServer, whose two halves are separate calls.
void AddServerLock() noexcept;
void DropServerLock() noexcept;

bool ServerIsUnused() noexcept;

// Blocks until the server has been unused for `grace`, or was not used at all within `firstUse`.
void WaitUntilServerIsUnused(std::chrono::milliseconds firstUse, std::chrono::milliseconds grace);
