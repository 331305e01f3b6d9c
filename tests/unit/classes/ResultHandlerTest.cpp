#include "CDM/src/classes/ResultHandler.h"
#include "CDM/src/engine/results/CimDateTime.h"
#include "Common/src/VormErrorMessage.h"
#include "tests/unit/classes/HandlerTest.h"

namespace
{
constexpr SYSTEMTIME kStart = {2025, 3, 0, 14, 9, 5, 7, 42};
constexpr SYSTEMTIME kEnd = {2025, 3, 0, 14, 9, 6, 8, 0};
constexpr SYSTEMTIME kStamp = {2025, 3, 0, 14, 9, 6, 9, 0};

std::wstring CimText(const SYSTEMTIME& time)
{
    CCoTaskMem<wchar_t> text;
    EXPECT_TRUE(ConvertSystemTimeToString(&time, text));
    return text.Get();
}

class DiagResultTest : public HandlerTest
{
  protected:
    HRESULT GetObjectOf(const wchar_t* path)
    {
        return Prepared(m_handler).GetObjectAsync(Path(path), Context(), m_sink);
    }
    HRESULT Enumerate() { return Prepared(m_handler).CreateInstanceEnumAsync(Context(), m_sink); }
    // The instance of the ordinary test's result.
    ComPtr<IWbemClassObject> Get(const wchar_t* path = L"Tolva_DiagResult.DiagnosticName=\"1@A\"")
    {
        EXPECT_EQ(GetObjectOf(path), S_OK);
        return Indicated().empty() ? nullptr : Indicated().back();
    }
    void AddMessage(CResultData& record, ULONG id, ULONG value)
    {
        record.StringIDs.push_back(id);
        record.TestMessages.push_back(value);
        ++record.MessageCount;
    }

    CTolva_DiagResult m_handler;
    CResultData& m_ordinary = m_manager.Results[L"1@A"];
    CResultData& m_sender = m_manager.Results[L"9@B"];
};

TEST_F(DiagResultTest, InstanceHoldsTheRecord)
{
    m_ordinary.TestStartTime = kStart;
    m_ordinary.TestCompletionTime = kEnd;
    m_ordinary.TimeStamp = kStamp;
    m_ordinary.IsPackage = 1;
    m_ordinary.PercentComplete = 100;
    m_ordinary.TestState = TestStatePassed;
    m_ordinary.EstimatedTimeOfPerforming = 7;
    m_ordinary.HaltOnError = 1;
    const ComPtr<IWbemClassObject> instance = Get();
    ASSERT_TRUE(instance);
    EXPECT_EQ(ReadText(instance, L"DiagnosticName"), L"1@A");
    EXPECT_EQ(ReadText(instance, L"DiagnosticCreationClassName"), L"Tolva_DiagTest");
    EXPECT_EQ(ReadText(instance, L"ExecutionID"), L"A");
    EXPECT_EQ(ReadText(instance, L"TestCompletionTime"), CimText(kEnd));
    EXPECT_EQ(ReadText(instance, L"TestStartTime"), CimText(kStart));
    EXPECT_EQ(ReadText(instance, L"TimeStamp"), CimText(kStamp));
    EXPECT_EQ(Read(instance, L"IsPackage").boolVal, VARIANT_TRUE);
    EXPECT_EQ(Read(instance, L"PercentComplete").bVal, 100);
    EXPECT_TRUE(IsNull(instance, L"OtherStateDescription"));
    EXPECT_TRUE(IsNull(instance, L"EstimatedTimeOfPerforming"));
    EXPECT_EQ(Read(instance, L"TestState").lVal, 2);
    EXPECT_EQ(ReadText(instance, L"DiagSystemCreationClassName"), L"Win32_ComputerSystem");
    EXPECT_EQ(ReadText(instance, L"DiagSystemName"), ComputerName());
    for (const wchar_t* property : {L"HaltOnError", L"ReportSoftErrors", L"TestWarningLevel"})
        EXPECT_TRUE(IsNull(instance, property));
}

TEST_F(DiagResultTest, RunningTestHasNoCompletionTimeYet)
{
    m_ordinary.TestStartTime = kStart;
    m_ordinary.TestState = TestStateInProgress;
    const ComPtr<IWbemClassObject> instance = Get();
    ASSERT_TRUE(instance);
    EXPECT_EQ(ReadText(instance, L"TestStartTime"), CimText(kStart));
    EXPECT_TRUE(IsNull(instance, L"TestCompletionTime"));
    EXPECT_TRUE(IsNull(instance, L"TimeStamp"));
}

TEST_F(DiagResultTest, NoEntriesGiveAnEmptyArray)
{
    EXPECT_TRUE(ReadTexts(Get(), L"TestResults").empty());
}

TEST_F(DiagResultTest, NormalLinesHoldStampTitleAndText)
{
    m_ordinary.TimeStamp = kStamp;
    AddMessage(m_ordinary, 3801, 0);
    AddMessage(m_ordinary, 3802, 5);
    EXPECT_EQ(ReadTexts(Get(), L"TestResults"),
              (std::vector<std::wstring>{CimText(kStamp) + L"|_8023 3501|_8023 3801",
                                         CimText(kStamp) + L"|_8023 3501|_8023 3802"}));
}

TEST_F(DiagResultTest, EveryInstanceAsksForItsTextsAndTheComputersName)
{
    m_manager.Results.erase(L"2@A");
    AddMessage(m_ordinary, 3801, 0);
    AddMessage(m_ordinary, 3801, 0);
    AddMessage(m_sender, 12, 200);
    AddMessage(m_sender, 12, 0);
    AddMessage(m_sender, 10, 1);
    const CTraceCapture trace;
    EXPECT_EQ(Enumerate(), S_OK);
    EXPECT_EQ(m_texts.Asked, (std::vector<UINT>{3501, 3801, 3801, 3509, 12, 12, 10}));
    EXPECT_EQ(trace.Count("Computer name is "), 2u);
}

TEST_F(DiagResultTest, EntryWithoutIdentifierTellsTheAgentsError)
{
    m_ordinary.TimeStamp = kStamp;
    AddMessage(m_ordinary, 0, static_cast<ULONG>(E_OUTOFMEMORY));
    std::string text;
    FormatVorlErrorMessage(E_OUTOFMEMORY, text, m_texts, 0x409);
    EXPECT_FALSE(text.empty());
    const std::vector<std::wstring> lines = ReadTexts(Get(), L"TestResults");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], CimText(kStamp) + L"|_8023 3501|" + std::wstring(text.begin(), text.end()));
}

