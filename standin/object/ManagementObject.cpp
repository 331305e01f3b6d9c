#include "standin/object/ManagementObject.h"

#include "Common/src/com/SafeArray.h"
#include "standin/object/CimType.h"
#include "standin/object/StandinIds.h"
#include "standin/object/StateBytes.h"
#include "standin/object/Strictness.h"

#include <algorithm>

namespace standin
{
namespace
{
constexpr HRESULT kIllegal = static_cast<HRESULT>(WBEM_E_ILLEGAL_OPERATION);

// Wine's scripting objects ask an instance for methods, where the management service's own fetch the class,
// and give numbers in types that WMI does not have.
bool HasWinesScripting()
{
    return GetModuleHandleW(L"wbemdisp.dll") != nullptr;
}

// Small numbers travel in the types that scripts have, 64-bit ones as texts.
bool HasType(const VARIANT& value)
{
    constexpr VARTYPE none[] = {VT_I1, VT_UI2, VT_UI4, VT_INT, VT_UINT, VT_I8, VT_UI8};
    return std::ranges::find(none, value.vt & VT_TYPEMASK) == std::end(none) || HasWinesScripting();
}

// A signature is handed out as an object of its own; one that the method has not got is a null pointer.
void HandOut(const ClassDefinition& signature, IWbemClassObject** out)
{
    if (out)
        *out = signature ? MakeCom<CManagementObject>(CObjectState(signature, true)).Detach() : nullptr;
}
} // namespace

ComPtr<IWbemClassObject> CManagementObject::Decode(std::span<const BYTE> bytes, int nesting)
{
    return MakeCom<CManagementObject>(DecodeState(bytes, nesting, Decode));
}

CManagementObject::CManagementObject(CObjectState state)
    : CByValueObject(kObjectUnmarshaler), m_state(std::move(state))
{
}

STDMETHODIMP CManagementObject::Get(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || flags != 0)
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            return ReadProperty(m_state, name, value, type, flavor);
        });
}

bool CManagementObject::TakesAnyOffset()
{
    std::call_once(m_strictnessRead, [&] { m_isStrict = IsStrict(); });
    return !m_isStrict;
}

STDMETHODIMP CManagementObject::Put(LPCWSTR name, LONG flags, VARIANT* value, CIMTYPE type)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || flags != 0)
                return wmi::InvalidParameter;
            const size_t index = Definition().IndexOf(name);
            if (index == CClassDefinition::npos)
                return IsSystemProperty(name) ? static_cast<HRESULT>(WBEM_E_SYSTEM_PROPERTY) : wmi::NotFound;
            const CIMTYPE own = Definition().Properties()[index].Type;
            if ((type != CIM_EMPTY && type != own) || (value && !HasType(*value)))
                return wmi::TypeMismatch;
            const bool anyOffset = ElementType(own) == CIM_DATETIME && TakesAnyOffset();
            // Without the lock, because the value may be an object, even this one, that is asked for a copy.
            CCimValue stored = CVariant::Null();
            const HRESULT hr = value ? ToCimValue(*value, own, stored, anyOffset) : S_OK;
            if (FAILED(hr))
                return hr;
            const CLockScope lock(m_lock);
            std::swap(m_state.Values[index], stored);
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::GetNames(LPCWSTR, LONG flags, VARIANT*, SAFEARRAY** names)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!names)
                return wmi::InvalidParameter;
            *names = nullptr;
            std::vector<std::wstring> selected;
            const CLockScope lock(m_lock);
            if (const HRESULT hr = SelectNames(m_state, flags, selected); FAILED(hr))
                return hr;
            CSafeArray array(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(selected.size())));
            if (!array)
                return wmi::OutOfMemory;
            {
                const CSafeArrayView<BSTR> items(array.Get(), VT_BSTR);
                for (size_t i = 0; i < selected.size(); ++i)
                    items.Items()[i] = CBstr(std::wstring_view(selected[i])).Detach();
            }
            *names = array.Detach();
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::BeginEnumeration(LONG flags)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            std::vector<std::wstring> names;
            const CLockScope lock(m_lock);
            const HRESULT hr = SelectNames(m_state, flags, names);
            if (FAILED(hr))
                return hr;
            m_names = std::move(names);
            m_next = 0;
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::Next(LONG flags, BSTR* name, VARIANT* value, CIMTYPE* type, LONG* flavor)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags != 0)
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            if (m_next == kNoEnumeration)
                return static_cast<HRESULT>(WBEM_E_UNEXPECTED);
            if (m_next == m_names.size())
                return WBEM_S_NO_MORE_DATA;
            const std::wstring_view current = m_names[m_next];
            CBstr copy(current);
            const HRESULT hr = ReadProperty(m_state, current, value, type, flavor);
            if (FAILED(hr))
                return hr;
            if (name)
                *name = copy.Detach();
            ++m_next;
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::EndEnumeration()
{
    const CLockScope lock(m_lock);
    m_next = kNoEnumeration;
    return S_OK;
}

