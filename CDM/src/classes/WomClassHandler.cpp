#include "CDM/src/classes/WomClassHandler.h"

#include "Common/src/com/Text.h"
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

void CWomClassRouter::AddClass(CWomClassHandler* handler)
{
    m_handlers.emplace(UpperCaseAnsi(handler->GetClassName()), handler);
}

CWomClassHandler* CWomClassRouter::FindClass(const wchar_t* className) const
{
    if (!className)
        return nullptr;
    const auto found = m_handlers.find(UpperCaseAnsi(className));
    return found == m_handlers.end() ? nullptr : found->second;
}
