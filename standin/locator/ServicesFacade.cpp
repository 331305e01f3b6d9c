#include "standin/locator/ServicesFacade.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/locator/CallResult.h"
#include "standin/locator/Enumerator.h"
#include "standin/locator/ErrorObject.h"
#include "standin/locator/RemoteFailure.h"

namespace standin
{
namespace
{
// How the client wants its answer is settled here; the service need not know.
constexpr long AsyncFlags(long flags)
{
    return flags & ~(WBEM_FLAG_RETURN_IMMEDIATELY | WBEM_FLAG_FORWARD_ONLY);
}
} // namespace

CServicesFacade::CServicesFacade(ComPtr<IWbemServices> service, SharedHandle serviceProcess)
    : CSecuredObject(service), m_service(std::move(service)), m_process(std::move(serviceProcess))
{
}

template <class Start>
HRESULT CServicesFacade::Call(long flags, IWbemClassObject** object, IWbemCallResult** result,
                              Start start) noexcept
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            ClearErrorObject();
            if (object)
                *object = nullptr;
            if (result)
                *result = nullptr;
            const bool later = (flags & WBEM_FLAG_RETURN_IMMEDIATELY) != 0;
            if (later && !result)
                return wmi::InvalidParameter;

            const ComPtr<CCallSink> sink = MakeCom<CCallSink>(m_process);
            const HRESULT started = CallProcess([&] { return start(sink.Get()); });
            if (FAILED(started))
                return started;
            HRESULT outcome = wmi::NoError;
            if (!later)
            {
                sink->WaitForEnd(kForever);
                outcome = sink->Outcome();
                if (SUCCEEDED(outcome) && object)
                    *object = sink->ObjectAt(0).Detach();
            }
            if (result)
                *result = new CCallResult(sink);
            return outcome;
        });
}

template <class Start>
HRESULT CServicesFacade::Enumerate(long flags, IEnumWbemClassObject** objects, Start start) noexcept
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            ClearErrorObject();
            if (!objects)
                return wmi::InvalidParameter;
            *objects = nullptr;
            const ComPtr<CCallSink> sink = MakeCom<CCallSink>(m_process);
            const HRESULT started = CallProcess([&] { return start(sink.Get()); });
            if (FAILED(started))
                return started;
            const ComPtr<CEnumerator> enumerator =
                MakeCom<CEnumerator>(m_service, sink, (flags & WBEM_FLAG_FORWARD_ONLY) != 0);
            if (!(flags & WBEM_FLAG_RETURN_IMMEDIATELY))
            {
                sink->WaitForEnd(kForever);
                const HRESULT outcome = sink->Outcome();
                if (FAILED(outcome))
                    return outcome;
            }
            *objects = enumerator.Copy();
            return wmi::NoError;
        });
}

STDMETHODIMP CServicesFacade::OpenNamespace(const BSTR nameSpace, long flags, IWbemContext* context,
                                            IWbemServices** opened, IWbemCallResult** result)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            ClearErrorObject();
            if (!opened && !result)
                return wmi::InvalidParameter;
            if (opened)
                *opened = nullptr;
            if (result)
                *result = nullptr;
            ComPtr<IWbemServices> service;
            const HRESULT hr = CallProcess(
                [&] {
                    return m_service->OpenNamespace(nameSpace, AsyncFlags(flags), context, service.Put(),
                                                    nullptr);
                });
            if (FAILED(hr))
                return hr;
            const ComPtr<IWbemServices> facade = MakeCom<CServicesFacade>(service, m_process);
            if (result)
            {
                const ComPtr<CCallSink> done = MakeCom<CCallSink>(m_process);
                done->SetStatus(WBEM_STATUS_COMPLETE, hr, nullptr, nullptr);
                *result = new CCallResult(done, facade);
            }
            if (opened)
                *opened = facade.Copy();
            return hr;
        });
}

STDMETHODIMP CServicesFacade::CancelAsyncCall(IWbemObjectSink* sink)
{
    return m_service->CancelAsyncCall(sink);
}

STDMETHODIMP CServicesFacade::QueryObjectSink(long flags, IWbemObjectSink** sink)
{
    return m_service->QueryObjectSink(flags, sink);
}

STDMETHODIMP CServicesFacade::GetObject(const BSTR path, long flags, IWbemContext* context,
                                        IWbemClassObject** object, IWbemCallResult** result)
{
    if (!object && !result)
        return wmi::InvalidParameter;
    return Call(flags, object, result,
                [&](IWbemObjectSink* sink)
                { return m_service->GetObjectAsync(path, AsyncFlags(flags), context, sink); });
}

STDMETHODIMP CServicesFacade::GetObjectAsync(const BSTR path, long flags, IWbemContext* context,
                                             IWbemObjectSink* sink)
{
    return m_service->GetObjectAsync(path, flags, context, sink);
}

STDMETHODIMP CServicesFacade::PutClass(IWbemClassObject* object, long flags, IWbemContext* context,
                                       IWbemCallResult** result)
{
    return Call(flags, nullptr, result,
                [&](IWbemObjectSink* sink)
                { return m_service->PutClassAsync(object, AsyncFlags(flags), context, sink); });
}

