// What becomes of exceptions that leave a handler.
#include "CDM/src/ZebDebug.h"
#include "Common/src/WomProviderException.h"
#include "tests/unit/provider/ProviderTest.h"

#include <stdexcept>

namespace
{
struct Barrier
{
    CRequest request;
    const char* providerException;
    const char* unhandledException;
    const wchar_t* unhandledOperation;
    LONG line;
};

const Barrier kBarriers[] = {
    {kRequests[0], "CProviderImp::GetObjectAsync catch",
     "CWomClassRouter::GetObjectAsync unhandled exception", L"CWomClassRouter::GetObjectAsync", 361},
    {kRequests[1], "CProviderImp::CreateInstanceEnumAsync catch",
     "CProviderImp::CreateInstanceEnumAsync unhandled exception", L"CProviderImp::CreateInstanceEnumAsync",
     614},
    {kRequests[2], "CProviderImp::PutInstanceAsync catch",
     "CProviderImp::PutInstanceAsync unhandled exception", L"CProviderImp::PutInstanceAsync", 738},
    {kRequests[3], "CProviderImp::ExecMethodAsync catch", "CProviderImp::ExecMethodAsync unhandled exception",
     L"CProviderImp::ExecMethodAsync", 515},
};

class BarrierTest : public ProviderTest, public testing::WithParamInterface<Barrier>
{
  protected:
    BarrierTest() { m_host.Initialize(); }

