// The end of the pipe that is free for the next client.
#pragma once

#include "Common/src/com/Owned.h"

namespace standin
{
class CService;

class CListener
{
  public:
    // Listens from now on and serves who comes. Throws std::bad_alloc where there can be no pipe.
    explicit CListener(CService& service);
    CListener(const CListener&) = delete;
    CListener& operator=(const CListener&) = delete;
    ~CListener() { Stop(); }

    // Nobody can come any more when this returns; who has come is served on.
    void Stop() noexcept;

  private:
    static DWORD WINAPI ThreadProcedure(void* listener);
    void Listen();
    bool AwaitClient();

    CService& m_service;
    const CHandle m_stop;
    const CHandle m_connected;
    CFileHandle m_end;
    CHandle m_thread;
};
} // namespace standin
