// IWbemClassObject of a class, an instance, or the parameters of a method, as far as the provider and its
// clients use it. Its definition never changes; what is put stays the object's own, also where it is a class.
#pragma once

#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/ByValue.h"
#include "standin/object/ObjectState.h"

#include <mutex>

namespace standin
{
// What only objects of ours can.
struct IStandinObject : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE Decorate(const wchar_t* server, const wchar_t* nameSpace) = 0;
};
} // namespace standin
__CRT_UUID_DECL(standin::IStandinObject, 0x1b6e07c6, 0x52d9, 0x4f0b, 0x8a, 0x41, 0x3c, 0x77, 0xd0, 0x5e, 0x92,
                0x16)

namespace standin
{
class CManagementObject : public CByValueObject<IWbemClassObject, IStandinObject>
{
  public:
    explicit CManagementObject(CObjectState state);
    // Throws CBadBytes or std::bad_alloc.
    static ComPtr<IWbemClassObject> Decode(std::span<const BYTE> bytes, int nesting);

    STDMETHODIMP Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor) override;
    // Of properties that the class has. The type may be 0 or the property's own.
    STDMETHODIMP Put(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE type) override;
    // Without a condition on a qualifier.
    STDMETHODIMP GetNames(LPCWSTR qualifier, LONG flags, VARIANT* qualifierValue, SAFEARRAY** names) override;
    STDMETHODIMP BeginEnumeration(LONG flags) override;
    STDMETHODIMP Next(LONG flags, BSTR* name, VARIANT* value, CIMTYPE* type, LONG* flavor) override;
    STDMETHODIMP EndEnumeration() override;
    STDMETHODIMP GetQualifierSet(IWbemQualifierSet** out) override;
    STDMETHODIMP GetPropertyQualifierSet(LPCWSTR property, IWbemQualifierSet** out) override;
    STDMETHODIMP Clone(IWbemClassObject** copy) override;
    STDMETHODIMP SpawnInstance(LONG flags, IWbemClassObject** out) override;
    // Without flags. The values of all properties count, wherever they come from; the other object may be
    // foreign.
    STDMETHODIMP CompareTo(LONG flags, IWbemClassObject* other) override;

    // Of classes only: WBEM_E_ILLEGAL_OPERATION of an instance, unless Wine's scripting objects are loaded.
    STDMETHODIMP GetMethod(LPCWSTR name, LONG flags, IWbemClassObject** in, IWbemClassObject** out) override;
    STDMETHODIMP BeginMethodEnumeration(LONG flags) override;
    STDMETHODIMP NextMethod(LONG flags, BSTR* name, IWbemClassObject** in, IWbemClassObject** out) override;
    STDMETHODIMP EndMethodEnumeration() override;

    // Nobody here asks for these.
    STDMETHODIMP GetMethodQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return wmi::NotSupported; }
    STDMETHODIMP Delete(LPCWSTR) override { return wmi::NotSupported; }
    STDMETHODIMP GetObjectText(LONG, BSTR*) override { return wmi::NotSupported; }
    STDMETHODIMP SpawnDerivedClass(LONG, IWbemClassObject**) override { return wmi::NotSupported; }
    STDMETHODIMP GetPropertyOrigin(LPCWSTR, BSTR*) override { return wmi::NotSupported; }
    STDMETHODIMP GetMethodOrigin(LPCWSTR, BSTR*) override { return wmi::NotSupported; }
    STDMETHODIMP InheritsFrom(LPCWSTR) override { return wmi::NotSupported; }
    STDMETHODIMP PutMethod(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*) override
    {
        return wmi::NotSupported;
    }
    STDMETHODIMP DeleteMethod(LPCWSTR) override { return wmi::NotSupported; }

    STDMETHODIMP Decorate(const wchar_t* server, const wchar_t* nameSpace) override;

  protected:
    std::vector<BYTE> Bytes() override;

  private:
    // The definition needs no lock: it stays the same.
    const CClassDefinition& Definition() const noexcept { return *m_state.Definition; }

    // Whether date-times may have a UTC offset of another form, see IsStrict.
    bool TakesAnyOffset();

    CCriticalSection m_lock;
    CObjectState m_state;
    // Read with the first date-time that is put: once for each object, because reading costs more than
    // putting.
    std::once_flag m_strictnessRead;
    bool m_isStrict = false;
    std::vector<std::wstring> m_names; // that the enumeration visits
    size_t m_next = kNoEnumeration;
    size_t m_nextMethod = kNoEnumeration;

    static constexpr size_t kNoEnumeration = static_cast<size_t>(-1);
};
} // namespace standin
