#include "CDM/src/classes/AdapterReference.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/classes/ReadKey.h"
#include "CDM/src/engine/naming/References.h"
#include "Common/src/com/WmiStatus.h"

// How many keys a reference to an adapter carries under the full CIM key set.
constexpr size_t kFullKeySet = 4;

HRESULT CheckAdapterReference(const CAdapterReferenceTexts& texts, const CBstr& systemElement,
                              const CBstr& testName, bool cimKeyMode)
{
    CParsedObjectPath reference;
    if (FAILED(ParseObjectPath(systemElement.Text(), reference)))
    {
        ZebDebug().Write(texts.parseFailed);
        return wmi::Failed;
    }
    if (!cimKeyMode && reference.Keys.size() < kFullKeySet)
    {
        ZebDebug().Write(texts.tooFewKeys);
        return wmi::InvalidParameter;
    }
    const CBstr deviceId = ReadKey(reference, L"DeviceID", KeyForm::NamedOrSingle);
    if (!deviceId)
    {
        ZebDebug().Write(texts.noDeviceId);
        return wmi::InvalidParameter;
    }
    const CBstr adapterKey = ParseForAdapterKey(testName.View());
    if (!adapterKey || adapterKey.View() != deviceId.View())
    {
        ZebDebug().Write(texts.otherAdapter);
        return wmi::Failed;
    }
    return S_OK;
}
