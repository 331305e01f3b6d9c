#include "standin/service/PathKeys.h"

#include "standin/mof/MofValue.h"
#include "standin/object/Strictness.h"

#include <map>
#include <set>

namespace standin
{
namespace
{
bool IsKey(const CClassDefinition& definition, const std::wstring& name)
{
    const CPropertyDefinition* property = definition.FindProperty(name);
    return property && property->Qualifiers.IsTrue(L"key");
}

// A key without a name is the class's only one, or remains without.
std::wstring NameOf(const CPathKey& key, const CClassDefinition& definition)
{
    const std::vector<size_t> keys = definition.Keys();
    return key.Name.empty() && keys.size() == 1 ? definition.Properties()[keys.front()].Name : key.Name;
}
} // namespace

bool HasKeysOf(const CClassDefinition& definition, const CObjectPath& path)
{
    std::set<std::wstring> given;
    const bool strict = IsStrict();
    size_t keys = 0;
    for (const CPathKey& key : path.Keys)
    {
        const std::wstring name = NameOf(key, definition);
        const bool isKey = IsKey(definition, name);
        if ((!isKey && (strict || !definition.FindProperty(name))) || !given.insert(FoldName(name)).second)
            return false;
        keys += isKey;
    }
    return keys == definition.Keys().size();
}

std::wstring PathIdentity(const CClassDefinition* definition, const CObjectPath& path)
{
    const bool strict = IsStrict();
    std::map<std::wstring, std::wstring> keys;
    for (const CPathKey& key : path.Keys)
    {
        const std::wstring name = definition ? NameOf(key, *definition) : key.Name;
        if (strict || !definition || IsKey(*definition, name))
            keys[FoldName(name)] = FoldName(key.Value);
    }
    std::wstring identity = FoldName(path.ClassName);
    for (const auto& [name, value] : keys)
        // Values may hold any character but this one.
        (((identity += L'\0') += name) += L'=') += value;
    return identity;
}
} // namespace standin
