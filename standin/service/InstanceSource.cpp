#include "standin/service/InstanceSource.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/Objects.h"
#include "standin/service/MethodParameters.h"
#include "standin/service/PathKeys.h"
#include "standin/service/Service.h"

namespace standin
{
namespace
{
constexpr HRESULT kNotCapable = static_cast<HRESULT>(WBEM_E_PROVIDER_NOT_CAPABLE);
constexpr HRESULT kNotImplemented = static_cast<HRESULT>(WBEM_E_METHOD_NOT_IMPLEMENTED);

// Names the provider of a dynamic class.
constexpr wchar_t kProvider[] = L"provider";

// What concerns only how the client is answered, or only the service, is not the provider's business.
constexpr long ProviderFlags(long flags)
{
    return flags & ~(WBEM_FLAG_RETURN_IMMEDIATELY | WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_DIRECT_READ);
}

CVariant ReadProperty(IWbemClassObject* object, const wchar_t* name)
{
    CVariant value;
    object->Get(name, 0, value.Put(), nullptr, nullptr);
    return value;
}
} // namespace

CInstanceSource::CInstanceSource(CService& service, std::wstring nameSpace, CRequest& request)
    : m_service(service), m_nameSpace(std::move(nameSpace)), m_request(request)
{
}

ClassDefinition CInstanceSource::Definition(std::wstring_view className) const
{
    return m_service.Repository().GetDefinition(m_nameSpace, className);
}

std::vector<ClassDefinition> CInstanceSource::Definitions() const
{
    return m_service.Repository().DerivedClasses(m_nameSpace, L"");
}

std::vector<ClassDefinition> CInstanceSource::WithDerived(const ClassDefinition& definition) const
{
    auto classes = m_service.Repository().DerivedClasses(m_nameSpace, definition->Name);
    classes.insert(classes.begin(), definition);
    return classes;
}

void CInstanceSource::Mark(IWbemClassObject* object) const
{
    Decorate(object, m_service.Server().c_str(), m_nameSpace.c_str());
}

ComPtr<IWbemClassObject> CInstanceSource::Class(std::wstring_view className) const
{
    return m_service.Repository().GetClass(m_nameSpace, className);
}

bool CInstanceSource::IsDynamic(const CClassDefinition& definition) const
{
    return definition.Qualifiers.Text(kProvider) != nullptr;
}

HRESULT CInstanceSource::FindProvider(const CClassDefinition& definition, Capability capability,
                                      CProviderRegistration& registration) const
{
    const wchar_t* name = definition.Qualifiers.Text(kProvider);
    auto found = m_service.Repository().FindProvider(m_nameSpace, name ? name : L"");
    if (!found)
        return wmi::ProviderNotFound;
    registration = std::move(*found);
    return registration.*capability ? wmi::NoError : kNotCapable;
}

COutcome CInstanceSource::Call(const CProviderRegistration& registration, ObjectConsumer consume,
                               const ProviderStart& start)
{
    return CallProvider(m_service.Providers(), m_nameSpace, registration, m_request, std::move(consume),
                        start);
}

COutcome CInstanceSource::CallForOne(const CProviderRegistration& registration, const ProviderStart& start)
{
    ComPtr<IWbemClassObject> one;
    COutcome outcome = Call(
        registration,
        [&](IWbemClassObject* object)
        {
            one = object;
            return wmi::NoError;
        },
        start);
    outcome.Object = std::move(one);
    return outcome;
}

COutcome CInstanceSource::GetFromProvider(const CClassDefinition& definition, const std::wstring& path)
{
    CProviderRegistration registration;
    if (const HRESULT hr = FindProvider(definition, &CProviderRegistration::SupportsGet, registration);
        FAILED(hr))
        return hr;
    const CBstr text(path.c_str());
    COutcome outcome =
        CallForOne(registration,
                   [&](IWbemServices& provider, IWbemObjectSink* sink) {
                       return provider.GetObjectAsync(text.Get(), ProviderFlags(m_request.Flags()),
                                                      m_request.Context(), sink);
                   });
    if (outcome.Object)
        Mark(outcome.Object.Get());
    else if (!outcome.Failed())
        outcome = wmi::NotFound;
    return outcome;
}

COutcome CInstanceSource::Get(const CObjectPath& path)
{
    const ClassDefinition definition = Definition(path.ClassName);
    if (!definition)
        return wmi::NotFound;
    if (!HasKeysOf(*definition, path))
        return wmi::InvalidObjectPath;
    COutcome outcome;
    outcome.Object = m_service.Repository().GetInstance(m_nameSpace, path.Relative);
    if (outcome.Object)
        return outcome;

    // The instance may be of a derived class. What the first provider says counts where nobody has it.
    std::optional<COutcome> first;
    for (const ClassDefinition& candidate : WithDerived(definition))
    {
        if (!IsDynamic(*candidate))
            continue;
        const std::wstring text = candidate == definition
                                      ? path.Relative
                                      : candidate->Name + path.Relative.substr(path.ClassName.size());
        outcome = GetFromProvider(*candidate, text);
        if (!outcome.Failed())
            return outcome;
        if (!first)
            first = std::move(outcome);
    }
    return first ? std::move(*first) : COutcome(wmi::NotFound);
}

COutcome CInstanceSource::EnumerateOne(const CClassDefinition& definition, const ObjectConsumer& consume)
{
    if (!IsDynamic(definition))
    {
        for (const ComPtr<IWbemClassObject>& object :
             m_service.Repository().Instances(m_nameSpace, definition.Name, false))
            if (const HRESULT hr = consume(object.Get()); FAILED(hr))
                return hr;
        return wmi::NoError;
    }
    CProviderRegistration registration;
    if (const HRESULT hr =
            FindProvider(definition, &CProviderRegistration::SupportsEnumeration, registration);
        FAILED(hr))
        return hr;
    const CBstr className(definition.Name.c_str());
    return Call(
        registration,
        [&](IWbemClassObject* object)
        {
            Mark(object);
            return consume(object);
        },
        [&](IWbemServices& provider, IWbemObjectSink* sink)
        {
            return provider.CreateInstanceEnumAsync(className.Get(), ProviderFlags(m_request.Flags()),
                                                    m_request.Context(), sink);
        });
}

COutcome CInstanceSource::Enumerate(const std::wstring& className, bool deep, const ObjectConsumer& consume)
{
    const ClassDefinition definition = Definition(className);
    if (!definition)
        return wmi::InvalidClass;
    for (const ClassDefinition& one : deep ? WithDerived(definition) : std::vector{definition})
        if (COutcome outcome = EnumerateOne(*one, consume); outcome.Failed())
            return outcome;
    return wmi::NoError;
}

COutcome CInstanceSource::Put(IWbemClassObject* instance)
{
    const CVariant className = ReadProperty(instance, L"__CLASS");
    const CVariant genus = ReadProperty(instance, L"__GENUS");
    if (className.vt != VT_BSTR || genus.vt != VT_I4 || genus.lVal != WBEM_GENUS_INSTANCE)
        return wmi::InvalidObject;
    const ClassDefinition definition = Definition(className.bstrVal);
    if (!definition)
        return wmi::InvalidClass;
    if (!IsDynamic(*definition))
        return wmi::NotSupported;
    CProviderRegistration registration;
    if (const HRESULT hr = FindProvider(*definition, &CProviderRegistration::SupportsPut, registration);
        FAILED(hr))
        return hr;
    // The texts of amended qualifiers are the service's, not the provider's.
    const long flags = ProviderFlags(m_request.Flags()) & ~WBEM_FLAG_USE_AMENDED_QUALIFIERS;
    return Call(
        registration, [](IWbemClassObject*) { return wmi::NoError; },
        [&](IWbemServices& provider, IWbemObjectSink* sink)
        { return provider.PutInstanceAsync(instance, flags, m_request.Context(), sink); });
}

COutcome CInstanceSource::Execute(const CObjectPath& path, const std::wstring& method, IWbemClassObject* in)
{
    const ClassDefinition definition = Definition(path.ClassName);
    if (!definition)
        return wmi::NotFound;
    const CMethodDefinition* signature = definition->FindMethod(method);
    if (!signature)
        return wmi::InvalidMethod;
    if (!signature->Qualifiers.Find(L"implemented"))
        return kNotImplemented;
    if (!path.IsInstance && !signature->Qualifiers.IsTrue(L"static"))
        return wmi::InvalidMethodParameters; // sic
    if (path.IsInstance && !HasKeysOf(*definition, path))
        return wmi::InvalidObjectPath;
    ComPtr<IWbemClassObject> parameters;
    if (const HRESULT hr = CheckInParameters(*signature, in, parameters); FAILED(hr))
        return hr;
    CProviderRegistration registration;
    if (const HRESULT hr = FindProvider(*definition, &CProviderRegistration::ServesMethods, registration);
        FAILED(hr))
        return hr;
    const CBstr pathText(path.Relative.c_str());
    const CBstr methodText(method.c_str());
    return CallForOne(registration,
                      [&](IWbemServices& provider, IWbemObjectSink* sink)
                      {
                          return provider.ExecMethodAsync(pathText.Get(), methodText.Get(),
                                                          ProviderFlags(m_request.Flags()),
                                                          m_request.Context(), parameters.Get(), sink);
                      });
}
} // namespace standin
