#include "bench/InProcessProvider.h"

#include "Common/src/WomClassCache.h"
#include "bench/InitSink.h"
#include "bench/Must.h"
#include "bench/RunRequest.h"
#include "standin/object/Objects.h"

namespace
{
const CHostPaths kPaths = {"C:\\zeb-bench-has-no-such-folder\\",
                           L"C:\\zeb-bench-has-no-such-folder\\ZebDiag.bin"};
} // namespace

CInProcessProvider::CInProcessProvider(size_t tests)
    : m_tests(tests), m_agent(MakeCom<CBenchAgent>(tests)), m_registration(m_agent.Get()),
      m_context(standin::MakeContext()), m_provider(MakeCom<CProviderImp>(kPaths, m_lock))
{
    const ComPtr<CInitSink> sink = MakeCom<CInitSink>();
    Must(m_provider->Initialize(nullptr, 0, nullptr, nullptr, MakeNamespace(m_dress).Get(), m_context.Get(),
                                sink.Get()),
         "Initialize");
    Must(sink->Status(), "the provider's initialisation");
}

void CInProcessProvider::Dress(DressClass dress)
{
    m_dress = std::move(dress);
    WomClassCache::Drop();
}

void CInProcessProvider::RunAll()
{
    const ComPtr<CCountingSink> sink = MakeCom<CCountingSink>();
    for (const CRunRequest& request : RunRequests(m_tests))
        request.Send(*m_provider, m_context.Get(), *sink.Get());
    Must(sink->TakeCount() == static_cast<long>(m_tests), "running every test");
}

void CInProcessProvider::Enumerate(const wchar_t* className, IWbemObjectSink& sink)
{
    const CBstr name(className);
    Must(m_provider->CreateInstanceEnumAsync(name.Get(), 0, m_context.Get(), &sink), "an enumeration");
}
