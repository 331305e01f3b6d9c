// IWbemQualifierSet over the qualifiers of an object, a property or a method. It shows the object as it is
// now; a change goes to the object.
#pragma once

#include "standin/object/ManagementObject.h"

namespace standin
{
class CQualifierSet : public CComObject<IWbemQualifierSet>
{
  public:
    CQualifierSet(ComPtr<CManagementObject> owner, CQualifierPlace place) noexcept
        : m_owner(std::move(owner)), m_place(std::move(place))
    {
    }

    STDMETHODIMP Get(LPCWSTR name, LONG flags, VARIANT* value, LONG* flavor) override;
    STDMETHODIMP Put(LPCWSTR name, VARIANT* value, LONG flavor) override;
    STDMETHODIMP Delete(LPCWSTR name) override;
    STDMETHODIMP GetNames(LONG flags, SAFEARRAY** names) override;
    STDMETHODIMP BeginEnumeration(LONG flags) override;
    STDMETHODIMP Next(LONG flags, BSTR* name, VARIANT* value, LONG* flavor) override;
    STDMETHODIMP EndEnumeration() override;

  private:
    // An enumeration goes over the qualifiers as they were when it began.
    struct CEnumeration
    {
        std::vector<CQualifier> Items;
        size_t Next = 0;
    };

    const ComPtr<CManagementObject> m_owner;
    const CQualifierPlace m_place;
    SRWLOCK m_lock = SRWLOCK_INIT;
    std::unique_ptr<CEnumeration> m_enumeration;
};
} // namespace standin
