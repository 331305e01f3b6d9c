#include "standin/object/ClassDefinition.h"

#include "Common/src/com/Text.h"
#include "standin/object/CimType.h"

#include <algorithm>
#include <numeric>

namespace standin
{
namespace
{
wchar_t Fold(wchar_t c) noexcept
{
    return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
}

// What a redeclared element keeps of the inherited one.
CQualifiers Merge(const CQualifiers& inherited, const CQualifiers& own)
{
    CQualifiers result = inherited.Propagated(WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS);
    for (const CQualifier& qualifier : own.All())
        result.Set(qualifier);
    return result;
}

template <class Elements>
auto FindByName(Elements& elements, std::wstring_view name) noexcept
{
    return std::ranges::find_if(elements,
                                [&](const auto& element) { return EqualNoCaseAscii(element.Name, name); });
}
} // namespace

CClassDefinition::CClassDefinition(std::wstring name, const CClassDefinition& base)
    : Name(std::move(name)), Derivation(base.Derivation),
      Qualifiers(base.Qualifiers.Propagated(WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS)),
      m_properties(base.m_properties), m_methods(base.m_methods)
{
    Derivation.insert(Derivation.begin(), base.Name);
    const auto inherit = [](auto& element)
    {
        element.Local = false;
        element.Qualifiers = element.Qualifiers.Propagated(WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS);
    };
    std::ranges::for_each(m_properties, inherit);
    std::ranges::for_each(m_methods, inherit);
}

size_t CClassDefinition::IndexOf(std::wstring_view property) const noexcept
{
    const auto found = FindByName(m_properties, property);
    return found == m_properties.end() ? npos : static_cast<size_t>(found - m_properties.begin());
}

const CPropertyDefinition* CClassDefinition::FindProperty(std::wstring_view name) const noexcept
{
    const size_t index = IndexOf(name);
    return index == npos ? nullptr : &m_properties[index];
}

void CClassDefinition::SetProperty(CPropertyDefinition property)
{
    const size_t index = IndexOf(property.Name);
    if (index != npos)
    {
        const CPropertyDefinition& present = m_properties[index];
        if (!present.Local)
            property.Qualifiers = Merge(present.Qualifiers, property.Qualifiers);
        if (property.Default.vt == VT_EMPTY)
            property.Default = present.Default;
    }
    if (property.Default.vt == VT_EMPTY)
        property.Default = CVariant::Null();
    if (const CCimType* type = FindCimType(property.Type); type && !property.Qualifiers.Find(L"CIMTYPE"))
        property.Qualifiers.Set(MakeQualifier(L"CIMTYPE", CVariant::FromText(type->Name)));
    if (index != npos)
        m_properties[index] = std::move(property);
    else
        m_properties.push_back(std::move(property));
}

void CClassDefinition::RemoveProperty(size_t index)
{
    m_properties.erase(m_properties.begin() + static_cast<ptrdiff_t>(index));
}

const CMethodDefinition* CClassDefinition::FindMethod(std::wstring_view name) const noexcept
{
    const auto found = FindByName(m_methods, name);
    return found == m_methods.end() ? nullptr : &*found;
}

void CClassDefinition::SetMethod(CMethodDefinition method)
{
    const auto present = FindByName(m_methods, method.Name);
    if (present == m_methods.end())
        return m_methods.push_back(std::move(method));
    if (!present->Local)
        method.Qualifiers = Merge(present->Qualifiers, method.Qualifiers);
    *present = std::move(method);
}

bool CClassDefinition::InheritsFrom(std::wstring_view ancestor) const noexcept
{
    return EqualNoCaseAscii(Name, ancestor) ||
           std::ranges::any_of(Derivation,
                               [&](const auto& name) { return EqualNoCaseAscii(name, ancestor); });
}

std::vector<size_t> CClassDefinition::Order() const
{
    std::vector<size_t> order(m_properties.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const auto name = [this](size_t i) -> const std::wstring& { return m_properties[i].Name; };
    const auto before = [](const std::wstring& a, const std::wstring& b)
    { return std::ranges::lexicographical_compare(a, b, {}, Fold, Fold); };
    std::ranges::sort(order, before, name);
    return order;
}

std::vector<size_t> CClassDefinition::Keys() const
{
    std::vector<size_t> keys = Order();
    std::erase_if(keys, [this](size_t i) { return !m_properties[i].Qualifiers.IsTrue(L"key"); });
    return keys;
}

ClassDefinition CClassDefinition::ForInstances() const
{
    return m_forInstances.Get(
        [this]
        {
            auto form = std::make_shared<CClassDefinition>(*this);
            const auto reach = [](auto& element)
            { element.Qualifiers = element.Qualifiers.Propagated(WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE); };
            reach(*form);
            std::ranges::for_each(form->m_properties, reach);
            std::ranges::for_each(form->m_methods, reach);
            return ClassDefinition(std::move(form));
        });
}
} // namespace standin
