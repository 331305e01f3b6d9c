// A class: names, qualifiers, properties, methods. All instances of a class share one definition, which
// nobody changes once it is shared; who wants another one copies it first. Reading is safe on any thread.
#pragma once

#include "standin/object/Lazy.h"
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
    CCimValue Default; // in its stored form; VT_NULL where there is none
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
    // The management service has no class with more. Here it bounds methods and qualifiers as well.
    static constexpr size_t kMaxProperties = 1024;

    explicit CClassDefinition(std::wstring name) : Name(std::move(name)) {}
    // A class derived from `base`: inherits properties, methods and what qualifiers propagate.
    CClassDefinition(std::wstring name, const CClassDefinition& base);

    std::wstring Name;
    std::vector<std::wstring> Derivation; // the superclass first, the dynasty's class last
    CQualifiers Qualifiers;

    const std::vector<CPropertyDefinition>& Properties() const noexcept { return m_properties; }
    // Case-insensitive; npos where there is none.
    size_t IndexOf(std::wstring_view property) const noexcept;
    const CPropertyDefinition* FindProperty(std::wstring_view name) const noexcept;
    // Adds a property, or replaces or redeclares the one of that name: inherited qualifiers, origin and,
    // where it has none of its own (VT_EMPTY), the default go over to the new one. Gives it a "CIMTYPE"
    // qualifier where it has none. Throws std::length_error past kMaxProperties.
    void SetProperty(CPropertyDefinition property);
    CPropertyDefinition& PropertyAt(size_t index) noexcept { return m_properties[index]; }
    void RemoveProperty(size_t index);

    const std::vector<CMethodDefinition>& Methods() const noexcept { return m_methods; }
    const CMethodDefinition* FindMethod(std::wstring_view name) const noexcept;
    // Adds, replaces or redeclares a method, as SetProperty does.
    void SetMethod(CMethodDefinition method);
    CMethodDefinition& MethodAt(size_t index) noexcept { return m_methods[index]; }
    void RemoveMethod(size_t index);

    // True for the class itself and for its ancestors.
    bool InheritsFrom(std::wstring_view ancestor) const noexcept;

    // Indices of the properties by name: the order in which the management service enumerates them.
    std::shared_ptr<const std::vector<uint16_t>> Order() const;
    // Indices of the key properties by name.
    std::shared_ptr<const std::vector<uint16_t>> Keys() const;
    // What instances see of the class: only the qualifiers that propagate to them.
    ClassDefinition ForInstances() const;
    // The marshalled form.
    std::shared_ptr<const std::vector<BYTE>> Bytes() const;
    // To be called after a change other than through the Set and Remove functions.
    void Changed() noexcept;

  private:
    void Index();

    std::vector<CPropertyDefinition> m_properties; // in the order of declaration
    std::vector<CMethodDefinition> m_methods;
    std::vector<uint16_t> m_slots; // hash table: index + 1, or 0
    CLazy<std::vector<uint16_t>> m_order;
    CLazy<std::vector<uint16_t>> m_keys;
    CLazy<CClassDefinition> m_forInstances;
    CLazy<std::vector<BYTE>> m_bytes;
};

// A qualifier as MOF gives it where no flavor is written: most stay where they are, some (such as "key") are
// known to reach derived classes and instances.
CQualifier MakeQualifier(std::wstring_view name, CVariant value);

// The definition behind one of our objects, wherever in this process it was made; null for any other.
ClassDefinition DefinitionOf(IWbemClassObject* object);
} // namespace standin
