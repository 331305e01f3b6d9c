// Failures of providers and of clients, and what each side sees of them.
#include "standin/pipe/Messages.h"
#include "standin/pipe/Pipe.h"
#include "tests/support/CaseName.h"
#include "tests/system/standin/StandinFixture.h"
#include "tests/system/standin/TestProviderIds.h"
#include "tests/system/support/Process.h"

namespace
{
constexpr HRESULT kNoService = HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
constexpr wchar_t kProviderImage[] = L"StandinTestProvider.exe";

CHandle NamedEvent(const wchar_t* name)
{
    CHandle event(CreateEventW(nullptr, TRUE, FALSE, name));
    ResetEvent(event.Get());
    return event;
}

class CStandinFailure : public CStandinTest
{
  protected:
    // Those of a service that was killed: nobody is left to let them go.
    static void KillProviders()
    {
        for (const DWORD id : ProcessesOf(kProviderImage))
            KillProcess(id);
    }
    // Calls the method that blocks until the event "Go" is set, and waits until it does.
    ComPtr<IWbemCallResult> CallBlock(const CHandle& blocked) const
    {
        ComPtr<IWbemCallResult> result;
        EXPECT_EQ(WBEM_S_NO_ERROR, m_services->ExecMethod(CBstr(L"StandinTest_Item.Name=\"n1\"").Get(),
                                                          CBstr(L"Block").Get(), WBEM_FLAG_RETURN_IMMEDIATELY,
                                                          nullptr, nullptr, nullptr, result.Put()));
        LONG status = 0;
        while (WaitForSingleObject(blocked.Get(), 100) != WAIT_OBJECT_0)
            if (result->GetCallStatus(0, &status) != WBEM_S_TIMEDOUT)
            {
                ADD_FAILURE() << "the method ended with " << std::hex << status;
                break;
            }
        return result;
    }
};

TEST_F(CStandinFailure, BecomesTheErrorObjectOfTheThread)
{
    ComPtr<IWbemClassObject> item;
    ASSERT_EQ(wmi::Failed, Get(L"StandinTest_Item.Name=\"fails with status\"", item));
    ComPtr<IErrorInfo> info;
    ASSERT_EQ(S_OK, GetErrorInfo(0, info.Put()));
    CBstr description;
    CBstr source;
    ASSERT_EQ(S_OK, info->GetDescription(description.Put()));
    ASSERT_EQ(S_OK, info->GetSource(source.Put()));
    EXPECT_STREQ(L"it was asked to", description.Text());
    EXPECT_STREQ(L"StandinTestProvider", source.Text());
    ComPtr<IWbemClassObject> status;
    ASSERT_EQ(S_OK, info.As(status));
    EXPECT_EQ(L"StandinTest_Error", Text(status.Get(), L"__CLASS"));
    EXPECT_EQ(L"TestProvider", Text(status.Get(), L"File"));
}

TEST_F(CStandinFailure, LeavesNoErrorObjectOfAnEarlierCall)
{
    ComPtr<IWbemClassObject> item;
    ASSERT_EQ(wmi::Failed, Get(L"StandinTest_Item.Name=\"fails with status\"", item));
    ASSERT_EQ(wmi::NotFound, Get(L"StandinTest_Item.Name=\"n9\"", item));
    EXPECT_FALSE(TakeErrorObject());
}

TEST_F(CStandinFailure, BecomesTheErrorObjectOfWhoAsksTheCallResult)
{
    ComPtr<IWbemCallResult> result;
    ASSERT_EQ(WBEM_S_NO_ERROR,
              m_services->GetObject(CBstr(L"StandinTest_Item.Name=\"fails with status\"").Get(),
                                    WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, nullptr, result.Put()));
    ComPtr<IWbemClassObject> item;
    EXPECT_EQ(wmi::Failed, result->GetResultObject(60000, item.Put()));
    EXPECT_TRUE(TakeErrorObject());
}

struct FailureCase
{
    const char* name;
    const wchar_t* path;
    HRESULT result;
};
class CStandinProviderFailure : public CStandinTest, public testing::WithParamInterface<FailureCase>
{
};
TEST_P(CStandinProviderFailure, IsTheResult)
{
    ComPtr<IWbemClassObject> item;
    EXPECT_EQ(GetParam().result, Get(GetParam().path, item));
    EXPECT_EQ(SUCCEEDED(GetParam().result), item.Get() != nullptr);
    // The next one is served as ever.
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item));
}
INSTANTIATE_TEST_SUITE_P(
    Providers, CStandinProviderFailure,
    testing::Values(
        FailureCase{"WithoutStatus", L"StandinTest_Item='fails without status'", wmi::AccessDenied},
        FailureCase{"NoObject", L"StandinTest_Item='says nothing'", wmi::NotFound},
        FailureCase{"Late", L"StandinTest_Item='answers late'", WBEM_S_NO_ERROR},
        FailureCase{"DiesBeforeItsStatus", L"StandinTest_Item='dies later'", wmi::ProviderFailure},
        FailureCase{"InitialisationFails", L"StandinTest_OfBroken='x'", wmi::ProviderLoadFailure},
        FailureCase{"NotRegistered", L"StandinTest_OfAbsent='x'", wmi::ProviderLoadFailure},
        FailureCase{"NotDeclared", L"StandinTest_OfUnknown='x'", wmi::ProviderNotFound}),
    NameOf<FailureCase>);

