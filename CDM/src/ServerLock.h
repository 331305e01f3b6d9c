// What keeps the provider's process alive. The server counts the locks; when the last one goes, it ends some
// seconds later. Any thread may lock and unlock.
#pragma once

#include <utility>
#include <windows.h>

class IServerLock
{
  public:
    virtual LONG Lock() noexcept = 0;
    virtual LONG Unlock() noexcept = 0;

  protected:
    ~IServerLock() = default;
};

// One lock, held from construction until Release or destruction, whichever comes first.
class CServerLockHold
{
  public:
    explicit CServerLockHold(IServerLock& server) noexcept : m_server(&server) { server.Lock(); }
    CServerLockHold(const CServerLockHold&) = delete;
    CServerLockHold& operator=(const CServerLockHold&) = delete;
    ~CServerLockHold() { Release(); }

    void Release() noexcept
    {
        if (IServerLock* server = std::exchange(m_server, nullptr))
            server->Unlock();
    }

  private:
    IServerLock* m_server;
};
