#include "tests/system/standin/TestProvider.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"
#include "tests/system/standin/TestProviderIds.h"

#include <functional>
#include <map>
#include <thread>

namespace
{
HANDLE LastReleased()
{
    static const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return event;
}

std::atomic<int> g_providers{0};

// A provider implements two interfaces of which one already has all its methods written.
class CTestProvider : public standin::CUnsupportedServices<>, public IWbemProviderInit
{
  public:
    explicit CTestProvider(bool broken) : m_broken(broken) { ++g_providers; }
    ~CTestProvider() override
    {
        if (--g_providers == 0)
            SetEvent(LastReleased());
    }

    STDMETHODIMP QueryInterface(REFIID riid, void** out) override
    {
        if (out && IsEqualIID(riid, __uuidof(IWbemProviderInit)))
        {
            *out = static_cast<IWbemProviderInit*>(this);
            AddRef();
            return S_OK;
        }
        return CUnsupportedServices<>::QueryInterface(riid, out);
    }
    STDMETHODIMP_(ULONG) AddRef() override { return CUnsupportedServices<>::AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return CUnsupportedServices<>::Release(); }

    STDMETHODIMP Initialize(LPWSTR, LONG, LPWSTR, LPWSTR, IWbemServices* nameSpace, IWbemContext*,
                            IWbemProviderInitSink* sink) override
    {
        m_nameSpace = nameSpace;
        sink->SetStatus(m_broken ? static_cast<LONG>(WBEM_E_FAILED) : LONG{WBEM_S_INITIALIZED}, 0);
        return WBEM_S_NO_ERROR;
    }

    STDMETHODIMP CancelAsyncCall(IWbemObjectSink* sink) override;
    STDMETHODIMP GetObjectAsync(const BSTR path, long flags, IWbemContext* context,
                                IWbemObjectSink* sink) override;
    STDMETHODIMP CreateInstanceEnumAsync(const BSTR className, long flags, IWbemContext* context,
                                         IWbemObjectSink* sink) override;
    STDMETHODIMP PutInstanceAsync(IWbemClassObject* object, long flags, IWbemContext* context,
                                  IWbemObjectSink* sink) override;
    STDMETHODIMP ExecMethodAsync(const BSTR path, const BSTR method, long flags, IWbemContext* context,
                                 IWbemClassObject* in, IWbemObjectSink* sink) override;

  private:
    ComPtr<IWbemClassObject> Class(const wchar_t* name, IWbemContext* context) const
    {
        ComPtr<IWbemClassObject> object;
        m_nameSpace->GetObject(CBstr(name).Get(), 0, context, object.Put(), nullptr);
        return object;
    }
    ComPtr<IWbemClassObject> Instance(const wchar_t* name, IWbemContext* context) const
    {
        ComPtr<IWbemClassObject> object;
        if (const ComPtr<IWbemClassObject> definition = Class(name, context))
            definition->SpawnInstance(0, object.Put());
        return object;
    }
    ComPtr<IWbemClassObject> Item(unsigned number, IWbemContext* context) const;
    HRESULT SendMany(const wchar_t* className, unsigned count, IWbemContext* context,
                     IWbemObjectSink* sink) const;
    HRESULT SendLinks(const wchar_t* className, const wchar_t* from, const wchar_t* to, IWbemContext* context,
                      IWbemObjectSink* sink) const;