STDMETHODIMP CServicesFacade::PutClassAsync(IWbemClassObject* object, long flags, IWbemContext* context,
                                            IWbemObjectSink* sink)
{
    return m_service->PutClassAsync(object, flags, context, sink);
}

STDMETHODIMP CServicesFacade::DeleteClass(const BSTR name, long flags, IWbemContext* context,
                                          IWbemCallResult** result)
{
    return Call(flags, nullptr, result,
                [&](IWbemObjectSink* sink)
                { return m_service->DeleteClassAsync(name, AsyncFlags(flags), context, sink); });
}

STDMETHODIMP CServicesFacade::DeleteClassAsync(const BSTR name, long flags, IWbemContext* context,
                                               IWbemObjectSink* sink)
{
    return m_service->DeleteClassAsync(name, flags, context, sink);
}

STDMETHODIMP CServicesFacade::CreateClassEnum(const BSTR superclass, long flags, IWbemContext* context,
                                              IEnumWbemClassObject** objects)
{
    return Enumerate(flags, objects,
                     [&](IWbemObjectSink* sink) {
                         return m_service->CreateClassEnumAsync(superclass, AsyncFlags(flags), context, sink);
                     });
}

STDMETHODIMP CServicesFacade::CreateClassEnumAsync(const BSTR superclass, long flags, IWbemContext* context,
                                                   IWbemObjectSink* sink)
{
    return m_service->CreateClassEnumAsync(superclass, flags, context, sink);
}

STDMETHODIMP CServicesFacade::PutInstance(IWbemClassObject* object, long flags, IWbemContext* context,
                                          IWbemCallResult** result)
{
    return Call(flags, nullptr, result,
                [&](IWbemObjectSink* sink)
                { return m_service->PutInstanceAsync(object, AsyncFlags(flags), context, sink); });
}

STDMETHODIMP CServicesFacade::PutInstanceAsync(IWbemClassObject* object, long flags, IWbemContext* context,
                                               IWbemObjectSink* sink)
{
    return m_service->PutInstanceAsync(object, flags, context, sink);
}

STDMETHODIMP CServicesFacade::DeleteInstance(const BSTR path, long flags, IWbemContext* context,
                                             IWbemCallResult** result)
{
    return Call(flags, nullptr, result,
                [&](IWbemObjectSink* sink)
                { return m_service->DeleteInstanceAsync(path, AsyncFlags(flags), context, sink); });
}

STDMETHODIMP CServicesFacade::DeleteInstanceAsync(const BSTR path, long flags, IWbemContext* context,
                                                  IWbemObjectSink* sink)
{
    return m_service->DeleteInstanceAsync(path, flags, context, sink);
}

STDMETHODIMP CServicesFacade::CreateInstanceEnum(const BSTR className, long flags, IWbemContext* context,
                                                 IEnumWbemClassObject** objects)
{
    return Enumerate(
        flags, objects,
        [&](IWbemObjectSink* sink)
        { return m_service->CreateInstanceEnumAsync(className, AsyncFlags(flags), context, sink); });
}

STDMETHODIMP CServicesFacade::CreateInstanceEnumAsync(const BSTR className, long flags, IWbemContext* context,
                                                      IWbemObjectSink* sink)
{
    return m_service->CreateInstanceEnumAsync(className, flags, context, sink);
}

STDMETHODIMP CServicesFacade::ExecQuery(const BSTR language, const BSTR query, long flags,
                                        IWbemContext* context, IEnumWbemClassObject** objects)
{
    return Enumerate(flags, objects,
                     [&](IWbemObjectSink* sink) {
                         return m_service->ExecQueryAsync(language, query, AsyncFlags(flags), context, sink);
                     });
}

STDMETHODIMP CServicesFacade::ExecQueryAsync(const BSTR language, const BSTR query, long flags,
                                             IWbemContext* context, IWbemObjectSink* sink)
{
    return m_service->ExecQueryAsync(language, query, flags, context, sink);
}

STDMETHODIMP CServicesFacade::ExecNotificationQuery(const BSTR language, const BSTR query, long flags,
                                                    IWbemContext* context, IEnumWbemClassObject** objects)
{
    return Enumerate(
        flags, objects,
        [&](IWbemObjectSink* sink)
        { return m_service->ExecNotificationQueryAsync(language, query, AsyncFlags(flags), context, sink); });
}

STDMETHODIMP CServicesFacade::ExecNotificationQueryAsync(const BSTR language, const BSTR query, long flags,
                                                         IWbemContext* context, IWbemObjectSink* sink)
{
    return m_service->ExecNotificationQueryAsync(language, query, flags, context, sink);
}

STDMETHODIMP CServicesFacade::ExecMethod(const BSTR path, const BSTR method, long flags,
                                         IWbemContext* context, IWbemClassObject* in, IWbemClassObject** out,
                                         IWbemCallResult** result)
{
    return Call(flags, out, result,
                [&](IWbemObjectSink* sink)
                { return m_service->ExecMethodAsync(path, method, AsyncFlags(flags), context, in, sink); });
}

STDMETHODIMP CServicesFacade::ExecMethodAsync(const BSTR path, const BSTR method, long flags,
                                              IWbemContext* context, IWbemClassObject* in,
                                              IWbemObjectSink* sink)
{
    return m_service->ExecMethodAsync(path, method, flags, context, in, sink);
}
} // namespace standin