TEST_F(CStandinFailure, OfADyingProviderEndsTheRequestOnly)
{
    ComPtr<IWbemClassObject> out;
    EXPECT_EQ(wmi::ProviderFailure,
              m_services->ExecMethod(CBstr(L"StandinTest_Item.Name=\"n1\"").Get(), CBstr(L"Die").Get(), 0,
                                     nullptr, nullptr, out.Put(), nullptr));
    ComPtr<IWbemClassObject> item;
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item));
}

TEST_F(CStandinFailure, OfAProviderThatOwesAStatusEndsTheRequest)
{
    const CHandle asked = NamedEvent(kBlockedEvent);
    ComPtr<IWbemCallResult> result;
    ASSERT_EQ(WBEM_S_NO_ERROR,
              m_services->GetObject(CBstr(L"StandinTest_Item.Name=\"never answers\"").Get(),
                                    WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, nullptr, result.Put()));
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(asked.Get(), 60000));
    ComPtr<IWbemClassObject> item;
    ASSERT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item));
    KillProviders();
    LONG status = 0;
    EXPECT_EQ(WBEM_S_NO_ERROR, result->GetCallStatus(60000, &status));
    EXPECT_EQ(wmi::ProviderFailure, status);
}

TEST_F(CStandinFailure, OfAProviderBetweenRequestsGoesUnnoticed)
{
    ComPtr<IWbemClassObject> item;
    ASSERT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item));
    const std::vector<DWORD> before = ProcessesOf(kProviderImage);
    ASSERT_EQ(1u, before.size());
    KillProcess(before[0]);
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n2\"", item));
    const std::vector<DWORD> after = ProcessesOf(kProviderImage);
    ASSERT_EQ(1u, after.size());
    EXPECT_NE(before, after);
}

// The number that a new thread gets. Processes and threads get theirs from one supply.
DWORD NextNumber()
{
    DWORD id = 0;
    const CHandle thread(CreateThread(
        nullptr, 0, [](void*) -> DWORD { return 0; }, nullptr, 0, &id));
    EXPECT_TRUE(thread);
    WaitForSingleObject(thread.Get(), INFINITE);
    return id;
}

// Whether the number is free. Free ones are given in turn, and some 400 of them are kept back.
bool ComesAgain(DWORD number)
{
    for (unsigned i = 0; i < 1500; ++i)
        if (NextNumber() == number)
            return true;
    return false;
}

TEST_F(CStandinFailure, OfAProviderInACallKeepsItsNumberFromComingAgain)
{
    const CHandle blocked = NamedEvent(kBlockedEvent);
    const CHandle go = NamedEvent(kGoEvent);
    const ComPtr<IWbemCallResult> result = CallBlock(blocked);
    const std::vector<DWORD> providers = ProcessesOf(kProviderImage);
    ASSERT_EQ(1u, providers.size());
    KillProviders();
    LONG status = 0;
    EXPECT_EQ(WBEM_S_NO_ERROR, result->GetCallStatus(WBEM_INFINITE, &status));
    EXPECT_EQ(wmi::ProviderFailure, status);
    ComPtr<IWbemClassObject> item;
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item)); // has let go of the dead one
    EXPECT_FALSE(ComesAgain(providers[0]));

    const DWORD other = NextNumber();
    EXPECT_TRUE(ComesAgain(other)) << "though its thread is gone";
}

TEST_F(CStandinFailure, OfTheServiceIsSeenByAWaitingClient)
{
    const CHandle blocked = NamedEvent(kBlockedEvent);
    const CHandle go = NamedEvent(kGoEvent);
    const ComPtr<IWbemCallResult> result = CallBlock(blocked);
    for (const DWORD id : ProcessesOf(L"WmiStandin.exe"))
        KillProcess(id);
    LONG status = 0;
    EXPECT_EQ(WBEM_S_NO_ERROR, result->GetCallStatus(WBEM_INFINITE, &status));
    EXPECT_EQ(HRESULT_FROM_WIN32(RPC_S_CALL_FAILED), status);
    SetEvent(go.Get());
    KillProviders();
}

TEST_F(CStandinFailure, OfTheServiceEndsWithTheNextConnection)
{
    const std::vector<DWORD> before = ProcessesOf(L"WmiStandin.exe");
    ASSERT_EQ(1u, before.size());
    KillProcess(before[0]);
    ComPtr<IWbemClassObject> item;
    KillProviders();
    EXPECT_EQ(kNoService, Get(L"StandinTest_Item.Name=\"n1\"", item));
    // A connection stays with its service, also where there is another one by now.
    ComPtr<IWbemServices> another;
    ASSERT_EQ(WBEM_S_NO_ERROR, Connect(L"root\\cimv2", nullptr, another));
    EXPECT_EQ(kNoService, Get(L"StandinTest_Item.Name=\"n1\"", item));
    m_services = another;
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item));
}

