// What the classes that serve records of the diagnostics manager have in common: an instance is fetched by
// the record's key, an enumeration sends every record and ends at the first that cannot be read or sent.
#pragma once

#include "CDM/src/ZebTrace.h"
#include "CDM/src/classes/InstanceSender.h"
#include "CDM/src/engine/DiagMgr.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/InstancePath.h"
#include "Common/src/VormArray.h"
#include "Common/src/com/WmiStatus.h"

// One such class. Differences in spelling between the trace lines are part of them.
template <class Record>
struct CRecordClass
{
    const wchar_t* name;
    const wchar_t* key;
    KeyForm keyForm;
    HRESULT (CDiagMgr::*enumerate)(CVormArray<BSTR>& keys);
    HRESULT (CDiagMgr::*getData)(BSTR key, Record* record);
    HRESULT (*sendInstance)(CInstanceSender& sender, const Record& record);

    const char* getObject;
    const char* getObjectDataFailed;
    const char* getObjectSendFailed;

    const char* createInstanceEnum;
    const char* enumFailed;
    const char* enumDataFailed;
    const char* enumSendFailed = nullptr; // null: no line of its own
};

template <class Record>
HRESULT GetRecordObject(const CRecordClass<Record>& served, CDiagMgr& manager, const CParsedObjectPath& path,
                        CWomContext& context, ComPtr<IWbemObjectSink> sink)
{
    const CZebTrace trace(served.getObject);
    const CBstr key = ReadKey(path, served.key, served.keyForm);
    Record record;
    HRESULT hr = (manager.*served.getData)(key.Get(), &record);
    if (hr == engine::NotFound)
        return wmi::NotFound;
    if (Failed(hr, served.getObjectDataFailed))
        return hr;
    CInstanceSender sender(context, served.name, std::move(sink));
    hr = served.sendInstance(sender, record);
    Failed(hr, served.getObjectSendFailed);
    return hr;
}

template <class Record>
HRESULT EnumerateRecords(const CRecordClass<Record>& served, CDiagMgr& manager, CWomContext& context,
                         ComPtr<IWbemObjectSink> sink)
{
    const CZebTrace trace(served.createInstanceEnum);
    CInstanceSender sender(context, served.name, std::move(sink));
    CVormArray<BSTR> keys;
    HRESULT hr = (manager.*served.enumerate)(keys);
    if (Failed(hr, served.enumFailed))
        return hr;
    for (const BSTR key : keys.View())
    {
        Record record;
        hr = (manager.*served.getData)(key, &record);
        if (Failed(hr, served.enumDataFailed))
            return hr;
        hr = served.sendInstance(sender, record);
        if (served.enumSendFailed ? Failed(hr, served.enumSendFailed) : FAILED(hr))
            return hr;
    }
    return hr;
}