TEST_F(DiagResultTest, NoErrorIsWithoutAText)
{
    for (const ULONG code : {0x8000FFFFul, 0x8007ABCDul, 0xC0000005ul, 0x80010108ul, 0x80041234ul})
        AddMessage(m_ordinary, 0, code);
    const std::vector<std::wstring> lines = ReadTexts(Get(), L"TestResults");
    ASSERT_EQ(lines.size(), 5u);
    for (const std::wstring& line : lines)
        EXPECT_FALSE(line.ends_with(L"|"));
}

TEST_F(DiagResultTest, LinesBeforeTheFirstTimeStampBeginWithTheSeparator)
{
    AddMessage(m_ordinary, 3801, 0);
    EXPECT_EQ(ReadTexts(Get(), L"TestResults"), (std::vector<std::wstring>{L"|_8023 3501|_8023 3801"}));
}

TEST_F(DiagResultTest, SenderResponderLinesHoldCounters)
{
    m_sender.TimeStamp = kStamp;
    AddMessage(m_sender, 12, 200);
    AddMessage(m_sender, 13, 0);
    AddMessage(m_sender, 10, 0xFFFFFFFF);
    EXPECT_EQ(ReadTexts(Get(L"Tolva_DiagResult.DiagnosticName=\"9@B\""), L"TestResults"),
              (std::vector<std::wstring>{CimText(kStamp) + L"|_8023 3509|Diag 12200",
                                         CimText(kStamp) + L"|_8023 3509|Diag 130",
                                         CimText(kStamp) + L"|_8023 3509|Diag 10-1"}));
}

TEST_F(DiagResultTest, SenderResponderWithFewerThanThreeEntriesHasTheNormalForm)
{
    AddMessage(m_sender, 3809, 1);
    AddMessage(m_sender, 3810, 2);
    EXPECT_EQ(ReadTexts(Get(L"Tolva_DiagResult.DiagnosticName=\"9@B\""), L"TestResults"),
              (std::vector<std::wstring>{L"|_8023 3509|_8023 3809", L"|_8023 3509|_8023 3810"}));
}

TEST_F(DiagResultTest, OrdinaryTestWithManyEntriesHasTheNormalForm)
{
    for (ULONG id = 3801; id <= 3804; ++id)
        AddMessage(m_ordinary, id, 9);
    EXPECT_EQ(ReadTexts(Get(), L"TestResults")[3], L"|_8023 3501|_8023 3804");
}

TEST_F(DiagResultTest, OtherKindsOfSenderResponderStillShowCounters)
{
    m_sender.SenderResponder = 2;
    for (ULONG id = 3; id <= 5; ++id)
        AddMessage(m_sender, id, id);
    const ComPtr<IWbemClassObject> instance = Get(L"Tolva_DiagResult.DiagnosticName=\"9@B\"");
    ASSERT_TRUE(instance);
    EXPECT_EQ(ReadTexts(instance, L"TestResults")[0], L"|_8023 3509|Diag 33");
    EXPECT_TRUE(IsNull(instance, L"QuickMode"));
}

