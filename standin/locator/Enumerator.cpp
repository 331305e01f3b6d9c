#include "standin/locator/Enumerator.h"

#include "Common/src/com/ComBoundary.h"
#include "standin/locator/ErrorObject.h"

#include <algorithm>

namespace standin
{
STDMETHODIMP CEnumerator::Reset()
{
    ClearErrorObject();
    if (m_forwardOnly)
        return static_cast<HRESULT>(WBEM_E_INVALID_OPERATION);
    const CLockScope lock(m_lock);
    m_position = 0;
    return wmi::NoError;
}

size_t CEnumerator::Position()
{
    const CLockScope lock(m_lock);
    return m_position;
}

HRESULT CEnumerator::TakeWhatIsThere(ULONG count, Objects& objects)
{
    const CLockScope lock(m_lock);
    for (const size_t available = m_call->Count(); m_position < available && objects.size() < count;
         ++m_position)
    {
        // Who can come back must not find what another reader has changed.
        ComPtr<IWbemClassObject> object;
        if (m_forwardOnly)
            object = m_call->TakeObject(m_position);
        else if (const HRESULT cloned = m_call->ObjectAt(m_position)->Clone(object.Put()); FAILED(cloned))
            return cloned;
        objects.push_back(std::move(object));
    }
    return wmi::NoError;
}

HRESULT CEnumerator::Read(long timeout, ULONG count, Objects& objects)
{
    const CDeadline deadline(timeout < 0 ? INFINITE : static_cast<DWORD>(timeout));
    // Another thread may take what this one has waited for, which then waits again.
    for (;;)
    {
        const bool timely = m_call->Wait(Position() + count - objects.size(),
                                         timeout < 0 ? kForever : static_cast<long>(deadline.Left()));
        const bool ended = m_call->HasEnded();
        if (const HRESULT taken = TakeWhatIsThere(count, objects); FAILED(taken))
            return taken;
        if (objects.size() == count)
            return wmi::NoError;
        if (ended)
        {
            const HRESULT result = m_call->Result();
            return FAILED(result) ? result : S_FALSE;
        }
        if (!timely)
            return WBEM_S_TIMEDOUT;
    }
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
            Objects read;
            const HRESULT result = Read(timeout, count, read);
            for (ComPtr<IWbemClassObject>& object : read)
                objects[(*returned)++] = object.Detach();
            return result;
        });
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
            if (m_forwardOnly)
                return static_cast<HRESULT>(WBEM_E_INVALID_OPERATION);
            const CLockScope lock(m_lock);
            *copy = new CEnumerator(m_call, m_forwardOnly, m_position);
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
            Objects skipped;
            return Read(timeout, count, skipped);
        });
}
} // namespace standin
