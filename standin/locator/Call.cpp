#include "standin/locator/Call.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/locator/ErrorObject.h"

#include <limits>

namespace standin
{
namespace
{
constexpr size_t kNever = std::numeric_limits<size_t>::max();
constexpr HRESULT kServiceFailed = HRESULT_FROM_WIN32(RPC_S_CALL_FAILED);
} // namespace

// A turn at the pipe. Nobody else's may take longer than the caller has time for.
class CCall::CTurn
{
  public:
    CTurn(const CCall& call, DWORD milliseconds) noexcept
        : m_mutex(call.m_turn.Get()), m_mine(WaitForSingleObject(m_mutex, milliseconds) != WAIT_TIMEOUT)
    {
    }
    ~CTurn()
    {
        if (m_mine)
            ReleaseMutex(m_mutex);
    }
    CTurn(const CTurn&) = delete;
    CTurn& operator=(const CTurn&) = delete;

    bool Mine() const noexcept { return m_mine; }

  private:
    const HANDLE m_mutex;
    const bool m_mine;
};

CCall::CCall(std::unique_ptr<CPipe> pipe, const CCallMessage& message)
    : m_turn(CreateMutexW(nullptr, FALSE, nullptr)), m_pipe(std::move(pipe))
{
    if (!m_turn)
        throw std::bad_alloc();
    const std::vector<BYTE> bytes = Encode(message);
    if (bytes.size() > kLargestFrame)
        Take(COutcome(kTooLong));
    else if (!m_pipe->Send(bytes))
        Take(COutcome(kServiceFailed));
}

void CCall::Take(CAnswer answer)
{
    const CLockScope lock(m_lock);
    if (auto* outcome = std::get_if<COutcome>(&answer))
    {
        m_outcome = std::move(*outcome);
        m_pipe.reset();
    }
    else
        m_objects.push_back(std::get<ComPtr<IWbemClassObject>>(std::move(answer)));
}

// False where nothing came in time.
bool CCall::ReadAnswer(DWORD milliseconds)
{
    std::vector<BYTE> frame;
    const CPipe::Received received = m_pipe->Receive(frame, milliseconds);
    if (received == CPipe::Received::Nothing)
        return false;
    const auto take = [&]
    {
        Take(received == CPipe::Received::TooLong ? COutcome(kTooLong) : DecodeAnswer(frame));
        return S_OK;
    };
    // An answer that cannot be read does not come again: nobody may wait for it.
    if (received == CPipe::Received::TheEnd || FAILED(AtComBoundary(take)))
        Take(COutcome(kServiceFailed));
    return true;
}

bool CCall::Has(size_t count)
{
    const CLockScope lock(m_lock);
    return m_outcome || m_objects.size() >= count;
}

bool CCall::Wait(size_t count, long timeout)
{
    const CDeadline deadline(timeout < 0 ? INFINITE : static_cast<DWORD>(timeout));
    while (!Has(count))
    {
        const CTurn turn(*this, deadline.Left());
        if (!turn.Mine())
            return false;
        if (!Has(count) && !ReadAnswer(deadline.Left()))
            return false;
    }
    return true;
}

bool CCall::WaitForEnd(long timeout)
{
    return Wait(kNever, timeout);
}

bool CCall::HasEnded()
{
    return Has(kNever);
}

HRESULT CCall::Result()
{
    const CLockScope lock(m_lock);
    if (m_outcome->Failed() && m_outcome->Status)
        SetErrorObject(m_outcome->Status);
    return m_outcome->Result;
}

CBstr CCall::Text()
{
    const CLockScope lock(m_lock);
    return m_outcome->Text;
}

ComPtr<IWbemClassObject> CCall::Object()
{
    const CLockScope lock(m_lock);
    return m_outcome->Object;
}

size_t CCall::Count()
{
    const CLockScope lock(m_lock);
    return m_objects.size();
}

ComPtr<IWbemClassObject> CCall::ObjectAt(size_t index)
{
    const CLockScope lock(m_lock);
    return m_objects[index];
}

ComPtr<IWbemClassObject> CCall::TakeObject(size_t index)
{
    const CLockScope lock(m_lock);
    return std::move(m_objects[index]);
}

template <class T, class Read>
HRESULT CCallResult::WhenSucceeded(long timeout, T* out, Read read) noexcept
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!out || timeout < kForever)
                return wmi::InvalidParameter;
            *out = nullptr;
            ClearErrorObject();
            if (!m_call->WaitForEnd(timeout))
                return WBEM_S_TIMEDOUT;
            const HRESULT result = m_call->Result();
            if (FAILED(result))
                return result;
            *out = read().Detach();
            return *out ? wmi::NoError : wmi::NotFound;
        });
}

STDMETHODIMP CCallResult::GetResultObject(long timeout, IWbemClassObject** object)
{
    return WhenSucceeded(timeout, object, [&] { return m_call->Object(); });
}

STDMETHODIMP CCallResult::GetResultString(long timeout, BSTR* text)
{
    return WhenSucceeded(timeout, text, [&] { return m_call->Text(); });
}

STDMETHODIMP CCallResult::GetResultServices(long timeout, IWbemServices** services)
{
    return WhenSucceeded(timeout, services, [] { return ComPtr<IWbemServices>(); });
}

STDMETHODIMP CCallResult::GetCallStatus(long timeout, long* status)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            if (!status || timeout < kForever)
                return wmi::InvalidParameter;
            ClearErrorObject();
            if (!m_call->WaitForEnd(timeout))
                return WBEM_S_TIMEDOUT;
            *status = m_call->Result();
            return wmi::NoError;
        });
}
} // namespace standin
