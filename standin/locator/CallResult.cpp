#include "standin/locator/CallResult.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/locator/ErrorObject.h"

namespace standin
{
namespace
{
// Clears the out-pointer, waits, and lets `take` fill it from a call that succeeded.
template <class T, class Take>
HRESULT WhenSucceeded(CCallSink& sink, long timeout, T* out, Take take) noexcept
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!out || timeout < kForever)
                return wmi::InvalidParameter;
            *out = nullptr;
            ClearErrorObject();
            if (!sink.WaitForEnd(timeout))
                return WBEM_S_TIMEDOUT;
            const HRESULT outcome = sink.Outcome();
            return FAILED(outcome) ? outcome : take();
        });
}
} // namespace

STDMETHODIMP CCallResult::GetResultObject(long timeout, IWbemClassObject** object)
{
    return WhenSucceeded(*m_sink, timeout, object,
                         [&]
                         {
                             *object = m_sink->ObjectAt(0).Detach();
                             return *object ? wmi::NoError : wmi::NotFound;
                         });
}

STDMETHODIMP CCallResult::GetResultString(long timeout, BSTR* text)
{
    return WhenSucceeded(*m_sink, timeout, text,
                         [&]
                         {
                             *text = m_sink->OutcomeText().Detach();
                             return *text ? wmi::NoError : wmi::NotFound;
                         });
}

STDMETHODIMP CCallResult::GetResultServices(long timeout, IWbemServices** services)
{
    return WhenSucceeded(*m_sink, timeout, services,
                         [&]
                         {
                             *services = m_services.Copy();
                             return *services ? wmi::NoError : wmi::NotFound;
                         });
}

STDMETHODIMP CCallResult::GetCallStatus(long timeout, long* status)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!status || timeout < kForever)
                return wmi::InvalidParameter;
            ClearErrorObject();
            if (!m_sink->WaitForEnd(timeout))
                return WBEM_S_TIMEDOUT;
            *status = m_sink->Outcome();
            return wmi::NoError;
        });
}
} // namespace standin
