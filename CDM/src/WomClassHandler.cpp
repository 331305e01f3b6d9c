#include "CDM/src/WomClassHandler.h"

#include "Common/src/com/WmiStatus.h"

HRESULT CWomClassHandler::PutInstanceAsync(CWomClassObject&, CWomContext&, CBstr&, ComPtr<IWbemObjectSink>)
{
    return wmi::NotSupported;
}

HRESULT CWomClassHandler::ExecMethodAsync(const CParsedObjectPath&, const wchar_t*, CWomContext&,
                                          CWomClassObject&, CWomClassObject&, ComPtr<IWbemObjectSink>)
{
    return wmi::NotSupported;
}

HRESULT CWomClassHandler::ExecQueryAsync(const wchar_t*, CWomContext& context, ComPtr<IWbemObjectSink> sink)
{
    return CreateInstanceEnumAsync(context, std::move(sink));
}
