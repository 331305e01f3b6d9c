#include "standin/object/Embedded.h"

#include "Common/src/com/ComPtr.h"
#include "Common/src/com/SafeArray.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/object/ManagementObject.h"

namespace standin
{
namespace
{
HRESULT CloneOf(IUnknown* object, IUnknown** copy) noexcept
{
    ComPtr<IWbemClassObject> source;
    if (FAILED(object->QueryInterface(IID_IWbemClassObject, source.PutVoid())))
        return wmi::TypeMismatch;
    ComPtr<IWbemClassObject> clone;
    const HRESULT hr = source->Clone(clone.Put());
    *copy = clone.Detach();
    return hr;
}
} // namespace

HRESULT StoreEmbedded(const VARIANT& given, CVariant& stored)
{
    if ((given.vt != VT_UNKNOWN && given.vt != VT_DISPATCH) || !given.punkVal)
        return wmi::TypeMismatch;
    ComPtr<IStandinObject> ours;
    if (FAILED(given.punkVal->QueryInterface(__uuidof(IStandinObject), ours.PutVoid())))
        return wmi::TypeMismatch;
    stored.Put();
    const HRESULT hr = CloneOf(given.punkVal, &stored.punkVal);
    if (SUCCEEDED(hr))
        stored.vt = VT_UNKNOWN;
    return hr;
}

HRESULT CopyEmbedded(const VARIANT& stored, VARIANT* out) noexcept
{
    if (stored.vt == VT_UNKNOWN)
    {
        const HRESULT hr = CloneOf(stored.punkVal, &out->punkVal);
        if (SUCCEEDED(hr))
            out->vt = VT_UNKNOWN;
        return hr;
    }
    const CSafeArrayView<IUnknown*> source(stored.parray, VT_UNKNOWN);
    CSafeArray copy(SafeArrayCreateVector(VT_UNKNOWN, 0, static_cast<ULONG>(source.Items().size())));
    if (!copy)
        return wmi::OutOfMemory;
    const CSafeArrayView<IUnknown*> target(copy.Get(), VT_UNKNOWN);
    for (size_t i = 0; i < source.Items().size(); ++i)
    {
        const HRESULT hr = CloneOf(source.Items()[i], &target.Items()[i]);
        if (FAILED(hr))
            return hr;
    }
    out->parray = copy.Detach();
    out->vt = VT_ARRAY | VT_UNKNOWN;
    return S_OK;
}

bool SameEmbedded(IUnknown* a, IUnknown* b) noexcept
{
    ComPtr<IWbemClassObject> left;
    ComPtr<IWbemClassObject> right;
    return SUCCEEDED(a->QueryInterface(IID_IWbemClassObject, left.PutVoid())) &&
           SUCCEEDED(b->QueryInterface(IID_IWbemClassObject, right.PutVoid())) &&
           left->CompareTo(0, right.Get()) == WBEM_S_SAME;
}
} // namespace standin
