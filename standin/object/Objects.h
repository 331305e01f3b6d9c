// The objects that the stand-in gives to clients and to the provider: class definitions, instances, method
// parameters and call contexts. All of them may be used from any thread and travel between processes by
// value. Functions that make something throw std::bad_alloc; those that return an HRESULT throw nothing.
#pragma once

#include "Common/src/com/ComPtr.h"
#include "standin/object/ClassDefinition.h"

#include <wbemcli.h>

namespace standin
{
// The class itself as an object: clients read its properties and signatures and spawn from it.
ComPtr<IWbemClassObject> MakeClassObject(ClassDefinition definition);
// An instance whose properties have the defaults of the class.
ComPtr<IWbemClassObject> MakeInstance(const ClassDefinition& definition);
// An empty call context.
ComPtr<IWbemContext> MakeContext();

// Marks an object as coming from this namespace: "__SERVER", "__NAMESPACE" and "__PATH" are filled from then
// on. The management service does so with whatever it delivers; an object that a program spawns has none.
// `nameSpace` is of the form root\cimv2. E_NOINTERFACE where the object is not one of ours.
HRESULT Decorate(IWbemClassObject* object, const wchar_t* server, const wchar_t* nameSpace) noexcept;

// Copies every property of `source` that `target` has not got from its class alone into `target`, which the
// caller spawned from its own definition of the class. So values are checked against that definition, not
// against the one that the source brought along: WBEM_E_NOT_FOUND, WBEM_E_TYPE_MISMATCH.
HRESULT CopyProperties(IWbemClassObject* source, IWbemClassObject* target) noexcept;

// For DllGetClassObject: the class object of kObjectUnmarshaler, kContextUnmarshaler or CLSID_WbemContext;
// CLASS_E_CLASSNOTAVAILABLE for any other.
HRESULT GetUnmarshalClassObject(REFCLSID clsid, REFIID riid, void** out) noexcept;

// For tests and for the service itself, which unmarshal in a process where no DLL is registered: serves these
// classes inside this process until destroyed. Creation and destruction need an initialised apartment.
class CUnmarshalRegistration
{
  public:
    CUnmarshalRegistration();
    CUnmarshalRegistration(const CUnmarshalRegistration&) = delete;
    CUnmarshalRegistration& operator=(const CUnmarshalRegistration&) = delete;
    ~CUnmarshalRegistration();

  private:
    DWORD m_cookies[2] = {};
};
} // namespace standin
