#include "tests/support/FakeCallContext.h"
#include "tests/unit/provider/ProviderTest.h"

#include <algorithm>

namespace
{
class RequestsTest : public ProviderTest
{
  protected:
    RequestsTest() { m_host.Initialize(); }

    size_t Reverts(const CTraceCapture& trace) { return trace.Count("{ --> CWomSecurity::RevertToSelf"); }
    size_t Leaves(const CTraceCapture& trace, const char* request)
    {
        return trace.Count(std::string("} <-- CProviderImp::") + request);
    }
};

class EachRequestTest : public RequestsTest, public testing::WithParamInterface<CRequest>
{
};

TEST_P(EachRequestTest, EndsWithOneStatus)
{
    ProbeDoes([] { return WBEM_S_NO_ERROR; });
    const CTraceCapture trace;
    EXPECT_EQ(Make(GetParam()), S_OK);
    EXPECT_EQ(Status().Flags, WBEM_STATUS_COMPLETE);
    EXPECT_EQ(Status().Result, S_OK);
    EXPECT_FALSE(Status().Parameter);
    EXPECT_FALSE(Status().Object);
    EXPECT_EQ(Reverts(trace), 1u);
    EXPECT_EQ(Leaves(trace, GetParam().name), 1u);
}

TEST_P(EachRequestTest, HandsTheHandlersFailureToSinkAndCaller)
{
    ProbeDoes([] { return E_ACCESSDENIED; });
    // A method's result is replaced by that of sending its output.
    const bool isMethod = GetParam().name == std::string("ExecMethodAsync");
    EXPECT_EQ(Make(GetParam()), isMethod ? S_OK : E_ACCESSDENIED);
    EXPECT_EQ(Status().Result, isMethod ? S_OK : E_ACCESSDENIED);
}

TEST_P(EachRequestTest, GivesTheHandlerItsContext)
{
    const ComPtr<IWbemContext> caller = standin::MakeContext();
    CVariant session = CVariant::FromText(L"session 7");
    CVariant locale = CVariant::FromText(L"ms_407");
    caller->SetValue(L"SessionHandle", 0, &session);
    caller->SetValue(L"LocaleID", 0, &locale);
    int calls = 0;
    const auto look = [&](CWomContext& context)
    {
        ++calls;
        EXPECT_STREQ(context.ProviderName(), L"DREVOK_PROVIDER");
        EXPECT_EQ(context.OperationName(),
                  std::wstring(GetParam().name, GetParam().name + strlen(GetParam().name)));
        EXPECT_STREQ(context.SessionHandle(), L"session 7");
        EXPECT_EQ(context.Locale(), 0x407u);
        EXPECT_EQ(context.Flags(), 0x11);
        EXPECT_EQ(context.Namespace(), m_host.Services.Get());
        EXPECT_NE(context.Resources(), nullptr);
        return S_OK;
    };
    m_probe.GetObject = [&](auto&, CWomContext& context, auto) { return look(context); };
    m_probe.Enumerate = [&](CWomContext& context, auto) { return look(context); };
    m_probe.Put = [&](auto&, CWomContext& context, auto&) { return look(context); };
    m_probe.Method = [&](auto&, auto, CWomContext& context, auto&, auto&) { return look(context); };
    EXPECT_EQ(Make(GetParam(), 0x11, caller.Get()), S_OK);
    EXPECT_EQ(calls, 1);
}

TEST_P(EachRequestTest, RunsAsItsClientAndReverts)
{
    const auto client = MakeCom<CFakeCallContext>();
    const CCallContextScope scope(*client.Get());
    bool running = false;
    ProbeDoes(
        [&]
        {
            running = client->Running;
            return S_OK;
        });
    EXPECT_EQ(Make(GetParam()), S_OK);
    EXPECT_TRUE(running);
    EXPECT_FALSE(client->Running);
    EXPECT_EQ(client->Reverts, 1);
}

TEST_P(EachRequestTest, GoesOnWhereTheClientCannotBeImpersonated)
{
    const auto client = MakeCom<CFakeCallContext>();
    client->Answer = E_ACCESSDENIED;
    const CCallContextScope scope(*client.Get());
    ProbeDoes([] { return S_OK; });
    const CTraceCapture trace;
    EXPECT_EQ(Make(GetParam()), S_OK);
    EXPECT_TRUE(trace.Has("CoImpersonateClient failed <80070005>"));
}

TEST_P(EachRequestTest, NeedsASink)
{
    const CTraceCapture trace;
    EXPECT_EQ(GetParam().make(*m_host.Provider, nullptr, 0, nullptr), wmi::InvalidParameter);
    EXPECT_EQ(trace.Count(std::string("CProviderImp::") + GetParam().name + ": no response sink"), 1u);
    EXPECT_EQ(Leaves(trace, GetParam().name), 1u);
}

TEST_P(EachRequestTest, LeavesNothingBehind)
{
    Make(GetParam());
    m_sink = MakeCom<CFakeSink>();
    const long before = g_liveComObjects;
    ProbeDoes([] { return E_FAIL; });
    Make(GetParam());
    m_sink = MakeCom<CFakeSink>();
    EXPECT_EQ(g_liveComObjects, before);
}

INSTANTIATE_TEST_SUITE_P(Requests, EachRequestTest, testing::ValuesIn(kRequests),
                         [](const auto& info) { return info.param.name; });

// Request lines

TEST_F(RequestsTest, TraceTheirArguments)
{
    const CTraceCapture trace;
    for (const CRequest& request : kRequests)
        Make(request, 0x31);
    EXPECT_EQ(trace.Count("GetObjectAsync: <31>"), 1u);
    EXPECT_EQ(trace.Count("CreateInstanceEnumAsync: <Tolva_DiagTest> <31>"), 1u);
    EXPECT_EQ(trace.Count("PutInstanceAsync <31>"), 1u);
    EXPECT_EQ(trace.Count("ExecMethodAsync: <RunTest> <31>"), 1u);
    EXPECT_EQ(trace.Count("Tolva_DiagTest.Name=\"1@A\""), 2u);
}

TEST_F(RequestsTest, LongPathsAreTracedInPieces)
{
    const std::wstring key(10000, L'x');
    const std::wstring path = L"Tolva_DiagTest.Name=\"" + key + L"\"";
    std::wstring seen;
    m_probe.GetObject = [&](const CParsedObjectPath& parsed, auto&, auto)
    {
        seen = parsed.Keys.at(0).Text().View();
        return S_OK;
    };
    const CTraceCapture trace;
    EXPECT_EQ(m_host.Provider->GetObjectAsync(Bstr(path.c_str()).Get(), 0, nullptr, m_sink.Get()), S_OK);
    EXPECT_EQ(seen, key);
    EXPECT_EQ(trace.Count(std::string(974, 'x')), 9u) << "all but the first piece and the last";
    for (const std::string& line : trace.Lines())
        EXPECT_LE(line.size(), 974u + 8u);
}

// Finding the class

TEST_F(RequestsTest, ClassNamesHaveNoLetterCase)
{
    EXPECT_EQ(
        m_host.Provider->CreateInstanceEnumAsync(Bstr(L"tolva_diagtest").Get(), 0, nullptr, m_sink.Get()),
        S_OK);
    EXPECT_EQ(m_host.Provider->GetObjectAsync(Bstr(L"TOLVA_DIAGTEST=\"1\"").Get(), 0, nullptr, m_sink.Get()),
              S_OK);
    EXPECT_EQ(m_sink->Statuses().size(), 2u);
}

TEST_F(RequestsTest, PathsMayNameServerAndNamespace)
{
    for (const wchar_t* path : {L"\\\\HOST\\root\\cimv2:Tolva_DiagTest=\"1\"",
                                L"root\\cimv2:Tolva_DiagTest=\"1\"", L"Tolva_DiagTest=\"1\""})
        EXPECT_EQ(m_host.Provider->GetObjectAsync(Bstr(path).Get(), 0, nullptr, m_sink.Get()), S_OK);
}

// Writing

TEST_F(RequestsTest, FlagsThatLetAnInstanceBeWritten)
{
    for (const long flags : {0L, 1L, 3L, 0x20001L})
    {
        int calls = 0;
        m_probe.Put = [&](auto&&...)
        {
            ++calls;
            return S_OK;
        };
        EXPECT_EQ(m_host.Provider->PutInstanceAsync(NewTestInstance().Get(), flags, nullptr, m_sink.Get()),
                  S_OK);
        EXPECT_EQ(calls, 1) << flags;
    }
}

TEST_F(RequestsTest, WrittenInstanceReachesTheHandlerAndItsPathTheSink)
{
    const ComPtr<IWbemClassObject> instance = NewTestInstance();
    m_probe.Put = [&](CWomClassObject& wrapped, CWomContext&, CBstr& path)
    {
        EXPECT_EQ(wrapped.Object(), instance.Get());
        CBstr text;
        EXPECT_EQ(wrapped.GetProperty(L"NoSuchProperty", text), wmi::NotFound) << "its failures are returned";
        path = CBstr(L"Tolva_DiagTest.Name=\"1@A\"");
        return S_OK;
    };
    EXPECT_EQ(m_host.Provider->PutInstanceAsync(instance.Get(), 0, nullptr, m_sink.Get()), S_OK);
    EXPECT_EQ(Status().Parameter, L"Tolva_DiagTest.Name=\"1@A\"");
}

TEST_F(RequestsTest, ClassThatCannotBeWrittenSaysSo)
{
    EXPECT_EQ(m_host.Provider->PutInstanceAsync(NewTestInstance().Get(), 0, nullptr, m_sink.Get()),
              wmi::NotSupported);
    EXPECT_EQ(Status().Result, wmi::NotSupported);
}

TEST_F(RequestsTest, NoInstanceAtAllIsAnExtendedStatus)
{
    EXPECT_EQ(m_host.Provider->PutInstanceAsync(nullptr, 0, nullptr, m_sink.Get()), E_FAIL);
    EXPECT_EQ(Status().Result, wmi::Failed);
    EXPECT_TRUE(Status().Object);
}

// Methods

TEST_F(RequestsTest, MethodGetsItsParametersAndOutputIsSent)
{
    const ComPtr<IWbemClassObject> inParams = NewTestInstance();
    m_probe.Method = [&](const CParsedObjectPath& path, const wchar_t* method, CWomContext&,
                         CWomClassObject& in, CWomClassObject& out)
    {
        EXPECT_EQ(path.Class, L"Tolva_DiagTest");
        EXPECT_STREQ(method, L"RunTest");
        EXPECT_EQ(in.Object(), inParams.Get());
        EXPECT_EQ(out.SetProperty(L"ReturnValue", 7L), S_OK);
        return S_OK;
    };
    EXPECT_EQ(m_host.Provider->ExecMethodAsync(Bstr(L"Tolva_DiagTest=\"1@A\"").Get(), Bstr(L"RunTest").Get(),
                                               0, nullptr, inParams.Get(), m_sink.Get()),
              S_OK);
    ASSERT_EQ(m_sink->Objects().size(), 1u);
    CVariant value;
    EXPECT_EQ(m_sink->Objects()[0]->Get(L"ReturnValue", 0, value.Put(), nullptr, nullptr), S_OK);
    EXPECT_EQ(value.lVal, 7);
    LONG genus = 0;
    CVariant genusValue;
    EXPECT_EQ(m_sink->Objects()[0]->Get(L"__GENUS", 0, genusValue.Put(), nullptr, nullptr), S_OK);
    genus = genusValue.lVal;
    EXPECT_EQ(genus, WBEM_GENUS_INSTANCE);
}

TEST_F(RequestsTest, SendingTheOutputDecidesAboutAMethod)
{
    ProbeDoes([] { return E_ACCESSDENIED; });
    EXPECT_EQ(Make(kRequests[3]), S_OK);
    EXPECT_EQ(Status().Result, S_OK);
    EXPECT_EQ(m_sink->Objects().size(), 1u);

    m_sink = MakeCom<CFakeSink>();
    m_sink->FailIndicate(1, RPC_E_DISCONNECTED);
    ProbeDoes([] { return S_OK; });
    EXPECT_EQ(Make(kRequests[3]), RPC_E_DISCONNECTED);
    EXPECT_EQ(Status().Result, RPC_E_DISCONNECTED);
}

TEST_F(RequestsTest, MethodWithoutOutputReturnsTheHandlersResult)
{
    m_probe.Method = [](auto&, auto, auto&, auto&, CWomClassObject& out)
    {
        out.Wrap(nullptr);
        return E_ACCESSDENIED;
    };
    EXPECT_EQ(Make(kRequests[3]), E_ACCESSDENIED);
    EXPECT_EQ(Status().Result, E_ACCESSDENIED);
    EXPECT_TRUE(m_sink->Indications().empty());
}

TEST_F(RequestsTest, ClassWithoutMethodsSendsItsOutputAllTheSame)
{
    // The output is there all the same and is sent.
    EXPECT_EQ(Make(kRequests[3]), S_OK);
    EXPECT_EQ(m_sink->Objects().size(), 1u);
}

TEST_F(RequestsTest, OutputIsTracedOnceMoreWhenItHasBeenSent)
{
    for (const HRESULT sent : {S_OK, RPC_E_DISCONNECTED})
    {
        m_sink = MakeCom<CFakeSink>();
        if (FAILED(sent))
            m_sink->FailIndicate(1, sent);
        const CTraceCapture trace;
        EXPECT_EQ(Make(kRequests[3]), sent);
        const std::vector<std::string> lines = trace.Lines();
        const auto leave = std::find_if(lines.begin(), lines.end(),
                                        [](const std::string& line) {
                                            return line.find("} <-- CWomClassObject::Indicate") != line.npos;
                                        });
        ASSERT_NE(lines.end(), leave);
        const auto dump = std::find_if(leave, lines.end(),
                                       [](const std::string& line)
                                       { return line.ends_with("{ --> CWomClassObject::DebugOutput"); });
        ASSERT_NE(lines.end(), dump);
        EXPECT_NE(lines.end(), std::find(dump, lines.end(), "ReturnValue = <null>"));
    }
}

TEST_F(RequestsTest, MethodWithoutAnOutSignatureIsAnExtendedStatus)
{
    auto definition = std::make_shared<standin::CClassDefinition>(
        *ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagTest"));
    standin::CMethodDefinition mute;
    mute.Name = L"Mute";
    definition->SetMethod(mute);
    m_host.Restart(kProbeRows);
    m_host.Services = MakeCom<CFakeServices>(
        [definition](const std::wstring& path)
        {
            return path == L"Tolva_DiagTest" ? standin::MakeClassObject(definition)
                                             : ServedSchema().GetClass(kServedNamespace, path);
        });
    m_host.Initialize();
    bool called = false;
    ProbeDoes(
        [&]
        {
            called = true;
            return S_OK;
        });
    EXPECT_EQ(m_host.Provider->ExecMethodAsync(Bstr(L"Tolva_DiagTest=\"1@A\"").Get(), Bstr(L"Mute").Get(), 0,
                                               nullptr, nullptr, m_sink.Get()),
              E_FAIL);
    EXPECT_FALSE(called);
    EXPECT_EQ(Status().Result, wmi::Failed);
    ASSERT_TRUE(Status().Object);
    CVariant code;
    EXPECT_EQ(Status().Object->Get(L"StatusCode", 0, code.Put(), nullptr, nullptr), S_OK);
    EXPECT_EQ(code.lVal, static_cast<LONG>(0x80040902)) << "as spawning from an empty object";
}

TEST_F(RequestsTest, SpellingsOfAClassShareOneDefinition)
{
    m_host.Services->Forget();
    for (const wchar_t* path :
         {L"Tolva_DiagTest=\"1@A\"", L"TOLVA_DIAGTEST=\"1@A\"", L"tolva_diagtest=\"1@A\""})
        EXPECT_EQ(m_host.Provider->ExecMethodAsync(Bstr(path).Get(), Bstr(L"RunTest").Get(), 0, nullptr,
                                                   nullptr, m_sink.Get()),
                  S_OK);
    EXPECT_EQ(m_host.Services->GetCalls().size(), 1u);
}

TEST_F(RequestsTest, UnknownMethodIsAnExtendedStatus)
{
    for (const wchar_t* method : {L"Reboot", static_cast<const wchar_t*>(nullptr)})
    {
        m_sink = MakeCom<CFakeSink>();
        EXPECT_TRUE(FAILED(m_host.Provider->ExecMethodAsync(
            Bstr(L"Tolva_DiagTest=\"1@A\"").Get(), Bstr(method).Get(), 0, nullptr, nullptr, m_sink.Get())));
        EXPECT_EQ(Status().Result, wmi::Failed);
        EXPECT_TRUE(Status().Object);
    }
}

// Everything else

TEST_F(RequestsTest, OtherOperationsAreNotSupportedAndLeaveNoTrace)
{
    IWbemServices& services = *m_host.Provider.Get();
    const CBstr text(L"Tolva_DiagTest");
    const CTraceCapture trace;
    const HRESULT answers[] = {
        services.OpenNamespace(text.Get(), 0, nullptr, nullptr, nullptr),
        services.CancelAsyncCall(m_sink.Get()),
        services.QueryObjectSink(0, nullptr),
        services.GetObject(text.Get(), 0, nullptr, nullptr, nullptr),
        services.PutClass(nullptr, 0, nullptr, nullptr),
        services.PutClassAsync(nullptr, 0, nullptr, m_sink.Get()),
        services.DeleteClass(text.Get(), 0, nullptr, nullptr),
        services.DeleteClassAsync(text.Get(), 0, nullptr, m_sink.Get()),
        services.CreateClassEnum(text.Get(), 0, nullptr, nullptr),
        services.CreateClassEnumAsync(text.Get(), 0, nullptr, m_sink.Get()),
        services.PutInstance(nullptr, 0, nullptr, nullptr),
        services.DeleteInstance(text.Get(), 0, nullptr, nullptr),
        services.DeleteInstanceAsync(text.Get(), 0, nullptr, m_sink.Get()),
        services.CreateInstanceEnum(text.Get(), 0, nullptr, nullptr),
        services.ExecQuery(text.Get(), text.Get(), 0, nullptr, nullptr),
        services.ExecQueryAsync(text.Get(), text.Get(), 0, nullptr, m_sink.Get()),
        services.ExecNotificationQuery(text.Get(), text.Get(), 0, nullptr, nullptr),
        services.ExecNotificationQueryAsync(text.Get(), text.Get(), 0, nullptr, m_sink.Get()),
        services.ExecMethod(text.Get(), text.Get(), 0, nullptr, nullptr, nullptr, nullptr),
    };
    for (const HRESULT answer : answers)
        EXPECT_EQ(answer, wmi::NotSupported);
    EXPECT_TRUE(trace.Lines().empty());
    EXPECT_TRUE(m_sink->Statuses().empty());
}

TEST_F(RequestsTest, ProviderAnswersForItsTwoInterfaces)
{
    ComPtr<IWbemServices> services;
    ComPtr<IWbemProviderInit> init;
    ComPtr<IUnknown> first, second;
    EXPECT_EQ(m_host.Provider->QueryInterface(IID_IWbemServices, services.PutVoid()), S_OK);
    EXPECT_EQ(services.As(init), S_OK);
    EXPECT_EQ(init.As(first), S_OK);
    EXPECT_EQ(services.As(second), S_OK);
    EXPECT_EQ(first.Get(), second.Get());
    void* other = this;
    EXPECT_EQ(services->QueryInterface(IID_IWbemClassObject, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
}
} // namespace
