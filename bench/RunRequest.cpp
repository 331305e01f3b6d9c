#include "bench/RunRequest.h"

#include "CDM/src/engine/naming/DiagKeys.h"
#include "Common/src/com/Variant.h"
#include "bench/BenchAgent.h"
#include "bench/Must.h"
#include "bench/Schema.h"

void CRunRequest::Send(IWbemServices& provider, IWbemContext* context, IWbemObjectSink& sink) const
{
    static const CBstr method(L"RunTest");
    Must(provider.ExecMethodAsync(Path.Get(), method.Get(), 0, context, InParameters.Get(), &sink),
         "RunTest");
}

std::vector<CRunRequest> RunRequests(size_t tests)
{
    ComPtr<IWbemClassObject> signature;
    Must(ClassNamed(L"Tolva_DiagTest")->GetMethod(L"RunTest", 0, signature.Put(), nullptr), "GetMethod");

    std::vector<CRunRequest> requests;
    for (size_t i = 0; i < tests; ++i)
    {
        CRunRequest request;
        request.AdapterKey = CBstr(CBenchAgent::AdapterKey(i / CBenchAgent::kTestsPerAdapter));
        request.TestID = static_cast<ULONG>(i % CBenchAgent::kTestsPerAdapter + 1);
        request.Path =
            CreateTestReference(MakeTestKey(request.TestID, request.AdapterKey.Get()).View(), true);
        CVariant element =
            CVariant::FromBstr(CreateSysElemReference(request.AdapterKey.View(), false).Detach());
        Must(signature->SpawnInstance(0, request.InParameters.Put()), "SpawnInstance");
        Must(request.InParameters->Put(L"SystemElement", 0, &element, 0), "Put");
        requests.push_back(std::move(request));
    }
    return requests;
}
