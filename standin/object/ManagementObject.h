// What class objects and instances have in common. Both hold a shared definition and, under a lock, what is
// their own; the two derived classes say what a change does.
#pragma once

#include "Common/src/com/ComObject.h"
#include "standin/object/Bytes.h"
#include "standin/object/ObjectView.h"

#include <memory>
#include <vector>

namespace standin
{
// By which our objects know each other, also when they were made by different modules of a process.
struct IStandinObject : public IUnknown
{
    // Null pointers take the decoration away.
    virtual HRESULT STDMETHODCALLTYPE Decorate(const wchar_t* server, const wchar_t* nameSpace) = 0;
};
} // namespace standin
__CRT_UUID_DECL(standin::IStandinObject, 0x1b6e07c6, 0x52d9, 0x4f0b, 0x8a, 0x41, 0x3c, 0x77, 0xd0, 0x5e, 0x92,
                0x16)

namespace standin
{
// Which qualifiers a set stands for.
struct CQualifierPlace
{
    enum EKind
    {
        Object,
        Property,
        Method
    };
    EKind Kind = Object;
    std::wstring Name;

    // Null where the definition has no such property or method (any more).
    const CQualifiers* In(const CClassDefinition& definition) const noexcept;
    CQualifiers* In(CClassDefinition& definition) const noexcept;
};

class CManagementObject : public CComObject<IWbemClassObject, IStandinObject, IByValue, IMarshal>
{
  public:
    STDMETHODIMP GetQualifierSet(IWbemQualifierSet** out) override;
    STDMETHODIMP Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor) override;
    STDMETHODIMP GetNames(LPCWSTR qualifier, LONG flags, VARIANT* qualifierValue, SAFEARRAY** names) override;
    STDMETHODIMP BeginEnumeration(LONG flags) override;
    STDMETHODIMP Next(LONG flags, BSTR* name, VARIANT* value, CIMTYPE* type, LONG* flavor) override;
    STDMETHODIMP EndEnumeration() override;
    STDMETHODIMP GetPropertyQualifierSet(LPCWSTR property, IWbemQualifierSet** out) override;
    STDMETHODIMP GetObjectText(LONG flags, BSTR* text) override;
    STDMETHODIMP SpawnInstance(LONG flags, IWbemClassObject** out) override;
    STDMETHODIMP CompareTo(LONG flags, IWbemClassObject* other) override;
    STDMETHODIMP GetPropertyOrigin(LPCWSTR name, BSTR* className) override;
    STDMETHODIMP InheritsFrom(LPCWSTR ancestor) override;
    STDMETHODIMP GetMethod(LPCWSTR name, LONG flags, IWbemClassObject** in, IWbemClassObject** out) override;
    STDMETHODIMP BeginMethodEnumeration(LONG flags) override;
    STDMETHODIMP NextMethod(LONG flags, BSTR* name, IWbemClassObject** in, IWbemClassObject** out) override;
    STDMETHODIMP EndMethodEnumeration() override;
    STDMETHODIMP GetMethodQualifierSet(LPCWSTR method, IWbemQualifierSet** out) override;
    STDMETHODIMP GetMethodOrigin(LPCWSTR name, BSTR* className) override;

    STDMETHODIMP Decorate(const wchar_t* server, const wchar_t* nameSpace) override;
    STDMETHODIMP Encode(BYTE** bytes, ULONG* size) override;

    STDMETHODIMP GetUnmarshalClass(REFIID, void*, DWORD, void*, DWORD, CLSID* clsid) override;
    STDMETHODIMP GetMarshalSizeMax(REFIID, void*, DWORD, void*, DWORD, DWORD* size) override;
    STDMETHODIMP MarshalInterface(IStream* stream, REFIID, void*, DWORD, void*, DWORD) override;
    STDMETHODIMP UnmarshalInterface(IStream*, REFIID, void**) override { return E_NOTIMPL; }
    STDMETHODIMP ReleaseMarshalData(IStream*) override { return S_OK; }
    STDMETHODIMP DisconnectObject(DWORD) override { return S_OK; }

    // For qualifier sets: the definition as it is now, and a change of it. An instance's change is its own.
    ClassDefinition Definition() const;
    template <class Change>
    HRESULT ChangeDefinition(Change&& change)
    {
        const CExclusive lock(m_lock);
        return change(OwnDefinition());
    }

  protected:
    explicit CManagementObject(ClassDefinition definition) noexcept : m_definition(std::move(definition)) {}
    // Under the lock.
    virtual CObjectView View() const noexcept = 0;
    // Under the lock: the definition for changing, copied first where others see it as well.
    CClassDefinition& OwnDefinition();

    mutable SRWLOCK m_lock = SRWLOCK_INIT;
    ClassDefinition m_definition;
    std::shared_ptr<const CDecoration> m_decoration;

  private:
    // An enumeration goes over the object as it was when it began.
    struct CEnumeration
    {
        ClassDefinition Definition;
        std::vector<uint16_t> Items;
        size_t Next = 0;
    };

    HRESULT OpenQualifiers(CQualifierPlace place, IWbemQualifierSet** out);
    std::vector<BYTE> Bytes() const;

    std::unique_ptr<CEnumeration> m_properties;
    std::unique_ptr<CEnumeration> m_methods;
};
} // namespace standin
