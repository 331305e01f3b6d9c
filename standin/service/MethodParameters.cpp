#include "standin/service/MethodParameters.h"

#include "Common/src/com/WmiStatus.h"

#include <algorithm>

namespace standin
{
namespace
{
bool IsNull(IWbemClassObject* object, const std::wstring& property)
{
    CVariant value;
    return FAILED(object->Get(property.c_str(), 0, value.Put(), nullptr, nullptr)) || value.vt == VT_NULL;
}
} // namespace

HRESULT CheckInParameters(const CMethodDefinition& method, IWbemClassObject* given,
                          ComPtr<IWbemClassObject>& parameters)
{
    parameters.Reset();
    if (!method.In)
        return wmi::NoError;
    const std::vector<CPropertyDefinition>& declared = method.In->Properties();
    if (!given && !std::all_of(declared.begin(), declared.end(),
                               [](const CPropertyDefinition& parameter)
                               { return parameter.Qualifiers.IsTrue(L"optional"); }))
        return wmi::InvalidMethodParameters;
    ComPtr<IWbemClassObject> checked = MakeInstance(method.In);
    if (given && FAILED(CopyProperties(given, checked.Get())))
        return wmi::InvalidMethodParameters;
    for (const CPropertyDefinition& parameter : declared)
        if (parameter.Qualifiers.IsTrue(L"required") && IsNull(checked.Get(), parameter.Name))
            return wmi::InvalidMethodParameters;
    parameters = std::move(checked);
    return wmi::NoError;
}
} // namespace standin
