#include "CDM/src/ZebDebug.h"
#include "Common/src/WomExtendedStatus.h"
#include "Common/src/com/SafeArray.h"
#include "tests/support/FakeSink.h"
#include "tests/unit/framework/FrameworkTest.h"

#include <type_traits>

namespace
{
constexpr HRESULT kUnhandled = static_cast<HRESULT>(0x8004091A);

static_assert(std::is_nothrow_move_constructible_v<CWomProviderException>);

class ProviderExceptionTest : public FrameworkTest
{
  protected:
    ProviderExceptionTest()
    {
        CVariant handle = CVariant::FromText(L"{session}");
        m_caller->SetValue(L"SessionHandle", 0, &handle);
        m_context = MakeContext(m_caller.Get());
    }
    void TearDown() override { m_caller.Reset(); }

    CWomProviderException Unhandled(const std::vector<CBstr>& reasons = {})
    {
        return CWomProviderException(m_context.get(), kUnhandled, L"CWomClassRouter::GetObjectAsync",
                                     wmi::Failed, "CDM/src/ProviderImp", 361, "Unhandled", reasons);
    }
    // What the sink got as the property, in its stored form.
    static CVariant Reported(const CFakeSink& sink, const wchar_t* property)
    {
        CVariant value;
        EXPECT_EQ(S_OK, sink.Statuses()[0].Object->Get(property, 0, value.Put(), nullptr, nullptr));
        return value;
    }
    static std::wstring ReportedText(const CFakeSink& sink, const wchar_t* property)
    {
        const CVariant value = Reported(sink, property);
        EXPECT_EQ(VT_BSTR, value.vt);
        return value.vt == VT_BSTR ? value.bstrVal : L"";
    }

