// A method call that lasts, made on a thread of its own so that the caller can watch and stop it. A plain
// synchronous call needs no way back from the service to this process, so no firewall stands in it.
#pragma once

#include "Common/src/com/Owned.h"
#include "tools/zebdiag/WmiSession.h"

#include <memory>
#include <string>
#include <vector>

namespace zebdiag
{
class CMethodThread
{
  public:
    CMethodThread(const CWmiSession& session, const std::wstring& path, const wchar_t* className,
                  const wchar_t* method, const std::vector<CWmiSession::CArgument>& arguments);
    CMethodThread(const CMethodThread&) = delete;
    CMethodThread& operator=(const CMethodThread&) = delete;
    // Does not wait: a call that still runs goes on by itself.
    ~CMethodThread();

    // Signalled when the call has ended.
    HANDLE Done() const noexcept;
    // After Done only: the out-parameters, or the exception that the call ended with.
    WmiObject Result() const;

  private:
    struct CState;
    static DWORD WINAPI Thread(void* parameter) noexcept;

    std::shared_ptr<CState> m_state; // shared with the thread, which may outlive us
};
} // namespace zebdiag
