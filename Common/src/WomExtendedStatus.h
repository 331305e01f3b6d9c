// How a failure reaches the client: as an instance of Tolva_ExtendedStatus.
#pragma once

#include "Common/src/WomProviderException.h"
#include "Common/src/com/ComPtr.h"

#include <wbemcli.h>

// Ends the request on the sink with the extended status. If that instance cannot be made, nothing is sent.
// The sink's reference is released in every case.
void ReportToSink(const CWomProviderException& exception, ComPtr<IWbemObjectSink> sink) noexcept;
