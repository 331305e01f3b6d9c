#include "standin/service/ProviderPool.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"

#include <vector>

namespace standin
{
namespace
{
std::wstring KeyOf(const std::wstring& nameSpace, const CProviderRegistration& registration)
{
    std::wstring key = nameSpace + L":" + registration.Name;
    CharLowerBuffW(key.data(), static_cast<DWORD>(key.size()));
    return key;
}
} // namespace

CProviderPool::CLease::CLease(CLease&& other) noexcept
    : m_pool(std::exchange(other.m_pool, nullptr)), m_key(std::move(other.m_key)),
      m_provider(std::move(other.m_provider))
{
}

CProviderPool::CLease& CProviderPool::CLease::operator=(CLease&& other) noexcept
{
    std::swap(m_pool, other.m_pool);
    std::swap(m_key, other.m_key);
    std::swap(m_provider, other.m_provider);
    return *this;
}

CProviderPool::CLease::~CLease()
{
    m_provider.Reset();
    if (m_pool)
        m_pool->Return(m_key);
}

HRESULT CProviderPool::Acquire(const std::wstring& nameSpace, const CProviderRegistration& registration,
                               CLease& lease)
{
    const std::wstring key = KeyOf(nameSpace, registration);
    for (;;)
    {
        CLease candidate;
        if (TryUse(key, candidate))
        {
            if (IsProviderAlive(candidate.Provider()))
            {
                lease = std::move(candidate);
                return wmi::NoError;
            }
            Forget(key, candidate.Provider());
            continue;
        }

        std::shared_ptr<CLoad> load;
        {
            std::unique_lock lock(m_mutex);
            CEntry& entry = m_entries[key];
            if (entry.Provider)
                continue;
            if (entry.Load)
            {
                load = entry.Load;
                m_loaded.wait(lock, [&] { return load->Done; });
                if (FAILED(load->Result))
                    return load->Result;
                continue;
            }
            load = entry.Load = std::make_shared<CLoad>();
        }

        ComPtr<IWbemServices> provider;
        const HRESULT hr = AtComBoundary(
            [&] { return LoadProvider(registration, nameSpace, m_nameSpaces(nameSpace).Get(), provider); });
        {
            const std::lock_guard lock(m_mutex);
            CEntry& entry = m_entries[key];
            entry.Load.reset();
            entry.LastUse = GetTickCount64();
            load->Done = true;
            load->Result = hr;
            if (SUCCEEDED(hr))
            {
                entry.Provider = provider;
                ++entry.Users;
            }
            m_loaded.notify_all();
        }
        if (SUCCEEDED(hr))
            lease = CLease(*this, key, std::move(provider));
        return hr;
    }
}

bool CProviderPool::TryUse(const std::wstring& key, CLease& lease)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_entries.find(key);
    if (found == m_entries.end() || !found->second.Provider)
        return false;
    ++found->second.Users;
    lease = CLease(*this, key, found->second.Provider);
    return true;
}

void CProviderPool::Forget(const std::wstring& key, IWbemServices* dead)
{
    ComPtr<IWbemServices> released;
    const std::lock_guard lock(m_mutex);
    CEntry& entry = m_entries[key];
    if (entry.Provider.Get() == dead)
        released = std::move(entry.Provider);
}

void CProviderPool::Return(const std::wstring& key)
{
    const std::lock_guard lock(m_mutex);
    CEntry& entry = m_entries[key];
    --entry.Users;
    entry.LastUse = GetTickCount64();
}

bool CProviderPool::DropIdle(DWORD milliseconds)
{
    std::vector<ComPtr<IWbemServices>> released;
    bool held = false;
    const ULONGLONG now = GetTickCount64();
    const std::lock_guard lock(m_mutex);
    for (auto& [key, entry] : m_entries)
    {
        if (entry.Provider && entry.Users == 0 && now - entry.LastUse >= milliseconds)
            released.push_back(std::move(entry.Provider));
        held = held || entry.Provider || entry.Load || entry.Users > 0;
    }
    return !held;
}
} // namespace standin