    const bool m_broken;
    ComPtr<IWbemServices> m_nameSpace;
};

HRESULT Put(IWbemClassObject* object, const wchar_t* name, CVariant value)
{
    return object->Put(name, 0, &value, 0);
}

std::wstring ContextText(IWbemContext* context, const wchar_t* name)
{
    CVariant value;
    if (!context || FAILED(context->GetValue(name, 0, value.Put())) || value.vt != VT_BSTR)
        return L"-";
    return value.bstrVal;
}

HRESULT Send(IWbemObjectSink* sink, const ComPtr<IWbemClassObject>& object)
{
    IWbemClassObject* one = object.Get();
    return sink->Indicate(1, &one);
}

HRESULT End(IWbemObjectSink* sink, HRESULT result, const wchar_t* text = nullptr,
            IWbemClassObject* status = nullptr)
{
    sink->SetStatus(WBEM_STATUS_COMPLETE, result, CBstr(text).Get(), status);
    return result;
}

// Sets an event of a test that waits for it.
void Signal(const wchar_t* name)
{
    SetEvent(CHandle(CreateEventW(nullptr, TRUE, FALSE, name)).Get());
}

[[noreturn]] void Die()
{
    TerminateProcess(GetCurrentProcess(), 9);
    std::abort();
}

ComPtr<IWbemClassObject> CTestProvider::Item(unsigned number, IWbemContext* context) const
{
    ComPtr<IWbemClassObject> item = Instance(L"StandinTest_Item", context);
    Put(item.Get(), L"Name", CVariant::FromText((L"n" + std::to_wstring(number)).c_str()));
    Put(item.Get(), L"Number", CVariant::FromLong(static_cast<LONG>(number)));
    Put(item.Get(), L"Big", CVariant::FromText(std::to_wstring(number * 5000000000ull).c_str()));
    Put(item.Get(), L"Even", CVariant::FromBool(number % 2 == 0));
    return item;
}

HRESULT CTestProvider::SendMany(const wchar_t* className, unsigned count, IWbemContext* context,
                                IWbemObjectSink* sink) const
{
    const ComPtr<IWbemClassObject> definition = Class(className, context);
    HRESULT hr = WBEM_S_NO_ERROR;
    for (unsigned i = 0; i < count && SUCCEEDED(hr); ++i)
    {
        ComPtr<IWbemClassObject> instance;
        definition->SpawnInstance(0, instance.Put());
        Put(instance.Get(), L"Name", CVariant::FromText(std::to_wstring(i).c_str()));
        Put(instance.Get(), L"Number", CVariant::FromLong(static_cast<LONG>(i)));
        hr = Send(sink, instance);
    }
    return hr;
}

HRESULT CTestProvider::SendLinks(const wchar_t* className, const wchar_t* from, const wchar_t* to,
                                 IWbemContext* context, IWbemObjectSink* sink) const
{
    HRESULT hr = WBEM_S_NO_ERROR;
    for (unsigned i = 1; i < 3 && SUCCEEDED(hr); ++i)
    {
        const ComPtr<IWbemClassObject> link = Instance(className, context);
        const std::wstring here = L"StandinTest_Item.Name=\"n" + std::to_wstring(i) + L"\"";
        // The other way of writing the same path.
        const std::wstring there = std::wstring(to) == L"After"
                                       ? L"StandinTest_Item=\"n" + std::to_wstring(i + 1) + L"\""
                                       : std::wstring(L"StandinTest_Nobodys.Name=\"x\"");
        Put(link.Get(), from, CVariant::FromText(here.c_str()));
        Put(link.Get(), to, CVariant::FromText(there.c_str()));
        hr = Send(sink, link);
    }
    return hr;
}

STDMETHODIMP CTestProvider::CancelAsyncCall(IWbemObjectSink*)
{
    Signal(kCancelledEvent);
    return WBEM_S_NO_ERROR;
}

STDMETHODIMP CTestProvider::GetObjectAsync(const BSTR path, long, IWbemContext* context,
                                           IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            const std::wstring text = path;
            const size_t first = text.find_first_of(L"\"'");
            const std::wstring name = text.substr(first + 1, text.find_last_of(L"\"'") - first - 1);
            if (name == L"fails without status")
                return wmi::AccessDenied;
            if (name == L"fails with status")
            {
                const ComPtr<IWbemClassObject> status = Instance(L"StandinTest_Error", context);
                Put(status.Get(), L"Description", CVariant::FromText(L"it was asked to"));
                Put(status.Get(), L"ProviderName", CVariant::FromText(L"StandinTestProvider"));
                Put(status.Get(), L"File", CVariant::FromText(L"TestProvider"));
                return End(sink, wmi::Failed, nullptr, status.Get());
            }
            if (name == L"answers late")
            {
                std::thread(
                    [sink = ComPtr<IWbemObjectSink>(sink), item = Item(1, context)]
                    {
                        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
                        Send(sink.Get(), item);
                        End(sink.Get(), WBEM_S_NO_ERROR);
                        CoUninitialize();
                    })
                    .detach();
                return WBEM_S_NO_ERROR;
            }
            if (name == L"dies later")
            {
                std::thread(Die).detach();
                return WBEM_S_NO_ERROR;
            }
            if (name == L"never answers")
            {
                Signal(kBlockedEvent);
                return WBEM_S_NO_ERROR;
            }
            if (name == L"says nothing")
                return End(sink, WBEM_S_NO_ERROR);
            if (name == L"context")
            {
                const ComPtr<IWbemClassObject> item = Item(0, context);
                Put(item.Get(), L"Text",
                    CVariant::FromText(
                        (ContextText(context, L"LocaleID") + L"/" + ContextText(context, L"SessionHandle"))
                            .c_str()));
                Send(sink, item);
                return End(sink, WBEM_S_NO_ERROR);
            }
            for (unsigned i = 1; i <= 3; ++i)
                if (EqualNoCaseAscii(name, L"n" + std::to_wstring(i)))
                {
                    Send(sink, Item(i, context));
                    return End(sink, WBEM_S_NO_ERROR);
                }
            return End(sink, wmi::NotFound);
        });
}

