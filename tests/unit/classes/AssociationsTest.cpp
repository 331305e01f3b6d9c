#include "tests/unit/classes/AssociationRows.h"
#include "tests/unit/classes/HandlerTest.h"
#include "tests/unit/classes/TextFault.h"

namespace
{
class AssociationTest : public HandlerTest, public testing::WithParamInterface<const Association*>
{
  protected:
    const Association& Row() const { return *GetParam(); }

    // The path of an association with the given references; a null one is left out.
    std::wstring PathOf(const wchar_t* first, const wchar_t* second) const
    {
        std::wstring path = Row().className;
        wchar_t separator = L'.';
        const auto append = [&](const wchar_t* key, const wchar_t* value)
        {
            if (value)
                path += std::wstring(1, std::exchange(separator, L',')) + key + L"=\"" + value + L"\"";
        };
        append(Row().first, first);
        append(Row().second, second);
        return path;
    }
    HRESULT GetObjectOf(const wchar_t* first, const wchar_t* second, bool cimKeyMode = true)
    {
        return Prepared(*m_handler)
            .GetObjectAsync(Path(PathOf(first, second).c_str()), Context(cimKeyMode), m_sink);
    }
    HRESULT Enumerate() { return Prepared(*m_handler).CreateInstanceEnumAsync(Context(), m_sink); }

    std::unique_ptr<CWomClassHandler> m_handler = Row().create();
};

TEST_P(AssociationTest, ServesItsClass)
{
    EXPECT_STREQ(m_handler->GetClassName(), Row().className);
}

TEST_P(AssociationTest, InstanceHoldsBothReferencesWithReducedKeys)
{
    EXPECT_EQ(GetObjectOf(Row().firstPath, Row().secondPath), S_OK);
    ASSERT_EQ(Indicated().size(), 1u);
    EXPECT_EQ(ReadText(Indicated()[0], L"__CLASS"), Row().className);
    for (size_t i = 0; i < 2; ++i)
        EXPECT_EQ(ReadText(Indicated()[0], Row().properties[i]), Row().reduced[i]);
}

TEST_P(AssociationTest, PropertiesAreSetInTheirOrder)
{
    std::vector<std::wstring> order(std::begin(Row().properties), std::end(Row().properties));
    order.insert(order.end(), Row().others.begin(), Row().others.end());
    EXPECT_EQ(GetObjectOf(Row().firstPath, Row().secondPath), S_OK);
    EXPECT_EQ(m_plan->Puts(), order);
}

TEST_P(AssociationTest, InstanceHoldsBothReferencesWithFullKeys)
{
    EXPECT_EQ(GetObjectOf(Row().firstPath, Row().secondPath, false), S_OK);
    ASSERT_EQ(Indicated().size(), 1u);
    for (size_t i = 0; i < 2; ++i)
        EXPECT_EQ(ReadText(Indicated()[0], Row().properties[i]), Row().full[i]);
}

TEST_P(AssociationTest, UnparsableFirstReference)
{
    for (const wchar_t* reference :
         {static_cast<const wchar_t*>(nullptr), L"", L"=", L"Tolva_DiagTest.Name=1@A"})
    {
        const CTraceCapture trace;
        EXPECT_EQ(GetObjectOf(reference, Row().secondPath), wmi::Failed);
        EXPECT_EQ(trace.Count(Row().firstParse), 1u);
    }
    EXPECT_TRUE(m_sink->Indications().empty());
}

TEST_P(AssociationTest, UnparsableSecondReference)
{
    for (const wchar_t* reference : {static_cast<const wchar_t*>(nullptr), L"", L"."})
    {
        const CTraceCapture trace;
        EXPECT_EQ(GetObjectOf(Row().firstPath, reference), wmi::Failed);
        EXPECT_EQ(trace.Count(Row().secondParse), 1u);
    }
    EXPECT_TRUE(m_sink->Indications().empty());
}

TEST_P(AssociationTest, ReferencesWithoutTheirKeyAreNotFound)
{
    EXPECT_EQ(GetObjectOf(L"Tolva_Any.Other=\\\"1@A\\\"", Row().secondPath), wmi::NotFound);
    EXPECT_EQ(GetObjectOf(Row().firstPath, L"Tolva_Any.Other=\\\"1@A\\\""), wmi::NotFound);
    EXPECT_EQ(GetObjectOf(Row().firstPath, L"Tolva_Any"), wmi::NotFound);
    EXPECT_TRUE(m_sink->Indications().empty());
}

TEST_P(AssociationTest, FailedSendIsTracedAndReturned)
{
    m_sink->FailIndicate(1, HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE));
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf(Row().firstPath, Row().secondPath), HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE));
    EXPECT_EQ(trace.Count(Row().sendFailed), 1u);
}

