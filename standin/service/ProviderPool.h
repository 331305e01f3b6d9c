// The providers that are in use: each is started on first need, shared by all requests, and let go some time
// after its last one. Any thread.
#pragma once

#include "standin/service/Provider.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>

namespace standin
{
class CProviderPool
{
  public:
    // Gives the namespace that a provider calls back into, for the namespace's name.
    using NamespaceSource = std::function<ComPtr<IWbemServices>(const std::wstring&)>;

    explicit CProviderPool(NamespaceSource nameSpaces) : m_nameSpaces(std::move(nameSpaces)) {}

    // Keeps a provider loaded while a request uses it.
    class CLease
    {
      public:
        CLease() = default;
        CLease(CProviderPool& pool, std::wstring key, ComPtr<IWbemServices> provider) noexcept
            : m_pool(&pool), m_key(std::move(key)), m_provider(std::move(provider))
        {
        }
        CLease(CLease&& other) noexcept;
        CLease& operator=(CLease&& other) noexcept;
        ~CLease();

        IWbemServices* Provider() const noexcept { return m_provider.Get(); }
        const ComPtr<IWbemServices>& Shared() const noexcept { return m_provider; }

      private:
        CProviderPool* m_pool = nullptr;
        std::wstring m_key;
        ComPtr<IWbemServices> m_provider;
    };

    // A provider whose process answers: one that died since its last request is started anew. Requests that
    // come while it starts wait for it and share the outcome.
    HRESULT Acquire(const std::wstring& nameSpace, const CProviderRegistration& registration, CLease& lease);

    // Lets go what has not been used for this time; true where nothing is held any more.
    bool DropIdle(DWORD milliseconds);

  private:
    struct CLoad
    {
        bool Done = false;
        HRESULT Result = S_OK;
    };
    struct CEntry
    {
        ComPtr<IWbemServices> Provider;
        std::shared_ptr<CLoad> Load; // while it starts
        int Users = 0;
        ULONGLONG LastUse = 0;
    };

    bool TryUse(const std::wstring& key, CLease& lease);
    void Forget(const std::wstring& key, IWbemServices* dead);
    void Return(const std::wstring& key);

    const NamespaceSource m_nameSpaces;
    std::mutex m_mutex;
    std::condition_variable m_loaded;
    std::map<std::wstring, CEntry> m_entries;
};
} // namespace standin
