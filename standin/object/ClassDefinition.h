// A class: names, qualifiers, properties, methods. All instances of a class share one definition, which
// nobody changes once it is shared; who wants another one copies it first. Reading is safe on any thread.
#pragma once

#include "standin/object/Qualifiers.h"

#include <atomic>

namespace standin
{
class CClassDefinition;
using ClassDefinition = std::shared_ptr<const CClassDefinition>;

struct CPropertyDefinition
{
    std::wstring Name;
    CIMTYPE Type = CIM_STRING;
    CCimValue Default; // in its stored form; VT_NULL where there is none
    CQualifiers Qualifiers;
    bool Local = true; // declared or redeclared by this class, not only inherited
};

struct CMethodDefinition
{
    std::wstring Name;
    ClassDefinition In; // classes "__PARAMETERS"; null where there are no such parameters
    ClassDefinition Out;
    CQualifiers Qualifiers;
    bool Local = true;
};

// Something that is worked out from its owner when first asked for. A copy of the owner starts without it.
template <class T>
class CLazy
{
  public:
    CLazy() noexcept = default;
    CLazy(const CLazy&) noexcept {}
    CLazy& operator=(const CLazy&) = delete;

    // `make` returns std::shared_ptr<const T>; two threads that ask at once may both make one.
    template <class Make>
    std::shared_ptr<const T> Get(Make&& make) const
    {
        std::shared_ptr<const T> value = m_value.load();
        if (!value)
            m_value.store(value = make());
        return value;
    }

  private:
    mutable std::atomic<std::shared_ptr<const T>> m_value;
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

    // In the order of declaration.
    const std::vector<CPropertyDefinition>& Properties() const noexcept { return m_properties; }
    // Case-insensitive; npos where there is none.
    size_t IndexOf(std::wstring_view property) const noexcept;
    const CPropertyDefinition* FindProperty(std::wstring_view name) const noexcept;
    // Adds a property, or replaces or redeclares the one of that name: inherited qualifiers and, where it has
    // none of its own (VT_EMPTY), the default go over to the new one. Gives it a "CIMTYPE" qualifier where it
    // has none.
    void SetProperty(CPropertyDefinition property);
    CPropertyDefinition& PropertyAt(size_t index) noexcept { return m_properties[index]; }
    void RemoveProperty(size_t index);

    const std::vector<CMethodDefinition>& Methods() const noexcept { return m_methods; }
    const CMethodDefinition* FindMethod(std::wstring_view name) const noexcept;
    // Adds, replaces or redeclares a method, as SetProperty does.
    void SetMethod(CMethodDefinition method);

    // True for the class itself and for its ancestors.
    bool InheritsFrom(std::wstring_view ancestor) const noexcept;
    // Indices of the properties by name: the order in which the management service enumerates them.
    std::vector<size_t> Order() const;
    // Indices of the key properties by name.
    std::vector<size_t> Keys() const;
    // What instances see of the class: only the qualifiers that propagate to them.
    ClassDefinition ForInstances() const;

    // The marshalled form, for those who make it.
    const CLazy<std::vector<BYTE>>& Encoded() const noexcept { return m_encoded; }

  private:
    std::vector<CPropertyDefinition> m_properties;
    std::vector<CMethodDefinition> m_methods;
    CLazy<CClassDefinition> m_forInstances;
    CLazy<std::vector<BYTE>> m_encoded;
};
} // namespace standin
