#include "standin/mof/Repository.h"

#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"
#include "standin/mof/MofCompiler.h"
#include "standin/mof/MofValue.h"

#include <algorithm>

namespace standin
{
namespace
{
std::wstring TextOf(IWbemClassObject& object, const wchar_t* name)
{
    CVariant value;
    object.Get(name, 0, &value, nullptr, nullptr);
    return value.vt == VT_BSTR ? value.bstrVal : std::wstring();
}

bool FlagOf(IWbemClassObject& object, const wchar_t* name)
{
    CVariant value;
    object.Get(name, 0, &value, nullptr, nullptr);
    return value.vt == VT_BOOL && value.boolVal != VARIANT_FALSE;
}
} // namespace

CRepository::CRepository(std::wstring server) : m_server(std::move(server))
{
    m_state = std::make_shared<const CRepositoryState>();
}

CRepository::~CRepository() = default;

std::shared_ptr<const CRepositoryState> CRepository::Current() const
{
    const CLockScope lock(m_lock);
    return m_state;
}

bool CRepository::Compile(std::string_view text, const std::string& sourceName, std::wstring_view nameSpace)
{
    const CLockScope lock(m_compiling);
    auto state = std::make_shared<CRepositoryState>(*Current());
    bool removed = false;
    try
    {
        removed = CompileMof(text, *state, nameSpace);
    }
    catch (const CMofProblem& problem)
    {
        throw CMofError(sourceName, problem.Place.Line, problem.Place.Column, problem.Reason);
    }
    const CLockScope swap(m_lock);
    m_state = std::move(state);
    return removed;
}

bool CRepository::CompileFile(const std::wstring& path)
{
    const std::string name = Utf8Text(path);
    const CFileHandle file(
        CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    LARGE_INTEGER size = {};
    if (!file || !GetFileSizeEx(file.Get(), &size) || size.QuadPart > MAXLONG)
        throw CMofError(name, 0, 0, "the file cannot be opened");
    std::string text(static_cast<size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr) ||
        read != text.size())
        throw CMofError(name, 0, 0, "the file cannot be read");
    return Compile(text, name);
}

bool CRepository::HasNamespace(std::wstring_view nameSpace) const
{
    return Current()->Find(nameSpace) != nullptr;
}

ClassDefinition CRepository::GetDefinition(std::wstring_view nameSpace, std::wstring_view name) const
{
    const auto state = Current();
    const CNamespace* found = state->Find(nameSpace);
    return found ? state->FindClass(*found, name) : nullptr;
}

ComPtr<IWbemClassObject> CRepository::GetClass(std::wstring_view nameSpace, std::wstring_view name) const
{
    ClassDefinition definition = GetDefinition(nameSpace, name);
    if (!definition)
        return nullptr;
    const auto object = MakeClassObject(std::move(definition));
    Decorate(object.Get(), m_server.c_str(), Current()->Find(nameSpace)->Name.c_str());
    return object;
}

std::vector<ClassDefinition> CRepository::DerivedClasses(std::wstring_view nameSpace,
                                                         std::wstring_view name) const
{
    const auto state = Current();
    std::vector<ClassDefinition> result;
    const CNamespace* found = state->Find(nameSpace);
    if (!found)
        return result;
    for (const auto& [key, definition] : found->Classes)
        if (name.empty() || (definition->InheritsFrom(name) && !EqualNoCaseAscii(definition->Name, name)))
            result.push_back(definition);
    return result;
}

std::vector<ComPtr<IWbemClassObject>> CRepository::Instances(std::wstring_view nameSpace,
                                                             std::wstring_view className, bool deep) const
{
    const auto state = Current();
    std::vector<ComPtr<IWbemClassObject>> result;
    const CNamespace* found = state->Find(nameSpace);
    if (!found)
        return result;
    for (const auto& [path, stored] : found->Instances)
        if (deep ? stored.Class->InheritsFrom(className) : EqualNoCaseAscii(stored.Class->Name, className))
            result.push_back(HandOut(*stored.Object.Get(), found->Name));
    return result;
}

ComPtr<IWbemClassObject> CRepository::GetInstance(std::wstring_view nameSpace,
                                                  std::wstring_view relativePath) const
{
    const auto state = Current();
    const CNamespace* found = state->Find(nameSpace);
    if (!found)
        return nullptr;
    const auto stored = found->Instances.find(FoldName(relativePath));
    return stored == found->Instances.end() ? nullptr : HandOut(*stored->second.Object.Get(), found->Name);
}

ComPtr<IWbemClassObject> CRepository::HandOut(IWbemClassObject& stored, const std::wstring& nameSpace) const
{
    ComPtr<IWbemClassObject> copy;
    if (FAILED(stored.Clone(copy.Put())))
        throw std::bad_alloc();
    Decorate(copy.Get(), m_server.c_str(), nameSpace.c_str());
    return copy;
}

std::optional<CProviderRegistration> CRepository::FindProvider(std::wstring_view nameSpace,
                                                               std::wstring_view name) const
{
    const std::wstring path = L"__Win32Provider.Name=\"" + std::wstring(name) + L'"';
    const auto provider = GetInstance(nameSpace, path);
    if (!provider)
        return std::nullopt;
    CProviderRegistration found;
    found.Name = TextOf(*provider, L"Name");
    found.Clsid = TextOf(*provider, L"CLSID");
    found.HostingModel = TextOf(*provider, L"HostingModel");
    for (const auto& registration : Instances(nameSpace, L"__ProviderRegistration", true))
    {
        // The reference may bear a server and a namespace before the class.
        const std::wstring reference = FoldName(TextOf(*registration, L"provider"));
        if (!reference.ends_with(FoldName(path)))
            continue;
        if (EqualNoCaseAscii(TextOf(*registration, L"__CLASS"), L"__MethodProviderRegistration"))
            found.ServesMethods = true;
        if (!EqualNoCaseAscii(TextOf(*registration, L"__CLASS"), L"__InstanceProviderRegistration"))
            continue;
        found.ServesInstances = true;
        found.SupportsGet = FlagOf(*registration, L"SupportsGet");
        found.SupportsPut = FlagOf(*registration, L"SupportsPut");
        found.SupportsDelete = FlagOf(*registration, L"SupportsDelete");
        found.SupportsEnumeration = FlagOf(*registration, L"SupportsEnumeration");
    }
    return found;
}
} // namespace standin
