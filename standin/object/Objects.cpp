#include "standin/object/Objects.h"

#include "Common/src/com/SafeArray.h"
#include "standin/object/Context.h"
#include "standin/object/ManagementObject.h"

namespace standin
{
ComPtr<IWbemClassObject> MakeClassObject(ClassDefinition definition)
{
    return MakeCom<CManagementObject>(CObjectState(std::move(definition), true));
}

ComPtr<IWbemClassObject> MakeInstance(const ClassDefinition& definition)
{
    return MakeCom<CManagementObject>(CObjectState(definition->ForInstances(), false));
}

ComPtr<IWbemContext> MakeContext()
{
    return MakeCom<CContext>();
}

HRESULT Decorate(IWbemClassObject* object, const wchar_t* server, const wchar_t* nameSpace) noexcept
{
    ComPtr<IStandinObject> ours;
    if (!object)
        return E_POINTER;
    const HRESULT hr = object->QueryInterface(__uuidof(IStandinObject), ours.PutVoid());
    return FAILED(hr) ? hr : ours->Decorate(server, nameSpace);
}

HRESULT CopyProperties(IWbemClassObject* source, IWbemClassObject* target) noexcept
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!source || !target)
                return wmi::InvalidParameter;
            CSafeArray nameArray;
            HRESULT hr = source->GetNames(nullptr, WBEM_FLAG_LOCAL_ONLY, nullptr, nameArray.Put());
            const CSafeArrayView<BSTR> names(nameArray.Get(), VT_BSTR);
            for (size_t i = 0; SUCCEEDED(hr) && i < names.Items().size(); ++i)
            {
                CVariant value;
                hr = source->Get(names.Items()[i], 0, &value, nullptr, nullptr);
                if (SUCCEEDED(hr))
                    hr = target->Put(names.Items()[i], 0, &value, CIM_EMPTY);
            }
            return hr;
        });
}
} // namespace standin
