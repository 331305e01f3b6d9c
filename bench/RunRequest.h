// A request to run one test, ready to be sent to a provider any number of times.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"

#include <vector>
#include <wbemcli.h>

struct CRunRequest
{
    CBstr AdapterKey;
    ULONG TestID;
    CBstr Path; // of the test
    ComPtr<IWbemClassObject> InParameters;

    // The status of the call is the caller's to look at, in the sink.
    void Send(IWbemServices& provider, IWbemContext* context, IWbemObjectSink& sink) const;
};

// One request for each test of the benchmark's agent.
std::vector<CRunRequest> RunRequests(size_t tests);
