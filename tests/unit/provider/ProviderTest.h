// What the tests of the provider object share: the object in this process with a probe for a handler, and the
// four requests under one signature.
#pragma once

#include "tests/support/InProcessProvider.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/provider/ProbeHandler.h"

#include <gtest/gtest.h>

// One of the four requests, made on the class that the probe serves.
struct CRequest
{
    const char* name;
    HRESULT (*make)(CProviderImp& provider, IWbemObjectSink* sink, long flags, IWbemContext* context);
};

inline ComPtr<IWbemClassObject> NewTestInstance()
{
    return standin::MakeInstance(ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagTest"));
}

inline constexpr CRequest kRequests[] = {
    {"GetObjectAsync", [](CProviderImp& provider, IWbemObjectSink* sink, long flags, IWbemContext* context)
     { return provider.GetObjectAsync(Bstr(L"Tolva_DiagTest.Name=\"1@A\"").Get(), flags, context, sink); }},
    {"CreateInstanceEnumAsync",
     [](CProviderImp& provider, IWbemObjectSink* sink, long flags, IWbemContext* context)
     { return provider.CreateInstanceEnumAsync(Bstr(L"Tolva_DiagTest").Get(), flags, context, sink); }},
    {"PutInstanceAsync", [](CProviderImp& provider, IWbemObjectSink* sink, long flags, IWbemContext* context)
     { return provider.PutInstanceAsync(NewTestInstance().Get(), flags, context, sink); }},
    {"ExecMethodAsync",
     [](CProviderImp& provider, IWbemObjectSink* sink, long flags, IWbemContext* context)
     {
         return provider.ExecMethodAsync(Bstr(L"Tolva_DiagTest.Name=\"1@A\"").Get(), Bstr(L"RunTest").Get(),
                                         flags, context, nullptr, sink);
     }},
};

class ProviderTest : public testing::Test
{
  protected:
    ProviderTest()
    {
        CProbeHandler::Use(&m_probe);
        m_host.Agent->AddAdapter(L"A", {1});
    }
    ~ProviderTest() override
    {
        m_host.Release();
        CProbeHandler::Use(nullptr);
    }

    // Every operation of the probe does this.
    void ProbeDoes(std::function<HRESULT()> body)
    {
        m_probe.GetObject = [body](auto&&...) { return body(); };
        m_probe.Enumerate = [body](auto&&...) { return body(); };
        m_probe.Put = [body](auto&&...) { return body(); };
        m_probe.Method = [body](auto&&...) { return body(); };
    }
    HRESULT Make(const CRequest& request, long flags = 0, IWbemContext* context = nullptr)
    {
        return request.make(*m_host.Provider, m_sink.Get(), flags, context);
    }
    // The one status that the sink got.
    CFakeSink::CStatus Status() const
    {
        const auto statuses = m_sink->Statuses();
        EXPECT_EQ(statuses.size(), 1u);
        return statuses.empty() ? CFakeSink::CStatus{} : statuses[0];
    }

    CProbeScript m_probe;
    CInProcessProvider m_host{kProbeRows};
    ComPtr<CFakeSink> m_sink = MakeCom<CFakeSink>();
};
