// What a provider put into the instances of one enumeration, and the bare minimum that delivers the same.
#pragma once

#include "Common/src/com/Variant.h"
#include "bench/InProcessProvider.h"

#include <string>
#include <vector>

struct CRecordedPut
{
    std::wstring Name;
    CVariant Value;
};
using CRecordedInstance = std::vector<CRecordedPut>;

// The puts of every instance of a class, in their order.
std::vector<CRecordedInstance> RecordInstances(CInProcessProvider& provider, const wchar_t* className);

// Spawns each instance, makes the same puts with values that are ready, and indicates it: one by one, as the
// provider does.
void DeliverBare(IWbemClassObject& definition, std::vector<CRecordedInstance>& instances,
                 IWbemObjectSink& sink);
