// A client's call whose service is the test itself, at the other end of a pipe in this process.
#include "standin/locator/Enumerator.h"
#include "tests/unit/standin_object/SampleClass.h"
#include "tests/unit/standin_pipe/PipeEnds.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace
{
using namespace standin;

constexpr HRESULT kServiceFailed = HRESULT_FROM_WIN32(RPC_S_CALL_FAILED);

class Call : public testing::Test
{
  protected:
    void SetUp() override
    {
        CPipeEnds ends = MakePipe();
        ASSERT_TRUE(ends.Client);
        m_service = std::move(ends.Server);
        m_call = std::make_shared<CCall>(std::move(ends.Client), CCallMessage());
        std::vector<BYTE> message;
        ASSERT_EQ(m_service->Receive(message, INFINITE), CPipe::Received::Frame);
    }

    void Answer(CAnswer answer) { EXPECT_TRUE(m_service->Send(Encode(answer))); }
    void AnswerWithObject() { Answer(sample::EmptyClass()); }

    std::unique_ptr<CPipe> m_service;
    std::shared_ptr<CCall> m_call;
};

TEST_F(Call, WaitsForAsMuchAsItIsAskedFor)
{
    EXPECT_FALSE(m_call->Wait(1, 0));
    AnswerWithObject();
    EXPECT_TRUE(m_call->Wait(1, kForever));
    EXPECT_EQ(m_call->Count(), 1u);
    EXPECT_FALSE(m_call->Wait(2, 0));
    EXPECT_FALSE(m_call->WaitForEnd(0));
    EXPECT_FALSE(m_call->HasEnded());
    Answer(COutcome(static_cast<HRESULT>(WBEM_E_NOT_FOUND)));
    EXPECT_TRUE(m_call->Wait(2, kForever));
    EXPECT_TRUE(m_call->HasEnded());
    EXPECT_EQ(m_call->Count(), 1u);
    EXPECT_EQ(m_call->Result(), static_cast<HRESULT>(WBEM_E_NOT_FOUND));
}

TEST_F(Call, FailsWhereTheServiceEndsBeforeIt)
{
    AnswerWithObject();
    m_service.reset();
    EXPECT_TRUE(m_call->WaitForEnd(kForever));
    EXPECT_EQ(m_call->Count(), 1u);
    EXPECT_EQ(m_call->Result(), kServiceFailed);
}

TEST_F(Call, FailsWhereAnAnswerCannotBeRead)
{
    EXPECT_TRUE(m_service->Send(std::vector<BYTE>{1}));
    EXPECT_TRUE(m_call->WaitForEnd(kForever));
    EXPECT_EQ(m_call->Result(), kServiceFailed);
}

TEST_F(Call, FailsWhereAnAnswerIsTooLong)
{
    CPipeEnds ends = MakePipe(kLargestFrame + 1);
    ASSERT_TRUE(ends.Client);
    CCall call(std::move(ends.Client), CCallMessage());
    EXPECT_TRUE(call.WaitForEnd(kForever));
    EXPECT_EQ(call.Result(), static_cast<HRESULT>(WBEM_E_QUOTA_VIOLATION));
}

TEST_F(Call, SendsNothingThatIsTooLong)
{
    CPipeEnds ends = MakePipe();
    ASSERT_TRUE(ends.Client);
    CCallMessage message;
    message.Subject.assign(kLargestFrame / sizeof(wchar_t), L'x');
    CCall call(std::move(ends.Client), message);
    EXPECT_TRUE(call.HasEnded());
    EXPECT_EQ(call.Result(), static_cast<HRESULT>(WBEM_E_QUOTA_VIOLATION));
    std::vector<BYTE> frame;
    EXPECT_EQ(ends.Server->Receive(frame, INFINITE), CPipe::Received::TheEnd);
}

TEST_F(Call, IsTakenBackByItsEnd)
{
    m_call.reset();
    std::vector<BYTE> frame;
    EXPECT_EQ(m_service->Receive(frame, INFINITE), CPipe::Received::TheEnd);
}

TEST_F(Call, KeepsNobodyWhoWaitsForLittle)
{
    std::thread patient([&] { EXPECT_TRUE(m_call->WaitForEnd(kForever)); });
    for (size_t count = 1; count <= 100; ++count)
    {
        m_call->Wait(count, 0);
        AnswerWithObject();
        EXPECT_TRUE(m_call->Wait(count, kForever));
        EXPECT_EQ(m_call->Count(), count);
    }
    Answer(COutcome());
    patient.join();
}

TEST_F(Call, GivesEachObjectToOneReaderOfAnEnumerator)
{
    constexpr int kObjects = 500;
    ComPtr<CEnumerator> objects = MakeCom<CEnumerator>(m_call, true);
    std::atomic<int> read{0};
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 4; ++reader)
        readers.emplace_back(
            [&]
            {
                for (;;)
                {
                    ComPtr<IWbemClassObject> object;
                    ULONG returned = 0;
                    const HRESULT hr = objects->Next(kForever, 1, object.Put(), &returned);
                    EXPECT_EQ(returned, object ? 1u : 0u);
                    if (hr != S_OK)
                    {
                        EXPECT_EQ(hr, S_FALSE);
                        return;
                    }
                    ++read;
                }
            });
    for (int i = 0; i < kObjects; ++i)
        AnswerWithObject();
    Answer(COutcome());
    for (std::thread& reader : readers)
        reader.join();
    EXPECT_EQ(read, kObjects);
}
} // namespace
