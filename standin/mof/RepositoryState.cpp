#include "standin/mof/RepositoryState.h"

#include "standin/mof/MofValue.h"

#include <algorithm>

namespace standin
{
namespace
{
std::wstring KeyOf(std::wstring_view nameSpace)
{
    std::wstring key = FoldName(nameSpace);
    std::ranges::replace(key, L'/', L'\\');
    if (key.starts_with(L"\\\\"))
        key.erase(0, std::min(key.find(L'\\', 2), key.size()));
    while (key.starts_with(L'\\'))
        key.erase(0, 1);
    while (key.ends_with(L'\\'))
        key.pop_back();
    return key;
}
} // namespace

CRepositoryState::CRepositoryState()
{
    for (const wchar_t* name : {L"root", L"root\\default", L"root\\cimv2"})
        m_namespaces[name].Name = name;
}

const CNamespace* CRepositoryState::Find(std::wstring_view nameSpace) const
{
    const auto found = m_namespaces.find(KeyOf(nameSpace));
    return found == m_namespaces.end() ? nullptr : &found->second;
}

CNamespace* CRepositoryState::Find(std::wstring_view nameSpace)
{
    return const_cast<CNamespace*>(std::as_const(*this).Find(nameSpace));
}

ClassDefinition CRepositoryState::FindClass(const CNamespace& nameSpace, std::wstring_view name) const
{
    const auto found = nameSpace.Classes.find(FoldName(name));
    if (found != nameSpace.Classes.end())
        return found->second;
    const CNamespace* root = name.starts_with(L"__") ? Find(L"root") : nullptr;
    return root && root != &nameSpace ? FindClass(*root, name) : nullptr;
}
} // namespace standin
