#include "standin/mof/RepositoryState.h"

#include "Common/src/com/Text.h"
#include "standin/mof/Amendment.h"

#include <algorithm>

namespace standin
{
std::wstring FoldName(std::wstring_view name)
{
    std::wstring folded(name);
    CharLowerBuffW(folded.data(), static_cast<DWORD>(folded.size()));
    return folded;
}

std::wstring PlainNamespace(std::wstring_view name)
{
    std::wstring plain(name);
    std::ranges::replace(plain, L'/', L'\\');
    if (plain.starts_with(L"\\\\"))
        plain.erase(0, std::min(plain.find(L'\\', 2), plain.size()));
    while (plain.starts_with(L'\\'))
        plain.erase(0, 1);
    while (plain.ends_with(L'\\'))
        plain.pop_back();
    return plain;
}

const CNamespace* CRepositoryState::Find(std::wstring_view nameSpace) const
{
    const auto found = m_namespaces.find(FoldName(PlainNamespace(nameSpace)));
    return found == m_namespaces.end() ? nullptr : &found->second;
}

CNamespace* CRepositoryState::Find(std::wstring_view nameSpace)
{
    return const_cast<CNamespace*>(std::as_const(*this).Find(nameSpace));
}

void CRepositoryState::CreateNamespace(const std::wstring& name)
{
    m_namespaces.try_emplace(FoldName(name), CNamespace{name, {}, {}});
}

std::vector<std::wstring> CRepositoryState::ChildNamespaces(std::wstring_view nameSpace) const
{
    const std::wstring prefix = FoldName(PlainNamespace(nameSpace)) + L'\\';
    std::vector<std::wstring> children;
    for (const auto& [key, child] : m_namespaces)
        if (key.starts_with(prefix) && key.find(L'\\', prefix.size()) == std::wstring::npos)
            children.push_back(child.Name.substr(prefix.size()));
    return children;
}

ClassDefinition CRepositoryState::FindClass(const CNamespace& nameSpace, std::wstring_view name) const
{
    const std::wstring key = FoldName(name);
    const auto found = nameSpace.Classes.find(key);
    if (found != nameSpace.Classes.end())
        return found->second.Definition;
    const CNamespace* root = name.starts_with(L"__") ? Find(L"root") : nullptr;
    return root && root != &nameSpace ? FindClass(*root, name) : nullptr;
}

ClassDefinition CRepositoryState::FindClass(const CNamespace& nameSpace, std::wstring_view name,
                                            LCID locale) const
{
    ClassDefinition plain = FindClass(nameSpace, name);
    if (!plain)
        return nullptr;
    if (locale == 0)
        return WithoutAmended(plain);
    wchar_t child[16];
    _snwprintf(child, std::size(child), L"\\ms_%x", static_cast<unsigned>(locale));
    const CNamespace* language = Find(nameSpace.Name + child);
    return language ? Amended(plain, *language) : plain;
}
} // namespace standin