    ComPtr<IWbemContext> m_caller = standin::MakeContext();
    ComPtr<CFakeSink> m_sink = MakeCom<CFakeSink>();
};

TEST_F(ProviderExceptionTest, CopiesWhatItWasMadeFromAndTracesItself)
{
    const CTraceCapture trace;
    std::string message = "text";
    std::wstring info = L"info";
    std::vector<CBstr> reasons{CBstr(L"first"), CBstr(L"second")};
    const CWomProviderException e(nullptr, 0x80040903, info.c_str(), E_FAIL, "CDM/src/ProviderImp", 12,
                                  message.c_str(), reasons);
    message[0] = 'X';
    info[0] = L'X';
    reasons.clear();
    EXPECT_EQ(static_cast<HRESULT>(0x80040903), e.StatusCode());
    EXPECT_STREQ(L"info", e.ParameterInfo());
    EXPECT_EQ(E_FAIL, e.RequestResult());
    EXPECT_STREQ("CDM/src/ProviderImp", e.SourceFile());
    EXPECT_EQ(12, e.Line());
    EXPECT_STREQ("text", e.MessageText());
    ASSERT_EQ(2u, e.Reasons().size());
    EXPECT_EQ(L"second", e.Reasons()[1].View());
    EXPECT_THAT(trace.Lines(), testing::ElementsAre("Exception: CDM/src/ProviderImp 12"));
}

TEST_F(ProviderExceptionTest, NoTextsAreEmptyTexts)
{
    const CWomProviderException e(nullptr, E_FAIL, nullptr, E_FAIL, "x", 1, nullptr, {});
    EXPECT_STREQ(L"", e.ParameterInfo());
    EXPECT_STREQ("", e.MessageText());
}

TEST_F(ProviderExceptionTest, TheDescriptionStartsWithTheMessageAndExplainsTheResult)
{
    m_resources.Texts[{"_8023", 0x9001}] = "The request failed.";
    EXPECT_EQ(L"Unhandled (status 0x8004091a, result 0x80041001: The request failed.)",
              Unhandled().Description().View());
}

TEST_F(ProviderExceptionTest, TheDescriptionDoesWithoutContextAndText)
{
    const CWomProviderException e(nullptr, kUnhandled, L"Operation", wmi::Failed, "x", 1, "", {});
    EXPECT_EQ(L" (status 0x8004091a, result 0x80041001)", e.Description().View());
    EXPECT_EQ(L"Unhandled (status 0x8004091a, result 0x80041001)", Unhandled().Description().View());
}

TEST_F(ProviderExceptionTest, AnUnhandledExceptionReachesTheClientAsExtendedStatus)
{
    const CWomProviderException e = Unhandled();
    ReportToSink(e, m_sink);
    ASSERT_EQ(1u, m_sink->Statuses().size());
    const CFakeSink::CStatus status = m_sink->Statuses()[0];
    EXPECT_EQ(WBEM_STATUS_COMPLETE, status.Flags);
    EXPECT_EQ(wmi::Failed, status.Result);
    EXPECT_FALSE(status.Parameter);
    ASSERT_TRUE(status.Object);

    EXPECT_EQ(L"Tolva_ExtendedStatus", ReportedText(*m_sink, L"__CLASS"));
    EXPECT_EQ(e.Description().View(), ReportedText(*m_sink, L"Description"));
    EXPECT_EQ(L"GetObjectAsync", ReportedText(*m_sink, L"Operation"));
    EXPECT_EQ(L"CWomClassRouter::GetObjectAsync", ReportedText(*m_sink, L"ParameterInfo"));
    EXPECT_EQ(L"DREVOK_PROVIDER", ReportedText(*m_sink, L"ProviderName"));
    const CVariant code = Reported(*m_sink, L"StatusCode");
    EXPECT_EQ(VT_I4, code.vt);
    EXPECT_EQ(kUnhandled, code.lVal);
    EXPECT_EQ(L"CDM/src/ProviderImp", ReportedText(*m_sink, L"File"));
    const CVariant line = Reported(*m_sink, L"Line");
    EXPECT_EQ(VT_I4, line.vt);
    EXPECT_EQ(361, line.lVal);
    EXPECT_EQ(L"{session}", ReportedText(*m_sink, L"SessionHandle"));
    const CVariant reasons = Reported(*m_sink, L"RuleFailureReasons");
    ASSERT_EQ(VT_ARRAY | VT_BSTR, reasons.vt);
    EXPECT_TRUE(CSafeArrayView<BSTR>(reasons.parray, VT_BSTR).Items().empty());
}

TEST_F(ProviderExceptionTest, ReasonsArriveInTheirOrder)
{
    ReportToSink(Unhandled({CBstr(L"first"), CBstr(L"second")}), m_sink);
    const CVariant reasons = Reported(*m_sink, L"RuleFailureReasons");
    const CSafeArrayView<BSTR> view(reasons.parray, VT_BSTR);
    ASSERT_EQ(2u, view.Items().size());
    EXPECT_STREQ(L"first", view.Items()[0]);
    EXPECT_STREQ(L"second", view.Items()[1]);
}

TEST_F(ProviderExceptionTest, ARequestsResultDoesNotChangeTheStatusOfTheSink)
{
    const CWomProviderException e(m_context.get(), 0x80040901, L"", E_ACCESSDENIED, "x", 1, "", {});
    ReportToSink(e, m_sink);
    ASSERT_EQ(1u, m_sink->Statuses().size());
    EXPECT_EQ(wmi::Failed, m_sink->Statuses()[0].Result);
}

TEST_F(ProviderExceptionTest, TheReportIsTraced)
{
    const CTraceCapture trace;
    ReportToSink(Unhandled(), m_sink);
    EXPECT_TRUE(trace.Has("{ --> CWomClassObject::DebugOutput"));
    EXPECT_TRUE(trace.Has("ParameterInfo = BSTR \"CWomClassRouter::GetObjectAsync\""));
    EXPECT_TRUE(trace.Has("Line = I4 361 (0x169)"));
}

// Shows in the trace when it is given the status.
class CTracingSink final : public CComObject<IWbemObjectSink>
{
  public:
    STDMETHODIMP Indicate(LONG, IWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP SetStatus(LONG, HRESULT, BSTR, IWbemClassObject*) override
    {
        ZebDebug().Write("the sink has the status");
        return S_OK;
    }
};

TEST_F(ProviderExceptionTest, TheReportIsTracedBeforeTheClientHasIt)
{
    const CTraceCapture trace;
    ReportToSink(Unhandled(), MakeCom<CTracingSink>());
    const std::vector<std::string> lines = trace.Lines();
    const auto at = [&](const char* text)
    {
        return std::find_if(lines.begin(), lines.end(),
                            [&](const std::string& line) { return line.find(text) != std::string::npos; }) -
               lines.begin();
    };
    EXPECT_LT(at("} <-- CWomClassObject::DebugOutput"), at("the sink has the status"));
    EXPECT_TRUE(trace.Has("the sink has the status"));
}

TEST_F(ProviderExceptionTest, PropertiesAreSetInTheirOrder)
{
    constexpr const wchar_t* kOrder[] = {L"Description",  L"Operation",     L"ParameterInfo",
                                         L"ProviderName", L"StatusCode",    L"File",
                                         L"Line",         L"SessionHandle", L"RuleFailureReasons"};
    ReportToSink(Unhandled(), m_sink);
    ASSERT_EQ(std::size(kOrder), m_plan->Puts().size());
    for (size_t i = 0; i < std::size(kOrder); ++i)
        EXPECT_EQ(kOrder[i], m_plan->Puts()[i]);
}

TEST_F(ProviderExceptionTest, APropertyThatIsRefusedDoesNotStopTheReport)
{
    for (int n = 1; n <= 9; ++n)
    {
        const auto sink = MakeCom<CFakeSink>();
        const int before = m_plan->Count(Call::Put);
        m_plan->Fail(Call::Put, n, wmi::TypeMismatch);
        ReportToSink(Unhandled(), sink);
        EXPECT_EQ(9, m_plan->Count(Call::Put) - before);
        ASSERT_EQ(1u, sink->Statuses().size());
        EXPECT_TRUE(sink->Statuses()[0].Object);
    }
}

TEST_F(ProviderExceptionTest, ADumpThatFailsDoesNotStopTheReport)
{
    m_plan->Fail(Call::GetNames, 1, E_OUTOFMEMORY);
    ReportToSink(Unhandled(), m_sink);
    EXPECT_EQ(1u, m_sink->Statuses().size());
}

TEST_F(ProviderExceptionTest, WithoutTheStatusClassNothingIsSent)
{
    m_services->FailGetObject(1, wmi::NotFound);
    ReportToSink(Unhandled(), m_sink);
    EXPECT_TRUE(m_sink->Statuses().empty());
    m_plan->Fail(Call::SpawnInstance, 1, wmi::OutOfMemory);
    ReportToSink(Unhandled(), m_sink);
    EXPECT_TRUE(m_sink->Statuses().empty());
    const long held = g_liveComObjects;
    m_sink.Reset();
    EXPECT_GT(held, g_liveComObjects);
}

TEST_F(ProviderExceptionTest, WithoutAContextOrASinkNothingIsSent)
{
    ReportToSink(CWomProviderException(nullptr, kUnhandled, L"", wmi::Failed, "x", 1, "", {}), m_sink);
    EXPECT_TRUE(m_sink->Statuses().empty());
    ReportToSink(Unhandled(), nullptr);
    EXPECT_TRUE(m_services->GetCalls().empty());
}

TEST_F(ProviderExceptionTest, TheReportReleasesTheSink)
{
    ReportToSink(Unhandled(), m_sink);
    const long held = g_liveComObjects;
    m_sink.Reset();
    EXPECT_GT(held, g_liveComObjects);
}
} // namespace