TEST_P(AssociationTest, EnumerationSendsEveryInstance)
{
    const CTraceCapture trace;
    EXPECT_EQ(Enumerate(), S_OK);
    ASSERT_EQ(Indicated().size(), 3u);
    for (size_t i = 0; i < 2; ++i)
        EXPECT_EQ(ReadText(Indicated()[0], Row().properties[i]), Row().reduced[i]);
    EXPECT_EQ(trace.Count(std::string("{ --> ") + Row().createInstanceEnum), 1u);
}

TEST_P(AssociationTest, EnumerationEndsAtTheFirstFailure)
{
    m_sink->FailIndicate(2, E_ABORT);
    EXPECT_EQ(Enumerate(), E_ABORT);
    EXPECT_EQ(m_sink->Indications().size(), 2u);
    m_plan->Fail(CCallPlan::Call::SpawnInstance, 1, wmi::OutOfMemory);
    EXPECT_EQ(Enumerate(), wmi::OutOfMemory);
    EXPECT_EQ(m_sink->Indications().size(), 2u);
}

TEST_P(AssociationTest, EnumerationThatCannotBeginIsTraced)
{
    m_manager.Answers[Row().enumerates] = E_POINTER;
    const CTraceCapture trace;
    EXPECT_EQ(Enumerate(), E_POINTER);
    EXPECT_EQ(trace.Count(Row().enumFailed), 1u);
}

TEST_P(AssociationTest, StatusOfAPutIsNotExamined)
{
    EXPECT_EQ(Enumerate(), S_OK);
    const int puts = m_plan->Count(CCallPlan::Call::Put) / 3;
    for (int i = 1; i <= puts; ++i)
    {
        m_sink = MakeCom<CFakeSink>();
        m_plan->Fail(CCallPlan::Call::Put, i, wmi::TypeMismatch);
        EXPECT_EQ(GetObjectOf(Row().firstPath, Row().secondPath), S_OK);
        EXPECT_EQ(Indicated().size(), 1u);
    }
}

TEST_P(AssociationTest, AReferenceThatMemoryRunsOutForIsTracedAndEndsTheEnumeration)
{
    for (const wchar_t* key : {L"2@A", L"9@B"})
    {
        m_manager.Tests.erase(key);
        m_manager.Results.erase(key);
    }
    EXPECT_EQ(Enumerate(), S_OK); // what is made once is there
    std::set<std::string> seen;
    bool happened = true;
    for (int n = 1; happened; ++n)
    {
        m_sink = MakeCom<CFakeSink>();
        const CTraceCapture trace;
        HRESULT hr = S_OK;
        {
            const CTextFault fault(n);
            try
            {
                hr = Enumerate();
            }
            catch (...)
            {
                hr = E_OUTOFMEMORY; // the provider's own barrier has a code for it
            }
            happened = fault.Happened();
        }
        for (const char* line : Row().unbuilt)
            if (trace.Has(line))
            {
                seen.insert(line);
                EXPECT_EQ(hr, wmi::OutOfMemory) << line;
                EXPECT_TRUE(m_sink->Indications().empty()) << line;
            }
    }
    EXPECT_EQ(seen.size(), Row().unbuilt.size());
}

