#include "standin/service/PathIdentity.h"

#include <algorithm>
#include <windows.h>

namespace standin
{
namespace
{
std::wstring Lower(std::wstring text)
{
    CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}
} // namespace

std::wstring PathIdentity(const CObjectPath& path, const CClassDefinition* definition)
{
    std::wstring identity = Lower(path.ClassName);
    const auto add = [&](const std::wstring& name, const std::wstring& value)
    {
        // Values may hold any character but this one.
        identity += L'\0';
        identity += Lower(name) + L"=" + Lower(value);
    };
    if (definition)
    {
        for (const CPropertyDefinition& property : definition->Properties())
            if (property.Qualifiers.IsTrue(L"key"))
                if (const std::wstring* value = path.FindKey(property.Name))
                    add(property.Name, *value);
        return identity;
    }
    std::vector<CPathKey> keys = path.Keys;
    std::sort(keys.begin(), keys.end(),
              [](const CPathKey& a, const CPathKey& b) { return Lower(a.Name) < Lower(b.Name); });
    for (const CPathKey& key : keys)
        add(key.Name, key.Value);
    return identity;
}
} // namespace standin