    std::wstring StatusText(const wchar_t* property)
    {
        CVariant value;
        EXPECT_EQ(Status().Object->Get(property, 0, value.Put(), nullptr, nullptr), S_OK);
        return value.vt == VT_BSTR ? value.bstrVal : L"<no text>";
    }
    LONG StatusNumber(const wchar_t* property)
    {
        CVariant value;
        EXPECT_EQ(Status().Object->Get(property, 0, value.Put(), nullptr, nullptr), S_OK);
        EXPECT_EQ(value.vt, VT_I4);
        return value.lVal;
    }
    std::wstring OperationName() const
    {
        const std::string name = GetParam().request.name;
        return {name.begin(), name.end()};
    }
    // The report goes out while the catch is open.
    void ExpectReportedWithin(const CTraceCapture& trace, const char* scope)
    {
        std::vector<std::string> lines = trace.Lines();
        std::erase_if(lines,
                      [&](const std::string& line)
                      {
                          return line != "status" && !line.ends_with(std::string("<-- ") + scope) &&
                                 !line.ends_with(std::string("--> ") + scope);
                      });
        ASSERT_EQ(lines.size(), 3u);
        EXPECT_TRUE(lines[0].ends_with(std::string("{ --> ") + scope)) << lines[0];
        EXPECT_EQ(lines[1], "status");
        EXPECT_TRUE(lines[2].ends_with(std::string("} <-- ") + scope)) << lines[2];
    }
    void ExpectBalanced(const CTraceCapture& trace, const char* scope)
    {
        EXPECT_EQ(trace.Count(std::string("{ --> ") + scope), 1u);
        EXPECT_EQ(trace.Count(std::string("} <-- ") + scope), 1u);
        EXPECT_EQ(trace.Count("{ --> CWomSecurity::RevertToSelf"), 1u);
        EXPECT_EQ(trace.Count("{ --> "), trace.Count("} <-- "));
    }
};

TEST_P(BarrierTest, ProviderExceptionReportsItself)
{
    ProbeDoes(
        []() -> HRESULT {
            throw CWomProviderException(nullptr, 0x1234, L"what", E_ACCESSDENIED, "File.cpp", 12, "text", {});
        });
    const CTraceCapture trace;
    EXPECT_EQ(Make(GetParam().request), E_ACCESSDENIED);
    EXPECT_TRUE(m_sink->Statuses().empty()) << "an exception without a context cannot make its status object";
    ExpectBalanced(trace, GetParam().providerException);
    EXPECT_FALSE(trace.Has("unhandled exception"));
}

TEST_P(BarrierTest, ClassObjectThatThrowsIsAnExtendedStatus)
{
    CWomContext* seen = nullptr;
    const auto fail = [&](CWomContext& context)
    {
        seen = &context;
        CWomClassObject missing(&context);
        return missing.CreateClass(L"Tolva_Nothing");
    };
    m_probe.GetObject = [&](auto&, CWomContext& context, auto) { return fail(context); };
    m_probe.Enumerate = [&](CWomContext& context, auto) { return fail(context); };
    m_probe.Put = [&](auto&, CWomContext& context, auto&) { return fail(context); };
    m_probe.Method = [&](auto&, auto, CWomContext& context, auto&, auto&) { return fail(context); };
    m_sink->OnStatus = [] { ZebDebug().Write("status"); };
    const CTraceCapture trace;
    EXPECT_EQ(Make(GetParam().request), wmi::NotFound);
    ExpectReportedWithin(trace, GetParam().providerException);
    EXPECT_NE(seen, nullptr);
    ASSERT_TRUE(Status().Object);
    EXPECT_EQ(Status().Result, wmi::Failed);
    EXPECT_EQ(StatusNumber(L"StatusCode"), static_cast<LONG>(0x80040903));
    EXPECT_EQ(StatusText(L"Operation"), OperationName());
    EXPECT_EQ(StatusText(L"File"), L"Common/src/WomClassObject");
    ExpectBalanced(trace, GetParam().providerException);
}

TEST_P(BarrierTest, AnyOtherExceptionIsReportedAsUnhandled)
{
    const std::function<HRESULT()> throwers[] = {
        []() -> HRESULT { throw 42; },
        []() -> HRESULT { throw std::bad_alloc(); },
        []() -> HRESULT { throw std::runtime_error("unexpected"); },
    };
    for (const auto& thrower : throwers)
    {
        m_sink = MakeCom<CFakeSink>();
        m_sink->OnStatus = [] { ZebDebug().Write("status"); };
        ProbeDoes(thrower);
        const CTraceCapture trace;
        EXPECT_EQ(Make(GetParam().request), wmi::Failed);
        ExpectReportedWithin(trace, GetParam().unhandledException);
        EXPECT_EQ(Status().Flags, WBEM_STATUS_COMPLETE);
        EXPECT_EQ(Status().Result, wmi::Failed);
        EXPECT_FALSE(Status().Parameter);
        ASSERT_TRUE(Status().Object);
        EXPECT_EQ(StatusText(L"__CLASS"), L"Tolva_ExtendedStatus");
        EXPECT_EQ(StatusNumber(L"StatusCode"), static_cast<LONG>(0x8004091A));
        EXPECT_EQ(StatusText(L"ParameterInfo"), GetParam().unhandledOperation);
        EXPECT_EQ(StatusText(L"Operation"), OperationName());
        EXPECT_EQ(StatusText(L"ProviderName"), L"DREVOK_PROVIDER");
        EXPECT_TRUE(StatusText(L"File").ends_with(L"CDM/src/ProviderImp"));
        EXPECT_EQ(StatusNumber(L"Line"), GetParam().line);
        EXPECT_EQ(StatusText(L"SessionHandle"), L"");
        CVariant reasons;
        Status().Object->Get(L"RuleFailureReasons", 0, reasons.Put(), nullptr, nullptr);
        ASSERT_EQ(reasons.vt, VT_ARRAY | VT_BSTR);
        LONG upper = 0;
        SafeArrayGetUBound(reasons.parray, 1, &upper);
        EXPECT_EQ(upper, -1) << "no reasons";
        ExpectBalanced(trace, GetParam().unhandledException);
    }
}

TEST_P(BarrierTest, StatusThatCannotBeMadeIsNotSent)
{
    ProbeDoes(
        [&]() -> HRESULT
        {
            m_host.Services->FailGetObject(1, E_ACCESSDENIED);
            throw 42;
        });
    EXPECT_EQ(Make(GetParam().request), wmi::Failed);
    EXPECT_TRUE(m_sink->Statuses().empty());
}

TEST_P(BarrierTest, ProcessGoesOnServing)
{
    ProbeDoes([]() -> HRESULT { throw 42; });
    Make(GetParam().request);
    m_sink = MakeCom<CFakeSink>();
    ProbeDoes([] { return S_OK; });
    EXPECT_EQ(Make(GetParam().request), S_OK);
    EXPECT_EQ(Status().Result, S_OK);
}

INSTANTIATE_TEST_SUITE_P(Requests, BarrierTest, testing::ValuesIn(kBarriers),
                         [](const auto& info) { return info.param.request.name; });
} // namespace
