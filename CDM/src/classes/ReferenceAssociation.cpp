#include "CDM/src/classes/ReferenceAssociation.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/classes/InstanceSender.h"
#include "CDM/src/engine/DiagMgr.h"
#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/naming/DiagKeys.h"
#include "Common/src/com/WmiStatus.h"

namespace
{
bool EqualNoCase(const CBstr& a, const CBstr& b) noexcept
{
    return CompareStringOrdinal(a.Text(), static_cast<int>(a.Length()), b.Text(),
                                static_cast<int>(b.Length()), TRUE) == CSTR_EQUAL;
}
} // namespace

HRESULT CReferenceAssociation::SendInstance(CInstanceSender& sender, std::wstring_view identifier) const
{
    HRESULT hr = sender.Spawn();
    if (FAILED(hr))
        return hr;

    CBstr adapterKey;
    if (m_row.adapterKeyFailed)
    {
        adapterKey = TryMakeText([&] { return ParseForAdapterKey(identifier); });
        if (!adapterKey)
            return TraceFailure(wmi::OutOfMemory, m_row.adapterKeyFailed);
    }
    for (const CReferenceRow& row : m_row.references)
    {
        const std::wstring_view key = row.madeFrom == MadeFrom::AdapterKey ? adapterKey.View() : identifier;
        const CBstr reference = TryMakeText([&] { return row.create(key, sender.Context().CimKeyMode()); });
        if (!reference)
            return TraceFailure(wmi::OutOfMemory, row.createFailed);
        // A reference that the schema does not take leaves the instance without it.
        (void)sender.Instance().SetProperty(row.property, reference);
    }
    if (m_row.putOthers)
        (void)m_row.putOthers(sender.Instance());
    return sender.Indicate();
}

HRESULT CReferenceAssociation::CheckReference(const CReferenceCheck& check, const CParsedObjectPath& path,
                                              CBstr& key) const
{
    const CBstr reference = ReadKey(path, check.property, KeyForm::Named);
    CParsedObjectPath parsed;
    if (!reference || FAILED(ParseObjectPath(reference.Text(), parsed)))
        return TraceFailure(wmi::Failed, check.parseFailed);
    key = ReadKey(parsed, check.key, check.keyForm);
    if (!key)
    {
        if (check.keyMissing)
            ZebDebug().Write(check.keyMissing);
        return wmi::NotFound;
    }
    if (check.exists && !(DiagMgr().*check.exists)(key.Get()))
        return wmi::NotFound;
    return S_OK;
}

HRESULT CReferenceAssociation::GetObjectAsync(const CParsedObjectPath& path, CWomContext& context,
                                              ComPtr<IWbemObjectSink> sink)
{
    const CZebTrace trace(m_row.getObject);
    CBstr identifier;
    HRESULT hr = CheckReference(m_row.identifying, path, identifier);
    if (FAILED(hr))
        return hr;
    CBstr otherKey;
    hr = CheckReference(m_row.other, path, otherKey);
    if (FAILED(hr))
        return hr;
    if (m_row.other.adapterKeyFailed)
    {
        const CBstr adapterKey = TryMakeText([&] { return ParseForAdapterKey(identifier.View()); });
        if (!adapterKey)
            return TraceFailure(wmi::OutOfMemory, m_row.other.adapterKeyFailed);
        if (!EqualNoCase(adapterKey, otherKey))
            return TraceFailure(wmi::NotFound, m_row.other.otherAdapter);
    }
    CInstanceSender sender(context, GetClassName(), std::move(sink));
    hr = SendInstance(sender, identifier.View());
    Failed(hr, m_row.getObjectSendFailed);
    return hr;
}

HRESULT CReferenceAssociation::CreateInstanceEnumAsync(CWomContext& context, ComPtr<IWbemObjectSink> sink)
{
    const CZebTrace trace(m_row.createInstanceEnum);
    CInstanceSender sender(context, GetClassName(), std::move(sink));
    CVormArray<BSTR> identifiers;
    HRESULT hr = (DiagMgr().*m_row.enumerate)(identifiers);
    if (Failed(hr, m_row.enumFailed))
        return hr;
    for (const BSTR identifier : identifiers.View())
    {
        hr = SendInstance(sender, std::wstring_view(identifier, SysStringLen(identifier)));
        if (FAILED(hr))
            return hr;
    }
    return hr;
}
