// The facts as Windows tells them: IP Helper, ICMP, and plain DNS questions.
#pragma once

#include "agent/host/NetworkFacts.h"
#include "agent/host/WiredAdapters.h"

class CSystemNetworkFacts final : public INetworkFacts
{
  public:
    explicit CSystemNetworkFacts(WiredRule isWired = IsWiredAdapter) noexcept;
    ~CSystemNetworkFacts() override;
    CSystemNetworkFacts(const CSystemNetworkFacts&) = delete;
    CSystemNetworkFacts& operator=(const CSystemNetworkFacts&) = delete;

    DWORD ListAdapters(std::vector<CAdapterFacts>& adapters) override;
    std::optional<bool> IsFullDuplex(const std::wstring& adapterKey) override;
    Reply Ping(const SOCKADDR_INET& target, const SOCKADDR_INET& source) override;
    Reply FindNeighbour(const SOCKADDR_INET& target, const SOCKADDR_INET& source) override;
    Reply AskDnsServer(const SOCKADDR_INET& server, const SOCKADDR_INET& source, const std::string& name,
                       HANDLE stop) override;

  private:
    const WiredRule m_isWired;
    bool m_sockets = false;
};
