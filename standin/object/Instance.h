// An instance, or the filled-in parameters of a method.
#pragma once

#include "standin/object/ManagementObject.h"

namespace standin
{
class CInstance : public CManagementObject
{
  public:
    // `definition` is in the form for instances. `values` has one value per property, VT_EMPTY for that of
    // the class; an empty list stands for nothing but those.
    explicit CInstance(ClassDefinition definition, std::vector<CCimValue> values = {},
                       std::shared_ptr<const CDecoration> decoration = nullptr);

    // The type may be 0 or the property's own.
    STDMETHODIMP Put(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE type) override;
    // Puts the class's value back: WBEM_S_RESET_TO_DEFAULT.
    STDMETHODIMP Delete(LPCWSTR name) override;
    STDMETHODIMP Clone(IWbemClassObject** copy) override;

    // What only classes can.
    STDMETHODIMP SpawnDerivedClass(LONG flags, IWbemClassObject** out) override;
    STDMETHODIMP PutMethod(LPCWSTR name, LONG flags, IWbemClassObject* in, IWbemClassObject* out) override;
    STDMETHODIMP DeleteMethod(LPCWSTR name) override;

  protected:
    CObjectView View() const noexcept override
    {
        return {*m_definition, m_decoration.get(), m_values.data()};
    }

  private:
    std::vector<CCimValue> m_values;
};
} // namespace standin