TEST_P(AssociationTest, NothingIsLeftBehind)
{
    GetObjectOf(Row().firstPath, Row().secondPath);
    m_sink = MakeCom<CFakeSink>();
    const long before = g_liveComObjects;
    GetObjectOf(nullptr, Row().secondPath);
    GetObjectOf(Row().firstPath, nullptr);
    m_sink->FailIndicate(1, E_ABORT);
    GetObjectOf(Row().firstPath, Row().secondPath);
    EXPECT_EQ(g_liveComObjects, before);
}

INSTANTIATE_TEST_SUITE_P(Classes, AssociationTest,
                         testing::Values(&TestForMSE(), &ResultForMSE(), &ResultForTest(), &SettingForTest()),
                         [](const auto& info) { return info.param->name; });

// What only some of the classes do.
class AssociationPartsTest : public HandlerTest
{
  protected:
    template <class Handler>
    HRESULT GetObjectOf(const std::wstring& path)
    {
        Handler handler;
        return Prepared(handler).GetObjectAsync(Path(path.c_str()), Context(), m_sink);
    }
    static std::wstring TestPath(const wchar_t* test, const wchar_t* adapter)
    {
        return std::wstring(L"Tolva_DiagTestForMSE.Antecedent=\"Tolva_DiagTest.Name=\\\"") + test +
               L"\\\"\",Dependent=\"Tolva_EthernetAdapter.DeviceID=\\\"" + adapter + L"\\\"\"";
    }
};

TEST_F(AssociationPartsTest, TestIsExclusiveForItsAdapter)
{
    CTolva_DiagTestMSEAssoc handler;
    EXPECT_EQ(Prepared(handler).CreateInstanceEnumAsync(Context(), m_sink), S_OK);
    ASSERT_EQ(Indicated().size(), 3u);
    for (const auto& instance : Indicated())
    {
        EXPECT_EQ(Read(instance, L"IsExclusiveForMSE").boolVal, VARIANT_TRUE);
        EXPECT_TRUE(IsNull(instance, L"EstimatedTimeOfPerforming"));
    }
}

TEST_F(AssociationPartsTest, TestForMSEMatchesTheAdapterWithoutRegardToCase)
{
    EXPECT_EQ(GetObjectOf<CTolva_DiagTestMSEAssoc>(TestPath(L"1@ABC", L"aBc")), S_OK);
    EXPECT_EQ(Indicated().size(), 1u);
}

TEST_F(AssociationPartsTest, TestForMSERefusesAnotherAdapter)
{
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf<CTolva_DiagTestMSEAssoc>(TestPath(L"1@A", L"AB")), wmi::NotFound);
    EXPECT_EQ(trace.Count("CTolva_DiagTestMSEAssoc::GetObjectAsync:Invalid MSE"), 1u);
}

TEST_F(AssociationPartsTest, TestForMSENeedsAnAdapterInTheTestsName)
{
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf<CTolva_DiagTestMSEAssoc>(TestPath(L"1", L"A")), wmi::OutOfMemory);
    EXPECT_EQ(trace.Count("CTolva_DiagTestMSEAssoc::GetObjectAsync: ParseForAdapterKey failed"), 1u);
}

TEST_F(AssociationPartsTest, TestForMSESaysThatTheTestsNameIsMissing)
{
    const CTraceCapture trace;
    EXPECT_EQ(GetObjectOf<CTolva_DiagTestMSEAssoc>(L"Tolva_DiagTestForMSE.Antecedent=\"Tolva_DiagTest.Key="
                                                   L"1\",Dependent=\"Tolva_EthernetAdapter=\\\"A\\\"\""),
              wmi::NotFound);
    EXPECT_EQ(trace.Count("CTolva_DiagTestMSEAssoc::GetObjectAsync:Invalid test"), 1u);
}

TEST_F(AssociationPartsTest, ResultForMSEIsTakenAtItsResult)
{
    EXPECT_EQ(GetObjectOf<CTolva_DiagResultMSEAssoc>(
                  std::wstring(L"Tolva_DiagResultForMSE.Result=\"") + kResult +
                  L"\",SystemElement=\"Tolva_EthernetAdapter.DeviceID=\\\"another\\\"\""),
              S_OK);
    ASSERT_EQ(Indicated().size(), 1u);
    EXPECT_EQ(ReadText(Indicated()[0], L"SystemElement"), kAdapterReduced);
}

