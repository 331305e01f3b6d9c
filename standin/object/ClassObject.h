// A class definition as an object, also the signature of a method. Changing one changes the object's own copy
// of the definition; instances that were spawned before keep theirs.
#pragma once

#include "standin/object/ManagementObject.h"

namespace standin
{
class CClassObject : public CManagementObject
{
  public:
    explicit CClassObject(ClassDefinition definition,
                          std::shared_ptr<const CDecoration> decoration = nullptr) noexcept;

    // Sets the default of a property; a property that is not there is added, with the type that is given or
    // else follows from the value. "__CLASS" names the class.
    STDMETHODIMP Put(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE type) override;
    STDMETHODIMP Delete(LPCWSTR name) override;
    STDMETHODIMP Clone(IWbemClassObject** copy) override;
    STDMETHODIMP SpawnDerivedClass(LONG flags, IWbemClassObject** out) override;
    STDMETHODIMP PutMethod(LPCWSTR name, LONG flags, IWbemClassObject* in, IWbemClassObject* out) override;
    STDMETHODIMP DeleteMethod(LPCWSTR name) override;

  protected:
    CObjectView View() const noexcept override { return {*m_definition, m_decoration.get(), nullptr}; }

  private:
    HRESULT Rename(const VARIANT& name);
    // CIM_EMPTY where there is no such property.
    CIMTYPE TypeOf(const wchar_t* name) const;
    HRESULT SetDefault(const wchar_t* name, CIMTYPE type, CCimValue value);
};
} // namespace standin
