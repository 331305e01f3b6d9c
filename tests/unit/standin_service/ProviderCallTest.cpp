// When a provider is told that its call has been taken back.
#include "standin/service/ProviderCall.h"
#include "tests/unit/standin_service/FakeProvider.h"

#include <gtest/gtest.h>
#include <thread>

namespace
{
using namespace standin;
using Notes = std::vector<std::string>;

class ProviderCall : public testing::Test
{
  protected:
    // `start` is given what makes the call arrive.
    HRESULT Call(CRequest& request, const std::function<HRESULT(const std::function<HRESULT()>&)>& start)
    {
        const auto consume = [](IWbemClassObject*) { return wmi::NoError; };
        return CallProvider(
                   m_pool, L"root\\cimv2", {}, request, consume,
                   [&](IWbemServices& provider, IWbemObjectSink* sink)
                   { return start([&] { return provider.GetObjectAsync(nullptr, 0, nullptr, sink); }); })
            .Result;
    }

    const ComPtr<CFakeProvider> m_fake = MakeCom<CFakeProvider>();
    int m_loads = 0;
    CProviderPool m_pool{LoaderOf(m_fake, m_loads)};
};

TEST_F(ProviderCall, IsNotMadeOnceTheRequestHasBeenCancelled)
{
    CRequest request(0, nullptr);
    request.Cancel();
    EXPECT_EQ(Call(request, [](const auto& arrive) { return arrive(); }), wmi::CallCancelled);
    EXPECT_EQ(m_fake->Notes(), Notes());
}

// Between the two the provider does not know the call yet.
TEST_F(ProviderCall, ThatIsOnItsWayIsCancelledAfterItHasArrived)
{
    CRequest request(0, nullptr, INFINITE);
    std::thread client;
    EXPECT_EQ(Call(request,
                   [&](const auto& arrive)
                   {
                       client = std::thread([&] { request.Cancel(); });
                       WaitForSingleObject(request.Cancelled(), INFINITE);
                       // Time enough to be told too early.
                       EXPECT_EQ(WaitForSingleObject(m_fake->Told.Get(), 100), DWORD{WAIT_TIMEOUT});
                       return arrive();
                   }),
              wmi::CallCancelled);
    client.join();
    EXPECT_EQ(m_fake->Notes(), (Notes{"called", "cancelled"}));
}

TEST_F(ProviderCall, ThatLastsIsCancelledMeanwhileAndOnce)
{
    CRequest request(0, nullptr, 0);
    EXPECT_EQ(Call(request,
                   [&](const auto& arrive)
                   {
                       const HRESULT hr = arrive();
                       request.Cancel();
                       EXPECT_EQ(WaitForSingleObject(m_fake->Told.Get(), 0), DWORD{WAIT_OBJECT_0});
                       return hr;
                   }),
              wmi::CallCancelled);
    EXPECT_EQ(m_fake->Notes(), (Notes{"called", "cancelled"}));
}

TEST_F(ProviderCall, ThatWaitsForItsStatusIsCancelled)
{
    CRequest request(0, nullptr, INFINITE);
    std::thread client;
    EXPECT_EQ(Call(request,
                   [&](const auto& arrive)
                   {
                       const HRESULT hr = arrive();
                       client = std::thread([&] { request.Cancel(); });
                       return hr;
                   }),
              wmi::CallCancelled);
    client.join();
    EXPECT_EQ(m_fake->Notes(), (Notes{"called", "cancelled"}));
}

TEST_F(ProviderCall, ThatFailsIsNotCancelled)
{
    CRequest request(0, nullptr, INFINITE);
    std::thread client;
    EXPECT_EQ(Call(request,
                   [&](const auto&)
                   {
                       client = std::thread([&] { request.Cancel(); });
                       WaitForSingleObject(request.Cancelled(), INFINITE);
                       return wmi::AccessDenied;
                   }),
              wmi::AccessDenied);
    client.join();
    EXPECT_EQ(m_fake->Notes(), Notes());
}
} // namespace
