// Where classes and instances come from: the repository and the providers that classes name. All operations
// belong to one request and run on its thread.
#pragma once

#include "standin/mof/Repository.h"
#include "standin/object/ClassDefinition.h"
#include "standin/service/ObjectPath.h"
#include "standin/service/ProviderCall.h"

namespace standin
{
class CService;

class CInstanceSource
{
  public:
    CInstanceSource(CService& service, std::wstring nameSpace, CRequest& request);

    const std::wstring& NameSpace() const noexcept { return m_nameSpace; }
    // Null where there is no such class.
    ClassDefinition Definition(std::wstring_view className) const;
    // The class as an object.
    ComPtr<IWbemClassObject> Class(std::wstring_view className) const;
    // Every class of the namespace.
    std::vector<ClassDefinition> Definitions() const;

    // One instance by its path, as the outcome's object. WBEM_E_NOT_FOUND where nobody has it.
    COutcome Get(const CObjectPath& path);
    // The instances of a class and, if `deep`, of those derived from it. WBEM_E_INVALID_CLASS.
    COutcome Enumerate(const std::wstring& className, bool deep, const ObjectConsumer& consume);
    COutcome Put(IWbemClassObject* instance);
    // The out-parameters are the outcome's object.
    COutcome Execute(const CObjectPath& path, const std::wstring& method, IWbemClassObject* in);

    // The object comes from here: fills its "__PATH" and the like.
    void Mark(IWbemClassObject* object) const;
    // Whether the client wants the keys of its objects even where it did not select them.
    bool WantsLocatable() const { return (m_request.Flags() & WBEM_FLAG_ENSURE_LOCATABLE) != 0; }

  private:
    std::vector<ClassDefinition> WithDerived(const ClassDefinition& definition) const;
    bool IsDynamic(const CClassDefinition& definition) const;
    using Capability = bool CProviderRegistration::*;
    // The provider of a dynamic class. WBEM_E_PROVIDER_NOT_FOUND; WBEM_E_PROVIDER_NOT_CAPABLE where it is not
    // registered for what is asked of it.
    HRESULT FindProvider(const CClassDefinition& definition, Capability capability,
                         CProviderRegistration& registration) const;
    COutcome Call(const CProviderRegistration& registration, ObjectConsumer consume,
                  const ProviderStart& start);
    // A call that brings one object or none.
    COutcome CallForOne(const CProviderRegistration& registration, const ProviderStart& start);
    COutcome GetFromProvider(const CClassDefinition& definition, const std::wstring& path);
    COutcome EnumerateOne(const CClassDefinition& definition, const ObjectConsumer& consume);

    CService& m_service;
    const std::wstring m_nameSpace;
    CRequest& m_request;
};
} // namespace standin