STDMETHODIMP CManagementObject::GetQualifierSet(IWbemQualifierSet** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!out)
                return wmi::InvalidParameter;
            *out = MakeQualifierSet({m_state.Definition, &Definition().Qualifiers}).Detach();
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::GetPropertyQualifierSet(LPCWSTR property, IWbemQualifierSet** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!property || !out)
                return wmi::InvalidParameter;
            *out = nullptr;
            const CPropertyDefinition* found = Definition().FindProperty(property);
            if (!found)
                return IsSystemProperty(property) ? static_cast<HRESULT>(WBEM_E_SYSTEM_PROPERTY)
                                                  : wmi::NotFound;
            *out = MakeQualifierSet({m_state.Definition, &found->Qualifiers}).Detach();
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::Clone(IWbemClassObject** copy)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!copy)
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            *copy = MakeCom<CManagementObject>(m_state).Detach();
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::SpawnInstance(LONG flags, IWbemClassObject** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!out || flags != 0)
                return wmi::InvalidParameter;
            *out = nullptr;
            if (Definition().Name.empty() || Definition().Qualifiers.IsTrue(L"abstract"))
                return static_cast<HRESULT>(WBEM_E_INCOMPLETE_CLASS);
            *out = MakeCom<CManagementObject>(CObjectState(Definition().ForInstances(), false)).Detach();
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::CompareTo(LONG flags, IWbemClassObject* other)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags != 0 || !other)
                return wmi::InvalidParameter;
            // Of a copy, because the other object has a lock of its own.
            ComPtr<IWbemClassObject> copy;
            std::vector<std::wstring> names;
            const HRESULT hr = Clone(copy.Put());
            if (FAILED(hr))
                return hr;
            SelectNames(m_state, 0, names);
            const auto same = [&](const std::wstring& name)
            {
                CVariant own;
                CVariant others;
                return SUCCEEDED(copy->Get(name.c_str(), 0, &own, nullptr, nullptr)) &&
                       SUCCEEDED(other->Get(name.c_str(), 0, &others, nullptr, nullptr)) &&
                       SameCimValue(own, others);
            };
            return std::ranges::all_of(names, same) ? HRESULT{WBEM_S_SAME} : HRESULT{WBEM_S_DIFFERENT};
        });
}

STDMETHODIMP CManagementObject::GetMethod(LPCWSTR name, LONG flags, IWbemClassObject** in,
                                          IWbemClassObject** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            HandOut(nullptr, in);
            HandOut(nullptr, out);
            if (!name || flags != 0)
                return wmi::InvalidParameter;
            if (!m_state.IsClass && !HasWinesScripting())
                return kIllegal;
            const CMethodDefinition* method = Definition().FindMethod(name);
            if (!method)
                return wmi::NotFound;
            HandOut(method->In, in);
            HandOut(method->Out, out);
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::BeginMethodEnumeration(LONG flags)
{
    if (flags != 0)
        return wmi::InvalidParameter;
    if (!m_state.IsClass && !HasWinesScripting())
        return kIllegal;
    const CLockScope lock(m_lock);
    m_nextMethod = 0;
    return S_OK;
}

STDMETHODIMP CManagementObject::NextMethod(LONG flags, BSTR* name, IWbemClassObject** in,
                                           IWbemClassObject** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags != 0)
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            if (m_nextMethod == kNoEnumeration)
                return static_cast<HRESULT>(WBEM_E_UNEXPECTED);
            if (m_nextMethod == Definition().Methods().size())
                return WBEM_S_NO_MORE_DATA;
            const CMethodDefinition& method = Definition().Methods()[m_nextMethod++];
            if (name)
                *name = CBstr(std::wstring_view(method.Name)).Detach();
            HandOut(method.In, in);
            HandOut(method.Out, out);
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::EndMethodEnumeration()
{
    const CLockScope lock(m_lock);
    m_nextMethod = kNoEnumeration;
    return S_OK;
}

STDMETHODIMP CManagementObject::Decorate(const wchar_t* server, const wchar_t* nameSpace)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            auto decoration = std::make_shared<const CDecoration>(CDecoration{server, nameSpace});
            const CLockScope lock(m_lock);
            m_state.Decoration = std::move(decoration);
            return S_OK;
        });
}

std::vector<BYTE> CManagementObject::Bytes()
{
    const CLockScope lock(m_lock);
    return EncodeState(m_state);
}
} // namespace standin
