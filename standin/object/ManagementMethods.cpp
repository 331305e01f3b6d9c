// The methods of a class as its objects show them. The management service shows them of class objects only;
// here an instance has them as well, because the scripting objects of the development platform ask it, where
// the management service's own fetch the class first.
#include "standin/object/ManagementObject.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"

namespace standin
{
namespace
{
// Signatures are handed out as copies; one that the method has not got is a null pointer.
void HandOut(const CMethodDefinition& method, IWbemClassObject** in, IWbemClassObject** out)
{
    ComPtr<IWbemClassObject> inCopy;
    ComPtr<IWbemClassObject> outCopy;
    if (in && method.In)
        inCopy = MakeClassObject(method.In);
    if (out && method.Out)
        outCopy = MakeClassObject(method.Out);
    if (in)
        *in = inCopy.Detach();
    if (out)
        *out = outCopy.Detach();
}
} // namespace

STDMETHODIMP CManagementObject::GetMethod(LPCWSTR name, LONG flags, IWbemClassObject** in,
                                          IWbemClassObject** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (in)
                *in = nullptr;
            if (out)
                *out = nullptr;
            if (!name || flags != 0)
                return wmi::InvalidParameter;
            const ClassDefinition definition = Definition();
            const CMethodDefinition* method = definition->FindMethod(name);
            if (!method)
                return wmi::NotFound;
            HandOut(*method, in, out);
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::BeginMethodEnumeration(LONG flags)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags != 0 && flags != WBEM_FLAG_LOCAL_ONLY && flags != WBEM_FLAG_PROPAGATED_ONLY)
                return wmi::InvalidParameter;
            const CExclusive lock(m_lock);
            auto enumeration = std::make_unique<CEnumeration>();
            enumeration->Definition = m_definition;
            const auto& methods = m_definition->Methods();
            for (size_t i = 0; i < methods.size(); ++i)
                if (flags == 0 || methods[i].Local == (flags == WBEM_FLAG_LOCAL_ONLY))
                    enumeration->Items.push_back(static_cast<uint16_t>(i));
            m_methods = std::move(enumeration);
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::NextMethod(LONG flags, BSTR* name, IWbemClassObject** in,
                                           IWbemClassObject** out)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags != 0)
                return wmi::InvalidParameter;
            const CExclusive lock(m_lock);
            if (!m_methods)
                return static_cast<HRESULT>(WBEM_E_UNEXPECTED);
            if (m_methods->Next == m_methods->Items.size())
                return WBEM_S_NO_MORE_DATA;
            const CMethodDefinition& method =
                m_methods->Definition->Methods()[m_methods->Items[m_methods->Next]];
            CBstr copy(method.Name);
            HandOut(method, in, out);
            if (name)
                *name = copy.Detach();
            ++m_methods->Next;
            return S_OK;
        });
}

STDMETHODIMP CManagementObject::EndMethodEnumeration()
{
    const CExclusive lock(m_lock);
    m_methods.reset();
    return S_OK;
}

STDMETHODIMP CManagementObject::GetMethodOrigin(LPCWSTR name, BSTR* className)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!name || !className)
                return wmi::InvalidParameter;
            const ClassDefinition definition = Definition();
            const CMethodDefinition* method = definition->FindMethod(name);
            if (!method)
                return wmi::NotFound;
            *className = CBstr(method->Origin).Detach();
            return S_OK;
        });
}
} // namespace standin
