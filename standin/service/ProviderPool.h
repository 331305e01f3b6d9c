// The providers that are in use: each is started on first need, shared by all requests, and let go some time
// after its last one. Any thread.
#pragma once

#include "standin/service/Provider.h"

#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace standin
{
using ProviderReference = std::shared_ptr<const CProvider>;

class CProviderPool
{
  public:
    // Starts a provider for a namespace.
    using Loader = std::function<HRESULT(const CProviderRegistration&, const std::wstring&, CProvider&)>;

    explicit CProviderPool(Loader load) : m_load(std::move(load)) {}

    // A provider whose process lives, and which stays loaded while the reference is held: one that died since
    // its last request is started anew.
    HRESULT Acquire(const std::wstring& nameSpace, const CProviderRegistration& registration,
                    ProviderReference& provider);

    // Lets go what has not been used for this time, and nothing that is in use; true where nothing is held
    // any more.
    bool DropIdle(DWORD milliseconds);

  private:
    struct CEntry
    {
        ProviderReference Provider;
        ULONGLONG LastUse = 0;
    };

    bool Find(const std::wstring& key, ProviderReference& provider);

    const Loader m_load;
    // Held while a provider is started or let go. Wine's bookkeeping of a process's proxies breaks where one
    // thread lets go of the last proxy of another process while a second one gets its first.
    std::mutex m_coming;
    std::mutex m_mutex;
    std::map<std::wstring, CEntry> m_entries;
    std::vector<ProviderReference> m_dead;
};
} // namespace standin
