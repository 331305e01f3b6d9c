#include "standin/service/ProviderSink.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"

namespace standin
{
CProviderSink::CProviderSink(ObjectConsumer consume)
    : m_ended(CreateEventW(nullptr, TRUE, FALSE, nullptr)), m_consume(std::move(consume))
{
}

STDMETHODIMP CProviderSink::Indicate(long count, IWbemClassObject** objects)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (count < 0 || (count > 0 && !objects))
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            for (long i = 0; i < count; ++i)
            {
                if (!m_consume || m_outcome)
                    return wmi::CallCancelled;
                if (!objects[i])
                    return wmi::InvalidParameter;
                if (const HRESULT hr = m_consume(objects[i]); FAILED(hr))
                    return hr;
            }
            return wmi::NoError;
        });
}

STDMETHODIMP CProviderSink::SetStatus(long flags, HRESULT result, BSTR text, IWbemClassObject* object)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags != WBEM_STATUS_COMPLETE)
                return wmi::NoError;
            COutcome outcome(result);
            if (text)
                outcome.Text = CBstr(std::wstring_view(text, SysStringLen(text)));
            outcome.Status = object;
            const CLockScope lock(m_lock);
            if (!m_outcome)
                m_outcome = std::move(outcome);
            SetEvent(m_ended.Get());
            return wmi::NoError;
        });
}

std::optional<COutcome> CProviderSink::Close()
{
    const CLockScope lock(m_lock);
    m_consume = nullptr;
    return m_outcome;
}
} // namespace standin
