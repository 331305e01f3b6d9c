#include "standin/object/ClassDefinition.h"

#include "Common/src/com/Text.h"
#include "standin/object/CimType.h"
#include "standin/object/ObjectBytes.h"

#include <algorithm>
#include <cwctype>
#include <stdexcept>

namespace standin
{
namespace
{
wchar_t Fold(wchar_t c) noexcept
{
    return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
}

size_t HashOf(std::wstring_view name) noexcept
{
    uint32_t hash = 2166136261u;
    for (const wchar_t c : name)
        hash = (hash ^ Fold(c)) * 16777619u;
    return hash;
}

bool NameBefore(const std::wstring& a, const std::wstring& b) noexcept
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](wchar_t x, wchar_t y) { return Fold(x) < Fold(y); });
}

// What a redeclared element keeps of the inherited one.
CQualifiers Merge(const CQualifiers& inherited, const CQualifiers& own)
{
    CQualifiers result = inherited.Propagated(WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS);
    for (const CQualifier& qualifier : own.All())
        result.Set(qualifier);
    return result;
}

CQualifier CimTypeQualifier(CIMTYPE type)
{
    return MakeQualifier(L"CIMTYPE", CVariant::FromText(CimTypeName(ElementType(type))));
}
} // namespace

CClassDefinition::CClassDefinition(std::wstring name, const CClassDefinition& base)
    : Name(std::move(name)), Derivation(base.Derivation),
      Qualifiers(base.Qualifiers.Propagated(WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS)),
      m_properties(base.m_properties), m_methods(base.m_methods), m_slots(base.m_slots)
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
    if (m_slots.empty())
        return npos;
    const size_t mask = m_slots.size() - 1;
    for (size_t slot = HashOf(property) & mask; m_slots[slot] != 0; slot = (slot + 1) & mask)
    {
        const size_t index = m_slots[slot] - 1u;
        if (EqualNoCaseAscii(m_properties[index].Name, property))
            return index;
    }
    return npos;
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
        CPropertyDefinition& present = m_properties[index];
        property.Origin = present.Origin;
        if (!present.Local)
            property.Qualifiers = Merge(present.Qualifiers, property.Qualifiers);
        if (property.Default.vt == VT_EMPTY)
            property.Default = present.Default;
    }
    else if (m_properties.size() == kMaxProperties)
        throw std::length_error("too many properties");
    if (property.Origin.empty())
        property.Origin = Name;
    if (property.Default.vt == VT_EMPTY)
        property.Default = CCimValue(CVariant::Null());
    if (!property.Qualifiers.Find(L"CIMTYPE"))
        property.Qualifiers.Set(CimTypeQualifier(property.Type));
    if (index != npos)
        m_properties[index] = std::move(property);
    else
        m_properties.push_back(std::move(property));
    Index();
}

void CClassDefinition::RemoveProperty(size_t index)
{
    m_properties.erase(m_properties.begin() + static_cast<ptrdiff_t>(index));
    Index();
}

const CMethodDefinition* CClassDefinition::FindMethod(std::wstring_view name) const noexcept
{
    for (const CMethodDefinition& method : m_methods)
        if (EqualNoCaseAscii(method.Name, name))
            return &method;
    return nullptr;
}

void CClassDefinition::SetMethod(CMethodDefinition method)
{
    if (const CMethodDefinition* present = FindMethod(method.Name))
    {
        method.Origin = present->Origin;
        if (!present->Local)
            method.Qualifiers = Merge(present->Qualifiers, method.Qualifiers);
        m_methods[static_cast<size_t>(present - m_methods.data())] = std::move(method);
    }
    else
    {
        if (method.Origin.empty())
            method.Origin = Name;
        m_methods.push_back(std::move(method));
    }
    Changed();
}

void CClassDefinition::RemoveMethod(size_t index)
{
    m_methods.erase(m_methods.begin() + static_cast<ptrdiff_t>(index));
    Changed();
}

bool CClassDefinition::InheritsFrom(std::wstring_view ancestor) const noexcept
{
    return EqualNoCaseAscii(Name, ancestor) ||
           std::ranges::any_of(Derivation,
                               [&](const auto& name) { return EqualNoCaseAscii(name, ancestor); });
}

std::shared_ptr<const std::vector<uint16_t>> CClassDefinition::Order() const
{
    return m_order.Get(
        [this]
        {
            auto order = std::make_shared<std::vector<uint16_t>>(m_properties.size());
            for (size_t i = 0; i < order->size(); ++i)
                (*order)[i] = static_cast<uint16_t>(i);
            std::ranges::sort(*order, [this](size_t a, size_t b)
                              { return NameBefore(m_properties[a].Name, m_properties[b].Name); });
            return std::shared_ptr<const std::vector<uint16_t>>(std::move(order));
        });
}

std::shared_ptr<const std::vector<uint16_t>> CClassDefinition::Keys() const
{
    return m_keys.Get(
        [this]
        {
            auto keys = std::make_shared<std::vector<uint16_t>>(*Order());
            std::erase_if(*keys, [this](size_t i) { return !m_properties[i].Qualifiers.IsTrue(L"key"); });
            return std::shared_ptr<const std::vector<uint16_t>>(std::move(keys));
        });
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

std::shared_ptr<const std::vector<BYTE>> CClassDefinition::Bytes() const
{
    return m_bytes.Get([this] { return std::make_shared<const std::vector<BYTE>>(EncodeDefinition(*this)); });
}

void CClassDefinition::Changed() noexcept
{
    m_order.Reset();
    m_keys.Reset();
    m_forInstances.Reset();
    m_bytes.Reset();
}

void CClassDefinition::Index()
{
    Changed();
    size_t size = 8;
    while (size < 2 * m_properties.size())
        size *= 2;
    m_slots.assign(size, 0);
    for (size_t i = 0; i < m_properties.size(); ++i)
    {
        size_t slot = HashOf(m_properties[i].Name) & (size - 1);
        while (m_slots[slot] != 0)
            slot = (slot + 1) & (size - 1);
        m_slots[slot] = static_cast<uint16_t>(i + 1);
    }
}

CQualifier MakeQualifier(std::wstring_view name, CVariant value)
{
    constexpr long kEverywhere =
        WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE | WBEM_FLAVOR_FLAG_PROPAGATE_TO_DERIVED_CLASS;
    struct CRow
    {
        const wchar_t* Name;
        long Flavor;
    };
    constexpr CRow kKnown[] = {
        {L"key", kEverywhere | WBEM_FLAVOR_NOT_OVERRIDABLE},
        {L"association", kEverywhere | WBEM_FLAVOR_NOT_OVERRIDABLE},
        {L"singleton", kEverywhere | WBEM_FLAVOR_NOT_OVERRIDABLE},
        {L"CIMTYPE", kEverywhere},
        {L"in", kEverywhere},
        {L"out", kEverywhere},
        {L"ID", kEverywhere | WBEM_FLAVOR_NOT_OVERRIDABLE},
        {L"dynamic", WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE},
        {L"provider", WBEM_FLAVOR_FLAG_PROPAGATE_TO_INSTANCE},
    };
    CQualifier qualifier{std::wstring(name), CCimValue(std::move(value)), 0};
    for (const CRow& row : kKnown)
        if (EqualNoCaseAscii(row.Name, name))
            qualifier.Flavor = row.Flavor;
    return qualifier;
}
} // namespace standin