STDMETHODIMP CTestProvider::CreateInstanceEnumAsync(const BSTR className, long, IWbemContext* context,
                                                    IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            const std::map<std::wstring_view, std::function<HRESULT()>> classes = {
                {L"StandinTest_Item",
                 [&]
                 {
                     HRESULT hr = WBEM_S_NO_ERROR;
                     for (unsigned i = 1; i <= 3 && SUCCEEDED(hr); ++i)
                         hr = Send(sink, Item(i, context));
                     return hr;
                 }},
                {L"StandinTest_Many",
                 [&] { return SendMany(L"StandinTest_Many", kManyInstances, context, sink); }},
                {L"StandinTest_Endless",
                 [&]
                 {
                     Signal(kStartedEvent);
                     const HRESULT hr = SendMany(L"StandinTest_Endless", ~0u, context, sink);
                     Signal(kStoppedEvent);
                     return hr;
                 }},
                {L"StandinTest_Next",
                 [&] { return SendLinks(L"StandinTest_Next", L"Before", L"After", context, sink); }},
                {L"StandinTest_Owner",
                 [&] { return SendLinks(L"StandinTest_Owner", L"Owned", L"Owning", context, sink); }},
            };
            const auto found = classes.find(className);
            return End(sink, found == classes.end() ? wmi::InvalidClass : found->second());
        });
}

STDMETHODIMP CTestProvider::PutInstanceAsync(IWbemClassObject* object, long flags, IWbemContext*,
                                             IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            CVariant text;
            object->Get(L"Text", 0, text.Put(), nullptr, nullptr);
            const std::wstring told =
                std::to_wstring(flags) + L":" + (text.vt == VT_BSTR ? text.bstrVal : L"(null)");
            return End(sink, WBEM_S_NO_ERROR, told.c_str());
        });
}

STDMETHODIMP CTestProvider::ExecMethodAsync(const BSTR, const BSTR method, long, IWbemContext* context,
                                            IWbemClassObject* in, IWbemObjectSink* sink)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            ComPtr<IWbemClassObject> signature;
            ComPtr<IWbemClassObject> out;
            Class(L"StandinTest_Item", context)->GetMethod(method, 0, nullptr, signature.Put());
            signature->SpawnInstance(0, out.Put());
            Put(out.Get(), L"ReturnValue", CVariant::FromLong(0));
            const std::wstring name = method;
            if (EqualNoCaseAscii(name, L"Die"))
                Die();
            if (EqualNoCaseAscii(name, L"Block"))
            {
                const CHandle go(CreateEventW(nullptr, TRUE, FALSE, kGoEvent));
                Signal(kBlockedEvent);
                WaitForSingleObject(go.Get(), 60000);
            }
            else
            {
                CVariant value;
                in->Get(L"Value", 0, value.Put(), nullptr, nullptr);
                Put(out.Get(), L"Result", CVariant::FromLong(value.lVal * 2));
            }
            Send(sink, out);
            return End(sink, WBEM_S_NO_ERROR);
        });
}
} // namespace

ComPtr<IWbemProviderInit> MakeTestProvider(bool broken)
{
    ComPtr<IWbemProviderInit> provider;
    provider.Attach(new CTestProvider(broken));
    return provider;
}

void WaitForLastProvider()
{
    WaitForSingleObject(LastReleased(), INFINITE);
}