// COM's service forgets every server that runs, and who has met it cannot use the next one.
TEST_F(CStandinFailure, OfTheComServiceGoesUnnoticed)
{
    for (int round = 0; round < 3; ++round)
    {
        ComPtr<IWbemClassObject> item;
        ASSERT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item));
        const std::vector<DWORD> service = ProcessesOf(L"WmiStandin.exe");
        KillServers({kProviderImage});
        EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n2\"", item));
        ComPtr<IWbemServices> another;
        EXPECT_EQ(WBEM_S_NO_ERROR, Connect(L"root\\cimv2", nullptr, another));
        EXPECT_EQ(service, ProcessesOf(L"WmiStandin.exe"));
    }
}

TEST_F(CStandinFailure, OfTheClientCancelsAMethodThatIsStillRunning)
{
    const CHandle blocked = NamedEvent(kBlockedEvent);
    const CHandle go = NamedEvent(kGoEvent);
    const CHandle cancelled = NamedEvent(kCancelledEvent);
    CallBlock(blocked); // and drops the result
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(cancelled.Get(), 60000));
    // Others do not wait for it.
    ComPtr<IWbemClassObject> item;
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item));
    SetEvent(go.Get());
}

TEST_F(CStandinFailure, CancelsWhatADroppedEnumeratorAskedFor)
{
    const CHandle stopped = NamedEvent(kStoppedEvent);
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR, Enumerate(L"StandinTest_Endless", WBEM_FLAG_RETURN_IMMEDIATELY, objects));
    ComPtr<IWbemClassObject> first;
    ULONG returned = 0;
    ASSERT_EQ(WBEM_S_NO_ERROR, objects->Next(60000, 1, first.Put(), &returned));
    objects.Reset();
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(stopped.Get(), 60000));
}

TEST_F(CStandinFailure, OfACallThatIsTooLongEndsThatCallOnly)
{
    const std::wstring longQuery = L"select * from StandinTest_Item where Name = '" +
                                   std::wstring(standin::kLargestFrame / sizeof(wchar_t), L'x') + L"'";
    ComPtr<IEnumWbemClassObject> objects;
    ASSERT_EQ(WBEM_S_NO_ERROR, Query(longQuery.c_str(), objects));
    HRESULT end = E_FAIL;
    EXPECT_TRUE(ReadAll(objects.Get(), end).empty());
    EXPECT_EQ(static_cast<HRESULT>(WBEM_E_QUOTA_VIOLATION), end);
    ComPtr<IWbemClassObject> item;
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item));
}

// From somebody who speaks to the service without the locator.
TEST_F(CStandinFailure, OfAFrameThatIsTooLongEndsThatConnectionOnly)
{
    CFileHandle end;
    while (end.Reset(CreateFileW(standin::kPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_OVERLAPPED, nullptr)),
           !end && GetLastError() == ERROR_PIPE_BUSY)
        WaitNamedPipeW(standin::kPipeName, 1000);
    ASSERT_TRUE(end);
    const uint32_t size = standin::kLargestFrame + 1;
    OVERLAPPED writing = {};
    DWORD written = 0;
    WriteFile(end.Get(), &size, sizeof size, nullptr, &writing);
    ASSERT_TRUE(GetOverlappedResult(end.Get(), &writing, &written, TRUE));

    standin::CPipe pipe(std::move(end));
    std::vector<BYTE> frame;
    ASSERT_EQ(standin::CPipe::Received::Frame, pipe.Receive(frame, 60000));
    EXPECT_EQ(static_cast<HRESULT>(WBEM_E_QUOTA_VIOLATION),
              std::get<standin::COutcome>(standin::DecodeAnswer(frame)).Result);
    EXPECT_EQ(standin::CPipe::Received::TheEnd, pipe.Receive(frame, 60000));
    ComPtr<IWbemClassObject> item;
    EXPECT_EQ(WBEM_S_NO_ERROR, Get(L"StandinTest_Item.Name=\"n1\"", item));
}

TEST_F(CStandinFailure, TimesOutAndGoesOn)
{
    const CHandle blocked = NamedEvent(kBlockedEvent);
    const CHandle go = NamedEvent(kGoEvent);
    const ComPtr<IWbemCallResult> result = CallBlock(blocked);
    LONG status = -1;
    EXPECT_EQ(WBEM_S_TIMEDOUT, result->GetCallStatus(1, &status));
    SetEvent(go.Get());
    EXPECT_EQ(WBEM_S_NO_ERROR, result->GetCallStatus(WBEM_INFINITE, &status));
    EXPECT_EQ(WBEM_S_NO_ERROR, status);
}
} // namespace
