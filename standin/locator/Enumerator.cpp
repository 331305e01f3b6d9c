#include "standin/locator/Enumerator.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/locator/ErrorObject.h"

#include <algorithm>

namespace standin
{
// The call that an enumerator and its clones read from.
class CEnumerator::CCall
{
  public:
    CCall(ComPtr<IWbemServices> service, ComPtr<CCallSink> sink, bool forwardOnly) noexcept
        : Service(std::move(service)), Sink(std::move(sink)), ForwardOnly(forwardOnly)
    {
    }
    ~CCall()
    {
        if (Sink->Ended())
            return;
        Sink->Cancel();
        Service->CancelAsyncCall(Sink.Get());
    }

    const ComPtr<IWbemServices> Service;
    const ComPtr<CCallSink> Sink;
    const bool ForwardOnly;
};

CEnumerator::CEnumerator(ComPtr<IWbemServices> service, ComPtr<CCallSink> sink, bool forwardOnly)
    : CEnumerator(std::make_shared<CCall>(std::move(service), std::move(sink), forwardOnly), 0)
{
}

CEnumerator::CEnumerator(std::shared_ptr<CCall> call, size_t position)
    : CSecuredObject(call->Service), m_call(std::move(call)), m_position(position)
{
}

STDMETHODIMP CEnumerator::Reset()
{
    ClearErrorObject();
    if (m_call->ForwardOnly)
        return static_cast<HRESULT>(WBEM_E_INVALID_OPERATION);
    const CLockScope lock(m_lock);
    m_position = 0;
    return wmi::NoError;
}

HRESULT CEnumerator::Read(long timeout, ULONG count, std::vector<ComPtr<IWbemClassObject>>& objects)
{
    CCallSink& sink = *m_call->Sink;
    size_t wanted = 0;
    {
        const CLockScope lock(m_lock);
        wanted = m_position + count;
    }
    const bool timely = sink.Wait(wanted, timeout);

    const CLockScope lock(m_lock);
    for (const size_t available = sink.Count(); m_position < available && objects.size() < count;
         ++m_position)
    {
        // Who can come back must not find what another reader has changed.
        ComPtr<IWbemClassObject> object;
        if (m_call->ForwardOnly)
            object = sink.TakeObject(m_position);
        else if (const HRESULT cloned = sink.ObjectAt(m_position)->Clone(object.Put()); FAILED(cloned))
            return cloned;
        objects.push_back(std::move(object));
    }
    if (objects.size() == count)
        return wmi::NoError;
    if (!timely)
        return WBEM_S_TIMEDOUT;
    const HRESULT outcome = sink.Outcome();
    return FAILED(outcome) ? outcome : S_FALSE;
}

STDMETHODIMP CEnumerator::Next(long timeout, ULONG count, IWbemClassObject** objects, ULONG* returned)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (timeout < kForever || count == 0 || !objects || !returned)
                return wmi::InvalidParameter;
            *returned = 0;
            std::fill_n(objects, count, nullptr);
            ClearErrorObject();
            std::vector<ComPtr<IWbemClassObject>> read;
            const HRESULT result = Read(timeout, count, read);
            for (ComPtr<IWbemClassObject>& object : read)
                objects[(*returned)++] = object.Detach();
            return result;
        });
}

STDMETHODIMP CEnumerator::NextAsync(ULONG, IWbemObjectSink*)
{
    return wmi::NotSupported;
}

STDMETHODIMP CEnumerator::Clone(IEnumWbemClassObject** copy)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!copy)
                return wmi::InvalidParameter;
            *copy = nullptr;
            ClearErrorObject();
            if (m_call->ForwardOnly)
                return static_cast<HRESULT>(WBEM_E_INVALID_OPERATION);
            const CLockScope lock(m_lock);
            *copy = new CEnumerator(m_call, m_position);
            return wmi::NoError;
        });
}

STDMETHODIMP CEnumerator::Skip(long timeout, ULONG count)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (timeout < kForever || count == 0)
                return wmi::InvalidParameter;
            ClearErrorObject();
            std::vector<ComPtr<IWbemClassObject>> skipped;
            return Read(timeout, count, skipped);
        });
}
} // namespace standin
