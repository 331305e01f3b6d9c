#include "FakeDiagnostics.h"

#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Variant.h"
#include "InstanceError.h"
#include "standin/object/Objects.h"
#include "tests/support/ServedSchema.h"
#include "tools/zebdiag/WmiValue.h"

#include <stdexcept>

namespace zebdiag
{
namespace
{
constexpr wchar_t kComputer[] = L"WS42";
constexpr wchar_t kStarted[] = L"20240501134510.000000+000";
constexpr wchar_t kEnded[] = L"20240501134511.000000+000";

class CObjects final : public CComObject<IEnumWbemClassObject>
{
  public:
    CObjects(std::vector<ComPtr<IWbemClassObject>> objects, ComPtr<CFakeSecurity> security, bool neverAnswers)
        : m_objects(std::move(objects)), m_security(std::move(security)), m_neverAnswers(neverAnswers)
    {
    }

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override
    {
        return CFakeSecurity::Answers(m_security, riid, out) ? S_OK : CComObject::QueryInterface(riid, out);
    }
    STDMETHODIMP Next(LONG timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) override
    {
        if (m_neverAnswers)
            return timeout == static_cast<LONG>(WBEM_INFINITE) ? wmi::Failed : HRESULT{WBEM_S_TIMEDOUT};
        for (*returned = 0; *returned < count && m_next < m_objects.size(); ++*returned)
            objects[*returned] = m_objects[m_next++].Copy();
        return *returned == count ? wmi::NoError : HRESULT{WBEM_S_FALSE};
    }
    STDMETHODIMP Reset() override { return wmi::NotSupported; }
    STDMETHODIMP NextAsync(ULONG, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP Clone(IEnumWbemClassObject**) override { return wmi::NotSupported; }
    STDMETHODIMP Skip(LONG, ULONG) override { return wmi::NotSupported; }

  private:
    std::vector<ComPtr<IWbemClassObject>> m_objects;
    const ComPtr<CFakeSecurity> m_security;
    const bool m_neverAnswers;
    size_t m_next = 0;
};

ComPtr<IWbemClassObject> NewInstance(const wchar_t* className)
{
    return standin::MakeInstance(ServedSchema().GetDefinition(kServedNamespace, className));
}

void Put(IWbemClassObject* object, const wchar_t* name, CVariant value)
{
    if (FAILED(object->Put(name, 0, &value, 0)))
        throw std::runtime_error("a property of the schema does not take what the provider writes");
}

void PutText(IWbemClassObject* object, const wchar_t* name, const std::wstring& text)
{
    Put(object, name, CVariant::FromText(text.c_str()));
}

void PutValues(IWbemClassObject* object, const CSettingValues& values)
{
    Put(object, L"QuickMode", values.Quick ? CVariant::FromBool(*values.Quick) : CVariant::Null());
    Put(object, L"ReportStatusMessages",
        values.Report ? CVariant::FromBool(*values.Report) : CVariant::Null());
    Put(object, L"PercentOfTestCoverage",
        values.Coverage ? CVariant::FromByte(static_cast<BYTE>(*values.Coverage)) : CVariant::Null());
}

std::wstring AdapterOf(const std::wstring& key)
{
    return key.substr(key.find(L'@') + 1);
}

// The test that a path is about: the value of the key that names it in each class.
std::wstring KeyIn(const std::wstring& path)
{
    for (const wchar_t* name : {L"DiagnosticName=\"", L"SettingID=\"", L".Name=\""})
        if (const size_t at = path.find(name); at != std::wstring::npos)
        {
            const size_t begin = at + wcslen(name);
            return path.substr(begin, path.find(L'"', begin) - begin);
        }
    return {};
}
} // namespace

ComPtr<IEnumWbemClassObject> EnumerateObjects(std::vector<ComPtr<IWbemClassObject>> objects,
                                              ComPtr<CFakeSecurity> security, bool neverAnswers)
{
    return MakeCom<CObjects>(std::move(objects), std::move(security), neverAnswers);
}

void CFakeDiagnostics::Note(IWbemContext* context)
{
    CVariant value;
    const bool told =
        context && SUCCEEDED(context->GetValue(L"LocaleID", 0, value.Put())) && value.vt == VT_BSTR;
    CLockScope lock(m_lock);
    Locales.push_back(told ? value.bstrVal : L"-");
}

ComPtr<IWbemClassObject> CFakeDiagnostics::ClassNamed(const std::wstring& name)
{
    if (Missing.contains(name))
        return nullptr;
    if (!OtherVersion || name != kTestClass)
        return ServedSchema().GetClass(kServedNamespace, name);
    // A class derived from it has all that it has but the version.
    const auto other = std::make_shared<standin::CClassDefinition>(
        name, *ServedSchema().GetDefinition(kServedNamespace, name));
    if (!OtherVersion->empty())
        other->Qualifiers.Set(standin::MakeQualifier(L"Version", CVariant::FromText(OtherVersion->c_str())));
    return standin::MakeClassObject(other);
}

CFakeDiagnostics::CFakeTest& CFakeDiagnostics::Add(const wchar_t* key, const wchar_t* caption,
                                                   bool sendsPackets)
{
    CFakeTest& test = Tests[key];
    test.Caption = caption;
    test.SendsPackets = sendsPackets;
    Settings[key] = sendsPackets ? CSettingValues{true, true, 100} : CSettingValues{};
    return test;
}

HRESULT CFakeDiagnostics::FailureOf(const std::wstring& request)
{
    CLockScope lock(m_lock);
    const auto found = Failures.find(request);
    if (found == Failures.end())
        return S_OK;
    if (!found->second.Description.empty())
    {
        const ComPtr<IWbemClassObject> status = NewInstance(L"Tolva_ExtendedStatus");
        PutText(status.Get(), L"Description", found->second.Description);
        SetErrorInfo(0, MakeCom<CInstanceError>(status).Get());
    }
    return found->second.Status;
}

ComPtr<IWbemClassObject> CFakeDiagnostics::MakeTest(const std::wstring& key)
{
    const auto found = Tests.find(key);
    if (found == Tests.end())
        return nullptr;
    const CFakeTest& test = found->second;
    ComPtr<IWbemClassObject> object = NewInstance(kTestClass);
    PutText(object.Get(), L"Name", key);
    PutText(object.Get(), L"Caption", test.Caption);
    PutText(object.Get(), L"Description", L"Looks at " + test.Caption + L".");
    Put(object.Get(), L"IsInUse", CVariant::FromBool(test.InUse));
    PutText(object.Get(), L"SystemName", kComputer);
    SAFEARRAY* codes = SafeArrayCreateVector(VT_I4, 0, test.SendsPackets ? 2 : 1);
    for (LONG i = 0; i < (test.SendsPackets ? 2 : 1); ++i)
    {
        LONG code = i ? 7 : 2;
        SafeArrayPutElement(codes, &i, &code);
    }
    Put(object.Get(), L"Characteristics", CVariant::FromArray(codes, VT_I4));
    return object;
}

ComPtr<IWbemClassObject> CFakeDiagnostics::MakeResult(const std::wstring& key)
{
    const auto found = Results.find(key);
    if (found == Results.end())
        return nullptr;
    const CFakeResult& result = found->second;
    ComPtr<IWbemClassObject> object = NewInstance(kResultClass);
    PutText(object.Get(), L"DiagnosticName", key);
    PutText(object.Get(), L"DiagnosticCreationClassName", kTestClass);
    PutText(object.Get(), L"ExecutionID", AdapterOf(key));
    Put(object.Get(), L"TestState", CVariant::FromLong(static_cast<long>(result.State)));
    Put(object.Get(), L"PercentComplete", CVariant::FromByte(static_cast<BYTE>(result.Percent)));
    PutText(object.Get(), L"TestStartTime", kStarted);
    if (result.State != TestState::InProgress)
        PutText(object.Get(), L"TestCompletionTime", kEnded);
    SAFEARRAY* lines = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(result.Lines.size()));
    for (LONG i = 0; i < static_cast<LONG>(result.Lines.size()); ++i)
        SafeArrayPutElement(lines, &i, CBstr(result.Lines[static_cast<size_t>(i)]).Get());
    Put(object.Get(), L"TestResults", CVariant::FromArray(lines, VT_BSTR));
    PutValues(object.Get(), result.Setting);
    return object;
}

ComPtr<IWbemClassObject> CFakeDiagnostics::MakeSetting(const std::wstring& key)
{
    const auto found = Settings.find(key);
    if (found == Settings.end())
        return nullptr;
    ComPtr<IWbemClassObject> object = NewInstance(kSettingClass);
    PutText(object.Get(), L"SettingID", key);
    PutValues(object.Get(), found->second);
    return object;
}

ComPtr<IWbemClassObject> CFakeDiagnostics::Registration(const std::wstring& path)
{
    ComPtr<IWbemClassObject> object =
        Missing.contains(L"__Win32Provider") ? nullptr : ServedSchema().GetInstance(kServedNamespace, path);
    if (object && !ProviderId.empty())
        PutText(object.Get(), L"CLSID", ProviderId);
    return object;
}

ComPtr<IWbemClassObject> CFakeDiagnostics::Instance(const std::wstring& className, const std::wstring& key)
{
    CLockScope lock(m_lock);
    return className == kTestClass     ? MakeTest(key)
           : className == kResultClass ? MakeResult(key)
                                       : MakeSetting(key);
}

STDMETHODIMP CFakeDiagnostics::GetObject(const BSTR path, LONG, IWbemContext* context,
                                         IWbemClassObject** object, IWbemCallResult**)
{
    Note(context);
    const std::wstring wanted = path;
    const std::wstring className = wanted.substr(0, wanted.find(L'.'));
    if (const HRESULT failure = FailureOf(L"Get " + className); FAILED(failure))
        return failure;
    ComPtr<IWbemClassObject> found = className == wanted            ? ClassNamed(className)
                                     : className.starts_with(L"__") ? Registration(wanted)
                                                                    : Instance(className, KeyIn(wanted));
    *object = found.Detach();
    return *object ? wmi::NoError : wmi::NotFound;
}

STDMETHODIMP CFakeDiagnostics::CreateInstanceEnum(const BSTR className, LONG, IWbemContext* context,
                                                  IEnumWbemClassObject** objects)
{
    Note(context);
    if (const HRESULT failure = FailureOf(std::wstring(L"Enum ") + className); FAILED(failure))
        return failure;
    CLockScope lock(m_lock);
    std::vector<ComPtr<IWbemClassObject>> found;
    const auto add = [&](const auto& map)
    {
        for (const auto& [key, value] : map)
            found.push_back(Instance(className, key));
    };
    if (className == std::wstring(kTestClass))
        add(Tests);
    else if (className == std::wstring(kResultClass))
        add(Results);
    else
        add(Settings);
    *objects = EnumerateObjects(std::move(found), Security, NeverAnswers).Detach();
    return wmi::NoError;
}

STDMETHODIMP CFakeDiagnostics::PutInstance(IWbemClassObject* instance, LONG, IWbemContext* context,
                                           IWbemCallResult**)
{
    Note(context);
    if (const HRESULT failure = FailureOf(L"Put"); FAILED(failure))
        return failure;
    const CSettingValues values = {ReadFlag(instance, L"QuickMode"),
                                   ReadFlag(instance, L"ReportStatusMessages"),
                                   ReadNumber(instance, L"PercentOfTestCoverage")};
    CLockScope lock(m_lock);
    Puts.push_back(values);
    Settings[ReadText(instance, L"SettingID").value_or(L"")] = values;
    return wmi::NoError;
}

STDMETHODIMP CFakeDiagnostics::ExecMethod(const BSTR path, const BSTR method, LONG, IWbemContext* context,
                                          IWbemClassObject* in, IWbemClassObject** out, IWbemCallResult**)
{
    Note(context);
    CCall call = {path, method, {}};
    for (const wchar_t* name : {L"SystemElement", L"Setting", L"Result"})
        if (const auto text = ReadText(in, name))
            call.Arguments[name] = *text;
    {
        CLockScope lock(m_lock);
        Calls.push_back(call);
    }
    Before(call.Method);
    if (const HRESULT failure = FailureOf(call.Method); FAILED(failure))
        return failure;
    const auto* definition =
        ServedSchema().GetDefinition(kServedNamespace, kTestClass)->FindMethod(call.Method);
    const ComPtr<IWbemClassObject> answer = standin::MakeInstance(definition->Out);
    const std::wstring key = KeyIn(call.Path);
    if (call.Method == L"RunTest")
        Run(key, answer.Get());
    else if (call.Method == L"DiscontinueTest")
        Stop(key, answer.Get());
    else
        Clear(key);
    After(call.Method);
    *out = answer.Copy();
    SetEvent(m_callEnded.Get());
    return wmi::NoError;
}

void CFakeDiagnostics::Run(const std::wstring& key, IWbemClassObject* out)
{
    PutText(out, L"Result", L"");
    Put(out, L"ReturnValue", CVariant::FromLong(0));
    std::function<TestState()> run;
    {
        CLockScope lock(m_lock);
        CFakeTest& test = Tests.at(key);
        if (test.InUse || !test.Run)
            return;
        test.InUse = true;
        run = test.Run;
        CFakeResult& result = Results[key];
        result.State = TestState::InProgress;
        result.Percent = 0;
        result.Setting = Settings[key];
    }
    const TestState state = run();
    CLockScope lock(m_lock);
    Tests.at(key).InUse = false;
    Results[key].State = state;
    Results[key].Percent = state == TestState::Passed ? 100 : 0;
    PutText(out, L"Result", L"Tolva_DiagResult.DiagnosticName=\"" + key + L"\"");
}

void CFakeDiagnostics::Stop(const std::wstring& key, IWbemClassObject* out)
{
    if (!Tests.at(key).Stop())
        return;
    Put(out, L"TestingStopped", CVariant::FromBool(true));
    Put(out, L"ReturnValue", CVariant::FromLong(0));
}

void CFakeDiagnostics::Clear(const std::wstring& key)
{
    CLockScope lock(m_lock);
    if (!Tests.at(key).InUse)
        Results.erase(key);
}
} // namespace zebdiag