TEST_F(AssociationPartsTest, ResultForTestIsTakenAtItsResult)
{
    EXPECT_EQ(GetObjectOf<CTolva_DiagResultTestAssoc>(
                  std::wstring(L"Tolva_DiagResultForTest.DiagnosticResult=\"") + kResult +
                  L"\",DiagnosticTest=\"Tolva_DiagTest.Name=\\\"another\\\"\""),
              S_OK);
    ASSERT_EQ(Indicated().size(), 1u);
    EXPECT_EQ(ReadText(Indicated()[0], L"DiagnosticTest"), kTestReduced);
}

TEST_F(AssociationPartsTest, ResultsHaveNoUnnamedForm)
{
    EXPECT_EQ(GetObjectOf<CTolva_DiagResultMSEAssoc>(
                  L"Tolva_DiagResultForMSE.Result=\"Tolva_DiagResult=\\\"1@A\\\"\",SystemElement=\"" +
                  std::wstring(kAdapter) + L"\""),
              wmi::NotFound);
}

TEST_F(AssociationPartsTest, UnknownResultsAndSettingsAreNotFound)
{
    m_manager.Results.clear();
    m_manager.Settings.clear();
    EXPECT_EQ(GetObjectOf<CTolva_DiagResultMSEAssoc>(std::wstring(L"Tolva_DiagResultForMSE.Result=\"") +
                                                     kResult + L"\",SystemElement=\"" + kAdapter + L"\""),
              wmi::NotFound);
    EXPECT_EQ(
        GetObjectOf<CTolva_DiagResultTestAssoc>(std::wstring(L"Tolva_DiagResultForTest.DiagnosticResult=\"") +
                                                kResult + L"\",DiagnosticTest=\"" + kTest + L"\""),
        wmi::NotFound);
    EXPECT_EQ(GetObjectOf<CTolva_DiagSettingTestAssoc>(std::wstring(L"Tolva_DiagSettingForTest.Setting=\"") +
                                                       kSetting + L"\",Element=\"" + kTest + L"\""),
              wmi::NotFound);
    EXPECT_TRUE(m_sink->Indications().empty());
}

struct KeyCase
{
    const char* name;
    HRESULT (*enumerate)(CFakeDiagMgr& manager, CWomContext& context, IWbemObjectSink* sink);
    const char* line;
};

template <class Handler>
HRESULT EnumerateOf(CFakeDiagMgr& manager, CWomContext& context, IWbemObjectSink* sink)
{
    Handler handler;
    handler.SetDiagMgr(&manager);
    return handler.CreateInstanceEnumAsync(context, sink);
}

class KeyWithoutAdapterTest : public HandlerTest, public testing::WithParamInterface<KeyCase>
{
};

TEST_P(KeyWithoutAdapterTest, EndsTheEnumeration)
{
    m_manager.Tests.clear();
    m_manager.Results.clear();
    m_manager.Tests[L"1"].Key = CBstr(L"1");
    m_manager.Results[L"1"].ResultID = CBstr(L"1");
    const CTraceCapture trace;
    EXPECT_EQ(GetParam().enumerate(m_manager, Context(), m_sink.Get()), wmi::OutOfMemory);
    EXPECT_EQ(trace.Count(GetParam().line), 1u);
    EXPECT_TRUE(m_sink->Indications().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Classes, KeyWithoutAdapterTest,
    testing::Values(KeyCase{"TestForMSE", &EnumerateOf<CTolva_DiagTestMSEAssoc>,
                            "CTolva_DiagTestMSEAssoc::SendInstance: ParseForAdapterKey failed"},
                    KeyCase{"ResultForMSE", &EnumerateOf<CTolva_DiagResultMSEAssoc>,
                            "CTolva_DiagResultMSEAssoc::SendInstance:ParseForAdapterKey failed"},
                    KeyCase{"ResultForTest", &EnumerateOf<CTolva_DiagResultTestAssoc>,
                            "CTolva_DiagResultTestAssoc::SendInstance:CreateResultReference failed"}),
    [](const auto& info) { return info.param.name; });
} // namespace
