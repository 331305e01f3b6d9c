#include "standin/object/Qualifiers.h"

#include "Common/src/com/Text.h"

#include <algorithm>
#include <wbemcli.h>

namespace standin
{
const CQualifier* CQualifiers::Find(std::wstring_view name) const noexcept
{
    for (const CQualifier& qualifier : m_all)
        if (EqualNoCaseAscii(qualifier.Name, name))
            return &qualifier;
    return nullptr;
}

bool CQualifiers::IsTrue(std::wstring_view name) const noexcept
{
    const CQualifier* qualifier = Find(name);
    return qualifier && qualifier->Value.vt == VT_BOOL && qualifier->Value.boolVal != VARIANT_FALSE;
}

const wchar_t* CQualifiers::Text(std::wstring_view name) const noexcept
{
    const CQualifier* qualifier = Find(name);
    return qualifier && qualifier->Value.vt == VT_BSTR ? qualifier->Value.bstrVal : nullptr;
}

void CQualifiers::Set(CQualifier qualifier)
{
    if (const CQualifier* present = Find(qualifier.Name))
        m_all[static_cast<size_t>(present - m_all.data())] = std::move(qualifier);
    else
        m_all.push_back(std::move(qualifier));
}

bool CQualifiers::Remove(std::wstring_view name) noexcept
{
    return std::erase_if(m_all, [&](const CQualifier& q) { return EqualNoCaseAscii(q.Name, name); }) != 0;
}

CQualifiers CQualifiers::Propagated(long flag) const
{
    CQualifiers result;
    for (const CQualifier& qualifier : m_all)
        if (qualifier.Flavor & flag)
        {
            result.m_all.push_back(qualifier);
            long& flavor = result.m_all.back().Flavor;
            flavor = (flavor & ~WBEM_FLAVOR_MASK_ORIGIN) | WBEM_FLAVOR_ORIGIN_PROPAGATED;
        }
    return result;
}
} // namespace standin
