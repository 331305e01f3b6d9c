#include "standin/service/ProviderPool.h"

#include "Common/src/com/WmiStatus.h"

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

HRESULT CProviderPool::Acquire(const std::wstring& nameSpace, const CProviderRegistration& registration,
                               ProviderReference& provider)
{
    const std::wstring key = KeyOf(nameSpace, registration);
    if (Find(key, provider))
        return wmi::NoError;
    const std::lock_guard coming(m_coming);
    if (Find(key, provider))
        return wmi::NoError;
    auto loaded = std::make_shared<CProvider>();
    const HRESULT hr = m_load(registration, nameSpace, *loaded);
    if (FAILED(hr))
        return hr;
    provider = std::move(loaded);
    const std::lock_guard lock(m_mutex);
    m_entries[key] = {provider, GetTickCount64()};
    return wmi::NoError;
}

bool CProviderPool::Find(const std::wstring& key, ProviderReference& provider)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_entries.find(key);
    if (found == m_entries.end())
        return false;
    if (!found->second.Provider->Alive())
    {
        m_dead.push_back(std::move(found->second.Provider));
        m_entries.erase(found);
        return false;
    }
    provider = found->second.Provider;
    return true;
}

bool CProviderPool::DropIdle(DWORD milliseconds)
{
    const auto unused = [](const ProviderReference& provider) { return provider.use_count() == 1; };
    // The last reference is the pool's, so that it goes here.
    const std::lock_guard coming(m_coming);
    std::vector<ProviderReference> dropped;
    const std::lock_guard lock(m_mutex);
    const ULONGLONG now = GetTickCount64();
    for (auto one = m_entries.begin(); one != m_entries.end();)
    {
        CEntry& entry = one->second;
        if (!unused(entry.Provider))
            entry.LastUse = now;
        else if (now - entry.LastUse >= milliseconds)
            dropped.push_back(std::move(entry.Provider));
        one = entry.Provider ? std::next(one) : m_entries.erase(one);
    }
    for (size_t i = m_dead.size(); i-- > 0;)
        if (unused(m_dead[i]))
        {
            dropped.push_back(std::move(m_dead[i]));
            m_dead.erase(m_dead.begin() + static_cast<std::ptrdiff_t>(i));
        }
    return m_entries.empty() && m_dead.empty();
}
} // namespace standin
