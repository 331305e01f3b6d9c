// What all connections of the service process share.
#pragma once

#include "standin/mof/Repository.h"
#include "standin/service/ProviderPool.h"
#include "standin/service/ServiceLife.h"

namespace standin
{
class CService
{
  public:
    CService();

    const std::wstring& Server() const noexcept { return m_server; }
    // Tells this service from any that was or will be.
    const std::wstring& Id() const noexcept { return m_id; }
    CRepository& Repository() noexcept { return m_repository; }
    CProviderPool& Providers() noexcept { return m_providers; }
    CServiceLife& Life() noexcept { return m_life; }

  private:
    const std::wstring m_server;
    const std::wstring m_id;
    CServiceLife m_life;
    CRepository m_repository;
    CProviderPool m_providers;
};
} // namespace standin
