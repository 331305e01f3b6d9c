// What all connections of the service process share.
#pragma once

#include "standin/mof/Repository.h"
#include "standin/service/Connection.h"
#include "standin/service/ProviderPool.h"

namespace standin
{
class CService
{
  public:
    CService();

    const std::wstring& Server() const noexcept { return m_server; }
    CRepository& Repository() noexcept { return m_repository; }
    CProviderPool& Providers() noexcept { return m_providers; }
    CServiceLife& Life() noexcept { return m_life; }

    // A client's namespace; null where there is none of that name.
    ComPtr<IWbemServices> Connect(const std::wstring& nameSpace, const std::wstring& locale,
                                  std::shared_ptr<const CHandle> client);

    // Drops what clients left whose process has ended.
    void DropDeadClients();

  private:
    ComPtr<IWbemServices> ForProvider(const std::wstring& nameSpace);

    const std::wstring m_server;
    CServiceLife m_life;
    CRepository m_repository;
    CCriticalSection m_lock;
    std::vector<std::weak_ptr<CConnection>> m_connections;
    CProviderPool m_providers;
};
} // namespace standin
