// A class: names, qualifiers, properties, methods. All instances of a class share one definition, which
// nobody changes once it is shared; who wants another one copies it first. Reading is safe on any thread.
#pragma once

#include "standin/object/Objects.h"
#include "standin/object/Qualifiers.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{
struct CPropertyDefinition
{
    std::wstring Name;
    CIMTYPE Type = CIM_STRING;
    CCimValue Default; // VT_NULL where there is none
    CQualifiers Qualifiers;
    std::wstring Origin; // the class that declared it first
    bool Local = true;   // declared or redeclared by this class, not only inherited
};

struct CMethodDefinition
{
    std::wstring Name;
    ClassDefinition In; // classes "__PARAMETERS"; null where there are no such parameters
    ClassDefinition Out;
    CQualifiers Qualifiers;
    std::wstring Origin;
    bool Local = true;
};

class CClassDefinition
{
  public:
    static constexpr size_t npos = static_cast<size_t>(-1);

    explicit CClassDefinition(std::wstring name) : Name(std::move(name)) {}
    // A class derived from `base`: inherits properties, methods and what qualifiers propagate.
    CClassDefinition(std::wstring name, const CClassDefinition& base);

    std::wstring Name;
    std::vector<std::wstring> Derivation; // the superclass first, the dynasty's class last
    CQualifiers Qualifiers;
    bool FullInstance = true;

    const std::vector<CPropertyDefinition>& Properties() const noexcept { return m_properties; }
    // Case-insensitive; npos where there is none.
    size_t IndexOf(std::wstring_view property) const noexcept;
    const CPropertyDefinition* FindProperty(std::wstring_view name) const noexcept;
    // Adds a property or replaces the one of that name, and gives it a "CIMTYPE" qualifier where it has none.
    // Its default is null where none is given.
    CPropertyDefinition& SetProperty(CPropertyDefinition property);
    CPropertyDefinition& PropertyAt(size_t index) noexcept { return m_properties[index]; }
    bool RemoveProperty(std::wstring_view name);

    const std::vector<CMethodDefinition>& Methods() const noexcept { return m_methods; }
    const CMethodDefinition* FindMethod(std::wstring_view name) const noexcept;
    CMethodDefinition& SetMethod(CMethodDefinition method);
    bool RemoveMethod(std::wstring_view name) noexcept;

    // True for the class itself and for its ancestors.
    bool InheritsFrom(std::wstring_view ancestor) const noexcept;

  private:
    std::vector<CPropertyDefinition> m_properties; // in the order of declaration
    std::vector<CMethodDefinition> m_methods;
};

// Makes "key", "in", "out" and the like by hand, with the flavor that the MOF compiler gives them.
CQualifier MakeQualifier(std::wstring_view name, CVariant value);
} // namespace standin
