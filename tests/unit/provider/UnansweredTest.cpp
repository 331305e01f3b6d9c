// Requests that end without a status on the sink.
#include "tests/support/FakeCallContext.h"
#include "tests/unit/provider/ProviderTest.h"

namespace
{
struct Unanswered
{
    const char* name;
    HRESULT (*make)(CProviderImp& provider, IWbemObjectSink* sink);
    HRESULT status;
    const char* line;
    const char* request;
    bool reverts;
};

class UnansweredTest : public ProviderTest, public testing::WithParamInterface<Unanswered>
{
  protected:
    UnansweredTest() { m_host.Initialize(); }

    // The lines in which the provider says that something failed.
    static std::vector<std::string> Failures(const CTraceCapture& trace)
    {
        std::vector<std::string> lines = trace.Lines();
        std::erase_if(lines, [](const std::string& line)
                      { return !line.starts_with("CProviderImp::") || !line.ends_with(" failed"); });
        return lines;
    }
};

// The sink hears nothing, and the thread is left as it is.
TEST_P(UnansweredTest, ReturnsWithoutAStatus)
{
    const auto client = MakeCom<CFakeCallContext>();
    const CCallContextScope scope(*client.Get());
    bool called = false;
    ProbeDoes(
        [&]
        {
            called = true;
            return S_OK;
        });
    const CTraceCapture trace;
    EXPECT_EQ(GetParam().make(*m_host.Provider, m_sink.Get()), GetParam().status);
    EXPECT_EQ(Failures(trace),
              GetParam().line[0] ? std::vector<std::string>{GetParam().line} : std::vector<std::string>{});
    EXPECT_TRUE(m_sink->Statuses().empty());
    EXPECT_FALSE(called);
    EXPECT_EQ(client->Reverts, GetParam().reverts ? 1 : 0);
    EXPECT_EQ(trace.Count(std::string("} <-- CProviderImp::") + GetParam().request), 1u);
}

template <const auto& Path>
HRESULT GetObjectOf(CProviderImp& provider, IWbemObjectSink* sink)
{
    return provider.GetObjectAsync(Bstr(Path).Get(), 0, nullptr, sink);
}

template <const auto& Path>
HRESULT RunTestOf(CProviderImp& provider, IWbemObjectSink* sink)
{
    return provider.ExecMethodAsync(Bstr(Path).Get(), Bstr(L"RunTest").Get(), 0, nullptr, nullptr, sink);
}

template <const auto& Name>
HRESULT EnumerateOf(CProviderImp& provider, IWbemObjectSink* sink)
{
    return provider.CreateInstanceEnumAsync(Bstr(Name).Get(), 0, nullptr, sink);
}

HRESULT PutOfOtherClass(CProviderImp& provider, IWbemObjectSink* sink)
{
    const auto instance =
        standin::MakeInstance(ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagSetting"));
    return provider.PutInstanceAsync(instance.Get(), 0, nullptr, sink);
}

template <long Flags>
HRESULT PutWithFlags(CProviderImp& provider, IWbemObjectSink* sink)
{
    return provider.PutInstanceAsync(NewTestInstance().Get(), Flags, nullptr, sink);
}

constexpr wchar_t kEmpty[] = L"";
constexpr wchar_t kNoValue[] = L"Tolva_DiagTest.Name=";
constexpr wchar_t kBareWord[] = L"Tolva_DiagTest.Name=abc";
constexpr wchar_t kOpenQuote[] = L"Tolva_DiagTest.Name=\"abc";
constexpr wchar_t kNoClass[] = L".Name=\"abc\"";
constexpr wchar_t kUnknown[] = L"Tolva_Nothing.Name=\"abc\"";
constexpr wchar_t kUnknownClass[] = L"Tolva_Nothing";
constexpr const wchar_t* kNull = nullptr;

constexpr char kGetParse[] = "CProviderImp::GetObjectAsync: Parse failed";
constexpr char kExecParse[] = "CProviderImp::ExecMethodAsync: Parse failed";

INSTANTIATE_TEST_SUITE_P(
    Requests, UnansweredTest,
    testing::Values(
        Unanswered{"GetEmptyPath", &GetObjectOf<kEmpty>, wmi::Failed, kGetParse, "GetObjectAsync", false},
        Unanswered{"GetNullPath", &GetObjectOf<kNull>, wmi::Failed, kGetParse, "GetObjectAsync", false},
        Unanswered{"GetWithoutValue", &GetObjectOf<kNoValue>, wmi::Failed, kGetParse, "GetObjectAsync",
                   false},
        Unanswered{"GetBareWord", &GetObjectOf<kBareWord>, wmi::Failed, kGetParse, "GetObjectAsync", false},
        Unanswered{"GetOpenQuote", &GetObjectOf<kOpenQuote>, wmi::Failed, kGetParse, "GetObjectAsync", false},
        Unanswered{"GetWithoutClass", &GetObjectOf<kNoClass>, wmi::Failed, kGetParse, "GetObjectAsync",
                   false},
        Unanswered{"GetUnknownClass", &GetObjectOf<kUnknown>, wmi::Failed,
                   "CProviderImp::GetObjectAsync: FindClass failed", "GetObjectAsync", false},
        Unanswered{"EnumerateUnknownClass", &EnumerateOf<kUnknownClass>, wmi::Failed,
                   "CProviderImp::CreateInstanceEnumAsync: FindClass failed", "CreateInstanceEnumAsync",
                   false},
        Unanswered{"EnumerateNullClass", &EnumerateOf<kNull>, wmi::Failed,
                   "CProviderImp::CreateInstanceEnumAsync: FindClass failed", "CreateInstanceEnumAsync",
                   false},
        Unanswered{"PutUnknownClass", &PutOfOtherClass, wmi::Failed,
                   "CProviderImp::PutInstanceAsync: FindClass failed", "PutInstanceAsync", false},
        Unanswered{"ExecNullPath", &RunTestOf<kNull>, wmi::Failed, kExecParse, "ExecMethodAsync", false},
        Unanswered{"ExecOpenQuote", &RunTestOf<kOpenQuote>, wmi::Failed, kExecParse, "ExecMethodAsync",
                   false},
        Unanswered{"ExecUnknownClass", &RunTestOf<kUnknown>, wmi::Failed,
                   "CProviderImp::ExecMethodAsync: SetStatus failed", "ExecMethodAsync", false},
        Unanswered{"PutCreateOnly", &PutWithFlags<WBEM_FLAG_CREATE_ONLY>, wmi::NotSupported, "",
                   "PutInstanceAsync", true},
        Unanswered{"PutOtherFlags", &PutWithFlags<0x20000>, wmi::NotSupported, "", "PutInstanceAsync", true}),
    [](const auto& info) { return info.param.name; });
} // namespace