TEST_F(DiagResultTest, LongTextsAreCutToTheLinesRoom)
{
    AddMessage(m_ordinary, 3801, 0);
    m_texts.Long[3801] = std::wstring(5000, L'x');
    const std::vector<std::wstring> lines = ReadTexts(Get(), L"TestResults");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].size(), 4095u);
}

TEST_F(DiagResultTest, SettingsOfTheRunAreShownForSenderResponderTestsOnly)
{
    m_sender.QuickMode = 0;
    m_sender.ReportStatusMessages = 1;
    m_sender.PercentOfTestCoverage = 50;
    EXPECT_EQ(Enumerate(), S_OK);
    ASSERT_EQ(Indicated().size(), 3u);
    for (size_t i = 0; i < 2; ++i)
        for (const wchar_t* property : {L"QuickMode", L"ReportStatusMessages", L"PercentOfTestCoverage"})
            EXPECT_TRUE(IsNull(Indicated()[i], property));
    EXPECT_EQ(Read(Indicated()[2], L"QuickMode").boolVal, VARIANT_FALSE);
    EXPECT_EQ(Read(Indicated()[2], L"ReportStatusMessages").boolVal, VARIANT_TRUE);
    EXPECT_EQ(Read(Indicated()[2], L"PercentOfTestCoverage").bVal, 50);
}

TEST_F(DiagResultTest, StateIsTheRecordsLowSixteenBits)
{
    m_ordinary.TestState = static_cast<TestState>(0x10003);
    EXPECT_EQ(Read(Get(), L"TestState").lVal, 3);
}

TEST_F(DiagResultTest, IsFoundByItsNameEvenWithTheWrongExecutionId)
{
    EXPECT_TRUE(Get(
        L"Tolva_DiagResult.DiagnosticName=\"1@A\",DiagnosticCreationClassName=\"Other\",ExecutionID=\"Z\""));
}

TEST_F(DiagResultTest, MissingResultIsNotFoundWithoutALine)
{
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagResult.DiagnosticName=\"7@A\",ExecutionID=\"A\""), wmi::NotFound);
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagResult.ExecutionID=\"A\""), wmi::NotFound);
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagResult=\"1@A\""), wmi::NotFound) << "three keys have no unnamed form";
    EXPECT_FALSE(trace.Has("Tolva_DiagResult::GetObjectAsync:"));
}

TEST_F(DiagResultTest, FailuresOfTheManagerPassThrough)
{
    m_manager.Answers[L"GetResultData"] = E_POINTER;
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf(L"Tolva_DiagResult.DiagnosticName=\"1@A\""), E_POINTER);
    EXPECT_EQ(trace.Count("Tolva_DiagResult::GetObjectAsync:GetResultData failed, hr = <80004003>"), 1u);
    EXPECT_EQ(Enumerate(), E_POINTER);
    EXPECT_EQ(trace.Count("Tolva_DiagResult::CreateInstanceEnumAsync:GetResultData failed, hr = <80004003>"),
              1u);
    m_manager.Answers[L"EnumResults"] = E_OUTOFMEMORY;
    EXPECT_EQ(Enumerate(), E_OUTOFMEMORY);
    EXPECT_EQ(trace.Count("Tolva_DiagResult::CreateInstanceEnumAsync:EnumResults failed, hr = <8007000e>"),
              1u);
}

struct TextCase
{
    const char* name;
    const wchar_t* path;
    UINT missing;
    const char* line;
};

class DiagResultTextTest : public DiagResultTest, public testing::WithParamInterface<TextCase>
{
};

TEST_P(DiagResultTextTest, TextThatCannotBeHadEndsTheRequest)
{
    for (ULONG id = 3; id <= 5; ++id)
        AddMessage(m_sender, id, id);
    AddMessage(m_ordinary, 3801, 0);
    m_texts.NotWidened = {GetParam().missing};
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf(GetParam().path), E_FAIL);
    EXPECT_EQ(trace.Count(GetParam().line), 1u);
    EXPECT_EQ(trace.Count("Tolva_DiagResult::GetObjectAsync:SendInstance failed, hr = <80004005>"), 1u);
    EXPECT_TRUE(m_sink->Indications().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, DiagResultTextTest,
    testing::Values(
        TextCase{"Title", L"Tolva_DiagResult.DiagnosticName=\"1@A\"", 3501,
                 "CTolva_DiagResult::SendInstance:GetResourceString failed <80004005>"},
        TextCase{"NormalEntry", L"Tolva_DiagResult.DiagnosticName=\"1@A\"", 3801,
                 "CTolva_DiagResult::SendInstance:GetResourceString for Normal test failed <80004005>"},
        TextCase{
            "Counter", L"Tolva_DiagResult.DiagnosticName=\"9@B\"", 5,
            "CTolva_DiagResult::SendInstance:GetResourceString for Sender/Responder test failed <80004005>"}),
    [](const auto& info) { return info.param.name; });
} // namespace
