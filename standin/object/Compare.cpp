#include "standin/object/Compare.h"

#include "Common/src/com/ComPtr.h"
#include "Common/src/com/SafeArray.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/CimValue.h"

namespace standin
{
namespace
{
constexpr long kUnderstood = WBEM_FLAG_IGNORE_QUALIFIERS | WBEM_FLAG_IGNORE_OBJECT_SOURCE |
                             WBEM_FLAG_IGNORE_DEFAULT_VALUES | WBEM_FLAG_IGNORE_CLASS |
                             WBEM_FLAG_IGNORE_CASE | WBEM_FLAG_IGNORE_FLAVOR;

bool SameProperty(IWbemClassObject& a, IWbemClassObject& b, const wchar_t* name, long flags,
                  bool compareValue)
{
    CVariant left;
    CVariant right;
    CIMTYPE leftType = CIM_EMPTY;
    CIMTYPE rightType = CIM_EMPTY;
    return SUCCEEDED(a.Get(name, 0, &left, &leftType, nullptr)) &&
           SUCCEEDED(b.Get(name, 0, &right, &rightType, nullptr)) && leftType == rightType &&
           (!compareValue || SameCimValue(left, right, (flags & WBEM_FLAG_IGNORE_CASE) != 0));
}

bool SameQualifiers(IWbemQualifierSet& a, IWbemQualifierSet& b, long flags)
{
    CSafeArray leftNames;
    CSafeArray rightNames;
    if (FAILED(a.GetNames(0, leftNames.Put())) || FAILED(b.GetNames(0, rightNames.Put())))
        return false;
    const CSafeArrayView<BSTR> names(leftNames.Get(), VT_BSTR);
    if (names.Items().size() != CSafeArrayView<BSTR>(rightNames.Get(), VT_BSTR).Items().size())
        return false;
    for (const BSTR name : names.Items())
    {
        CVariant left;
        CVariant right;
        LONG leftFlavor = 0;
        LONG rightFlavor = 0;
        if (FAILED(a.Get(name, 0, &left, &leftFlavor)) || FAILED(b.Get(name, 0, &right, &rightFlavor)) ||
            !SameCimValue(left, right, (flags & WBEM_FLAG_IGNORE_CASE) != 0) ||
            (!(flags & WBEM_FLAG_IGNORE_FLAVOR) && leftFlavor != rightFlavor))
            return false;
    }
    return true;
}

bool SameClassQualifiers(IWbemClassObject& a, IWbemClassObject& b, long flags)
{
    ComPtr<IWbemQualifierSet> left;
    ComPtr<IWbemQualifierSet> right;
    return SUCCEEDED(a.GetQualifierSet(left.Put())) && SUCCEEDED(b.GetQualifierSet(right.Put())) &&
           SameQualifiers(*left, *right, flags);
}

bool SamePropertyQualifiers(IWbemClassObject& a, IWbemClassObject& b, const wchar_t* name, long flags)
{
    ComPtr<IWbemQualifierSet> left;
    ComPtr<IWbemQualifierSet> right;
    return SUCCEEDED(a.GetPropertyQualifierSet(name, left.Put())) &&
           SUCCEEDED(b.GetPropertyQualifierSet(name, right.Put())) && SameQualifiers(*left, *right, flags);
}

bool IsClass(IWbemClassObject& object)
{
    CVariant genus;
    return SUCCEEDED(object.Get(L"__GENUS", 0, &genus, nullptr, nullptr)) && genus.vt == VT_I4 &&
           genus.lVal == WBEM_GENUS_CLASS;
}
} // namespace

HRESULT CompareObjects(IWbemClassObject& a, IWbemClassObject* b, long flags)
{
    if (!b || (flags & ~kUnderstood))
        return wmi::InvalidParameter;
    const bool qualifiers = !(flags & WBEM_FLAG_IGNORE_QUALIFIERS);
    if (IsClass(a) != IsClass(*b))
        return WBEM_S_DIFFERENT;
    if (!(flags & WBEM_FLAG_IGNORE_CLASS))
        for (const wchar_t* name : {L"__CLASS", L"__SUPERCLASS"})
            if (!SameProperty(a, *b, name, WBEM_FLAG_IGNORE_CASE, true))
                return WBEM_S_DIFFERENT;
    if (!(flags & WBEM_FLAG_IGNORE_OBJECT_SOURCE))
        for (const wchar_t* name : {L"__SERVER", L"__NAMESPACE"})
            if (!SameProperty(a, *b, name, WBEM_FLAG_IGNORE_CASE, true))
                return WBEM_S_DIFFERENT;
    if (qualifiers && !SameClassQualifiers(a, *b, flags))
        return WBEM_S_DIFFERENT;

    CSafeArray leftNames;
    CSafeArray rightNames;
    HRESULT hr = a.GetNames(nullptr, WBEM_FLAG_NONSYSTEM_ONLY, nullptr, leftNames.Put());
    if (SUCCEEDED(hr))
        hr = b->GetNames(nullptr, WBEM_FLAG_NONSYSTEM_ONLY, nullptr, rightNames.Put());
    if (FAILED(hr))
        return hr;
    const CSafeArrayView<BSTR> names(leftNames.Get(), VT_BSTR);
    if (names.Items().size() != CSafeArrayView<BSTR>(rightNames.Get(), VT_BSTR).Items().size())
        return WBEM_S_DIFFERENT;
    const bool values = !(flags & WBEM_FLAG_IGNORE_DEFAULT_VALUES) || !IsClass(a);
    for (const BSTR name : names.Items())
        if (!SameProperty(a, *b, name, flags, values) ||
            (qualifiers && !SamePropertyQualifiers(a, *b, name, flags)))
            return WBEM_S_DIFFERENT;
    return WBEM_S_SAME;
}
} // namespace standin
