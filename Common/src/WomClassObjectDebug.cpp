// The dump of a management object into the trace.
#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/ZebValue.h"
#include "Common/src/WomClassObject.h"
#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"

#include <algorithm>

namespace
{
void SortNames(SAFEARRAY* names)
{
    const auto text = [](BSTR name) { return std::wstring_view(name, SysStringLen(name)); };
    const CSafeArrayView<BSTR> view(names, VT_BSTR);
    std::sort(view.Items().begin(), view.Items().end(), [&](BSTR a, BSTR b) { return text(a) < text(b); });
}
} // namespace

void CWomClassObject::DebugOutput()
{
    if (ZebDebug().Level() != 2)
        return;
    CZebTrace trace("CWomClassObject::DebugOutput");
    if (!m_object)
    {
        ZebDebug().Write("<null class object>");
        return;
    }
    DumpProperties();
}

HRESULT CWomClassObject::RaiseDump(const char* step, HRESULT hr, long line) const
{
    return Raise(0x8004090E, L"CWomClassObject::DebugOutput", hr, line, step);
}

// In the order of their names, without those that say where the object came from. After a failure, the lines
// of the properties before it stay in the trace.
HRESULT CWomClassObject::DumpProperties() const
{
    CSafeArray array;
    HRESULT hr = m_object->GetNames(nullptr, WBEM_FLAG_ALWAYS, nullptr, array.Put());
    Reimpersonate();
    if (FAILED(hr))
        return RaiseDump("Couldn't GetNames", hr, 48);
    SortNames(array.Get());
    LONG lower = 0;
    if (hr = SafeArrayGetLBound(array.Get(), 1, &lower); FAILED(hr))
        return RaiseDump("Couldn't get safe array lbound", hr, 52);
    LONG upper = -1;
    if (hr = SafeArrayGetUBound(array.Get(), 1, &upper); FAILED(hr))
        return RaiseDump("Couldn't get safe array ubound", hr, 55);
    for (LONG index = lower; index <= upper; ++index)
    {
        CBstr name;
        if (hr = SafeArrayGetElement(array.Get(), &index, name.Put()); FAILED(hr))
            return RaiseDump("Couldn't get safe array element", hr, 60);
        if (name.View() == L"__SERVER" || name.View() == L"__PATH")
            continue;
        if (hr = DumpProperty(name); hr != S_OK)
            return hr;
    }
    return S_OK;
}

HRESULT CWomClassObject::DumpProperty(const CBstr& name) const
{
    bool isKey = false;
    CVariant typeName;
    ComPtr<IWbemQualifierSet> qualifiers;
    HRESULT hr = m_object->GetPropertyQualifierSet(name.Get(), qualifiers.Put());
    Reimpersonate();
    // The system's own properties have no qualifiers.
    if (FAILED(hr) && hr != static_cast<HRESULT>(WBEM_E_SYSTEM_PROPERTY))
        return RaiseDump("Could not GetPropertyQualifierSet", hr, 78);
    if (SUCCEEDED(hr))
    {
        CVariant key;
        hr = qualifiers->Get(L"key", 0, key.Put(), nullptr);
        Reimpersonate();
        if (FAILED(hr) && hr != wmi::NotFound)
            return RaiseDump("Could not get key qualifier", hr, 85);
        isKey = key.vt == VT_BOOL && key.boolVal;
        hr = qualifiers->Get(L"CIMTYPE", 0, typeName.Put(), nullptr);
        Reimpersonate();
        if (FAILED(hr))
            return RaiseDump("Could not get CIMTYPE qualifier", hr, 90);
    }

    CVariant value;
    CIMTYPE type = CIM_EMPTY;
    hr = m_object->Get(name.Get(), 0, value.Put(), &type, nullptr);
    Reimpersonate();
    if (FAILED(hr))
        return RaiseDump("Couldn't get Property Value", hr, 98);

    const std::string label = (isKey ? "[key] " : "") + NarrowText(name.View()) + " = ";
    if (value.vt != VT_UNKNOWN && value.vt != (VT_ARRAY | VT_UNKNOWN))
    {
        ZebDebug().Write("%s", (label + ZebValueToString(value, type)).c_str());
        return S_OK;
    }
    ZebDebug().Write("%s", (label + NarrowText(typeName.vt == VT_BSTR ? typeName.bstrVal : L"")).c_str());
    if (value.vt == VT_UNKNOWN)
        DumpEmbedded(value.punkVal);
    else
        for (IUnknown* const object : CSafeArrayView<IUnknown*>(value.parray, VT_UNKNOWN).Items())
            DumpEmbedded(object);
    return S_OK;
}

void CWomClassObject::DumpEmbedded(IUnknown* object) const
{
    ComPtr<IWbemClassObject> embedded;
    if (object)
        object->QueryInterface(__uuidof(IWbemClassObject), embedded.PutVoid());
    CWomClassObject wrapper(m_context);
    wrapper.SetThrowing(m_throwing);
    wrapper.Wrap(embedded.Get());
    wrapper.DebugOutput();
}
