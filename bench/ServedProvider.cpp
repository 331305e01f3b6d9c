#include "bench/ServedProvider.h"

#include "CDM/src/engine/naming/DiagKeys.h"
#include "CDM/src/server/ProviderFactory.h"
#include "Common/src/com/Text.h"
#include "bench/BenchAgent.h"
#include "bench/InitSink.h"
#include "bench/Must.h"
#include "standin/object/Objects.h"
#include "tests/system/support/Process.h"

#include <psapi.h>

namespace
{
// The script of an agent like the benchmark's own.
std::string Script(size_t tests)
{
    std::string script = "{ \"Adapters\": [";
    for (size_t i = 0; i < tests / CBenchAgent::kTestsPerAdapter; ++i)
    {
        script += (i == 0 ? "" : ",") + ("{ \"Key\": \"" + NarrowText(CBenchAgent::AdapterKey(i))) +
                  "\", \"Tests\": [";
        for (ULONG id = 1; id <= CBenchAgent::kTestsPerAdapter; ++id)
            script += (id == 1 ? "" : ",") + ("{ \"TestID\": " + std::to_string(id)) +
                      (id == CBenchAgent::kFailingTest ? ", \"Outcome\": \"0x80040341\" }" : " }");
        script += "] }";
    }
    return script + "] }";
}

ComPtr<IWbemServices> Activate(const DressClass& undressed, IWbemContext* context)
{
    ComPtr<IWbemProviderInit> init;
    Must(CoCreateInstance(kClsidProviderImp, nullptr, CLSCTX_LOCAL_SERVER, __uuidof(IWbemProviderInit),
                          init.PutVoid()),
         "starting Drevok.EXE");
    const ComPtr<CInitSink> sink = MakeCom<CInitSink>();
    std::wstring nameSpace = L"root\\cimv2";
    Must(init->Initialize(nullptr, 0, nameSpace.data(), nullptr, MakeNamespace(undressed).Get(), context,
                          sink.Get()),
         "Initialize");
    Must(sink->Status(), "the provider's initialisation");
    ComPtr<IWbemServices> services;
    Must(init.As(services), "asking for IWbemServices");
    return services;
}
} // namespace

CServedProvider::CServedProvider(size_t tests) : m_context(standin::MakeContext())
{
    m_machine.SetScript(Script(tests));
    m_machine.SetNumber(L"ZebDiag", L"DebugLevel", 0);
    m_machine.SetText(L"ZebDiag", L"InstalledDir", m_machine.Folder() + L"none\\");
    m_services = Activate(m_undressed, m_context.Get());
    const std::vector<DWORD> processes = ProcessesOf(L"Drevok.EXE");
    Must(processes.size() == 1, "finding the provider's process");
    m_process = processes.front();
    for (CRunRequest& request : RunRequests(tests))
        if (!IsSenderResponder(request.TestID))
            m_runs.push_back(std::move(request));
}

size_t CServedProvider::PrivateBytes() const
{
    const CHandle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, m_process));
    // What is committed for the process alone; not every system fills the member that is named so.
    PROCESS_MEMORY_COUNTERS memory = {};
    Must(process && GetProcessMemoryInfo(process.Get(), &memory, sizeof(memory)),
         "reading the provider's memory");
    return memory.PagefileUsage;
}
