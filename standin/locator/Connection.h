// A client's connection to a namespace of the service.
#pragma once

#include "standin/locator/Call.h"

namespace standin
{
// A client holds this mutex while it connects, and the service while it ends. So a client never meets a
// service that is about to go, and only one client at a time starts a service.
inline constexpr wchar_t kConnecting[] = L"WMI stand-in: a client connects";
// A service that a client starts sets this event once it listens.
inline constexpr wchar_t kListening[] = L"WMI stand-in: the service listens";

// Keeps the service up. Any thread.
class CConnection
{
  public:
    // Starts the service process where none runs. The namespace has the form root\cimv2.
    // WBEM_E_INVALID_NAMESPACE; CO_E_SERVER_EXEC_FAILURE where no service can be started.
    static HRESULT Open(const std::wstring& nameSpace, std::shared_ptr<CConnection>& connection);

    // Begins a call, of which the caller fills in everything but what the connection knows. RPC_S_SERVER_
    // UNAVAILABLE where there is no service any more.
    HRESULT Begin(CCallMessage message, std::shared_ptr<CCall>& call) const;

  private:
    CConnection(std::unique_ptr<CPipe> pipe, CCallMessage self) noexcept
        : m_pipe(std::move(pipe)), m_self(std::move(self))
    {
    }
    static HRESULT Connect(CCallMessage self, std::shared_ptr<CConnection>& connection);

    const std::unique_ptr<CPipe> m_pipe;
    const CCallMessage m_self; // names the service and the namespace
};
} // namespace standin
