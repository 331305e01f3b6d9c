#include "standin/service/Service.h"

#include "standin/locator/ServicesFacade.h"
#include "standin/service/NamespaceServices.h"

namespace standin
{
namespace
{
std::wstring ThisComputer()
{
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    return GetComputerNameW(name, &size) ? std::wstring(name, size) : std::wstring(L".");
}
} // namespace

CService::CService()
    : m_server(ThisComputer()), m_repository(m_server),
      m_providers([this](const std::wstring& nameSpace) { return ForProvider(nameSpace); })
{
}

ComPtr<IWbemServices> CService::Connect(const std::wstring& nameSpace, const std::wstring& locale,
                                        std::shared_ptr<const CHandle> client)
{
    if (!m_repository.HasNamespace(nameSpace))
        return nullptr;
    auto connection = std::make_shared<CConnection>(m_life, true, nameSpace, locale, std::move(client));
    {
        const CLockScope lock(m_lock);
        std::erase_if(m_connections, [](const std::weak_ptr<CConnection>& old) { return old.expired(); });
        m_connections.push_back(connection);
    }
    return MakeCom<CNamespaceServices>(*this, std::move(connection));
}

ComPtr<IWbemServices> CService::ForProvider(const std::wstring& nameSpace)
{
    // A provider's own hold on the namespace must not keep the service up, which holds the provider.
    auto connection = std::make_shared<CConnection>(m_life, false, nameSpace, std::wstring(), nullptr);
    return MakeCom<CServicesFacade>(MakeCom<CNamespaceServices>(*this, std::move(connection)), nullptr);
}

void CService::DropDeadClients()
{
    std::vector<std::shared_ptr<CConnection>> dead;
    {
        const CLockScope lock(m_lock);
        std::erase_if(m_connections,
                      [&](const std::weak_ptr<CConnection>& weak)
                      {
                          std::shared_ptr<CConnection> connection = weak.lock();
                          if (connection && connection->ClientIsGone())
                              dead.push_back(std::move(connection));
                          return weak.expired();
                      });
    }
    for (const std::shared_ptr<CConnection>& connection : dead)
        connection->Abandon();
}
} // namespace standin
