// One client's hold on a namespace: its locale, its running requests, and the process that it lives in.
#pragma once

#include "standin/service/Request.h"

#include <string>
#include <vector>

namespace standin
{
class CConnection
{
  public:
    // `client` is the client's process, null where it is not to be watched. A connection that `counts` keeps
    // the service up; the one that a provider holds does not.
    CConnection(CServiceLife& life, bool counts, std::wstring nameSpace, std::wstring locale,
                std::shared_ptr<const CHandle> client);

    const std::wstring& NameSpace() const noexcept { return m_nameSpace; }
    // The form "MS_409"; empty where the client named none.
    const std::wstring& Locale() const noexcept { return m_locale; }
    const std::shared_ptr<const CHandle>& ClientProcess() const noexcept { return m_client; }
    bool Counts() const noexcept { return m_counts; }

    // A new request; it is forgotten when its last owner lets it go.
    std::shared_ptr<CRequest> Open(IWbemObjectSink* sink, long flags, IWbemContext* context);
    // Cancels the requests that answer to the sink; false where there is none.
    bool Cancel(IWbemObjectSink* sink);

    // True once the client's process has ended.
    bool ClientIsGone() const;
    // Drops everything that the client left: its requests, and its hold on the service.
    void Abandon();

  private:
    std::vector<std::shared_ptr<CRequest>> Running();

    CServiceLife& m_life;
    const bool m_counts;
    const std::wstring m_nameSpace;
    const std::wstring m_locale;
    const std::shared_ptr<const CHandle> m_client;
    CCriticalSection m_lock;
    CServiceLife::CUse m_use;
    std::vector<std::weak_ptr<CRequest>> m_requests;
};
} // namespace standin
