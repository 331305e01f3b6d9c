#include "standin/locator/CallSink.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/locator/ErrorObject.h"

#include <limits>

namespace standin
{
namespace
{
constexpr size_t kNever = std::numeric_limits<size_t>::max();

HANDLE NewEvent()
{
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (!event)
        throw std::bad_alloc();
    return event;
}
} // namespace

CCallSink::CCallSink(SharedHandle serviceProcess)
    : m_service(std::move(serviceProcess)), m_progress(NewEvent())
{
}

STDMETHODIMP CCallSink::Indicate(long count, IWbemClassObject** objects)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (count < 0 || (count > 0 && !objects))
                return wmi::InvalidParameter;
            const CLockScope lock(m_lock);
            if (m_ended)
                return wmi::CallCancelled;
            m_objects.insert(m_objects.end(), objects, objects + count);
            SetEvent(m_progress.Get());
            return wmi::NoError;
        });
}

STDMETHODIMP CCallSink::SetStatus(long flags, HRESULT result, BSTR text, IWbemClassObject* object)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (flags == WBEM_STATUS_COMPLETE)
                End(result, text, object);
            return wmi::NoError;
        });
}

bool CCallSink::End(HRESULT result, BSTR text, IWbemClassObject* object)
{
    CBstr copy = text ? CBstr(std::wstring_view(text, SysStringLen(text))) : CBstr();
    const CLockScope lock(m_lock);
    if (m_ended)
        return false;
    m_ended = true;
    m_result = result;
    m_text = std::move(copy);
    m_status = object;
    SetEvent(m_progress.Get());
    return true;
}

void CCallSink::Cancel()
{
    End(wmi::CallCancelled, nullptr, nullptr);
}

bool CCallSink::Wait(size_t count, long timeout)
{
    const ULONGLONG start = GetTickCount64();
    for (;;)
    {
        {
            const CLockScope lock(m_lock);
            if (m_ended || m_objects.size() >= count)
                return true;
            ResetEvent(m_progress.Get());
        }
        DWORD left = INFINITE;
        if (timeout >= 0)
        {
            const ULONGLONG passed = GetTickCount64() - start;
            if (passed >= static_cast<ULONGLONG>(timeout))
                return false;
            left = static_cast<DWORD>(timeout - passed);
        }
        HANDLE handles[] = {m_progress.Get(), m_service ? m_service->Get() : nullptr};
        DWORD which = 0;
        const HRESULT waited = CoWaitForMultipleHandles(0, left, m_service ? 2 : 1, handles, &which);
        if (FAILED(waited) && waited != RPC_S_CALLPENDING)
            End(waited, nullptr, nullptr);
        else if (SUCCEEDED(waited) && which == 1 && WaitForSingleObject(m_progress.Get(), 0) != WAIT_OBJECT_0)
            End(HRESULT_FROM_WIN32(RPC_S_CALL_FAILED), nullptr, nullptr);
    }
}

bool CCallSink::WaitForEnd(long timeout)
{
    return Wait(kNever, timeout);
}

bool CCallSink::Ended()
{
    const CLockScope lock(m_lock);
    return m_ended;
}

HRESULT CCallSink::Outcome()
{
    ComPtr<IWbemClassObject> status;
    HRESULT result = WBEM_S_NO_ERROR;
    {
        const CLockScope lock(m_lock);
        result = m_result;
        status = m_status;
    }
    if (FAILED(result) && status)
        SetErrorObject(status);
    return result;
}

CBstr CCallSink::OutcomeText()
{
    const CLockScope lock(m_lock);
    return m_text;
}

size_t CCallSink::Count()
{
    const CLockScope lock(m_lock);
    return m_objects.size();
}

ComPtr<IWbemClassObject> CCallSink::ObjectAt(size_t index)
{
    const CLockScope lock(m_lock);
    return index < m_objects.size() ? m_objects[index] : nullptr;
}

ComPtr<IWbemClassObject> CCallSink::TakeObject(size_t index)
{
    const CLockScope lock(m_lock);
    return index < m_objects.size() ? std::move(m_objects[index]) : nullptr;
}
} // namespace standin
