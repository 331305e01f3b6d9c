// The qualifiers of a class, property or method, and IWbemQualifierSet over them.
#pragma once

#include "Common/src/com/ComPtr.h"
#include "standin/object/CimValue.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{
struct CQualifier
{
    std::wstring Name;
    CCimValue Value;
    long Flavor = 0; // WBEM_FLAVOR_..., origin included
};

// An ordered list; names differ without regard to case.
class CQualifiers
{
  public:
    const CQualifier* Find(std::wstring_view name) const noexcept;
    // True where the qualifier is there with the boolean value true.
    bool IsTrue(std::wstring_view name) const noexcept;
    // The text of a string qualifier; null where it is absent or of another type.
    const wchar_t* Text(std::wstring_view name) const noexcept;
    // Adds a qualifier or replaces the one of that name.
    void Set(CQualifier qualifier);
    bool Remove(std::wstring_view name) noexcept;
    const std::vector<CQualifier>& All() const noexcept { return m_all; }

    // Those that a derived class (WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS) or an instance
    // (WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE) sees, marked as propagated.
    CQualifiers Propagated(long flag) const;

  private:
    std::vector<CQualifier> m_all;
};

// A qualifier as MOF gives it where no flavor is written: most stay where they are, some (such as "key") are
// known to reach derived classes and instances.
CQualifier MakeQualifier(std::wstring_view name, CVariant value);

// For reading one qualifier at a time; everything else is WBEM_E_NOT_SUPPORTED.
ComPtr<IWbemQualifierSet> MakeQualifierSet(std::shared_ptr<const CQualifiers> qualifiers);
} // namespace standin
