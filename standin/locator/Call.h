// One call to the service as its client sees it: the objects that it has brought so far and, in the end, its
// outcome. The answers wait in the service until somebody asks for them here. Any thread.
#pragma once

#include "Common/src/com/ComObject.h"
#include "Common/src/com/CriticalSection.h"
#include "standin/pipe/Messages.h"
#include "standin/pipe/Pipe.h"

#include <memory>
#include <optional>

namespace standin
{
// WBEM_INFINITE, which the platform header declares unsigned.
inline constexpr long kForever = static_cast<long>(WBEM_INFINITE);

class CCall
{
  public:
    // The pipe has been opened for this call. Sends the message; where it does not arrive, the call has ended
    // with RPC_S_CALL_FAILED, as it does where the service ends before its answer, and with
    // WBEM_E_QUOTA_VIOLATION where it or an answer is too long. The destructor takes the call back.
    CCall(std::unique_ptr<CPipe> pipe, const CCallMessage& message);

    // Waits until `count` objects are there or the call has ended; false where the time (milliseconds or
    // kForever) passed first. Who waits for little is not kept by who waits for more.
    bool Wait(size_t count, long timeout);
    bool WaitForEnd(long timeout);

    bool HasEnded();

    // What a call that has ended brought; its failure becomes the error object of the calling thread.
    HRESULT Result();
    CBstr Text();
    // The object of a call that asks for one.
    ComPtr<IWbemClassObject> Object();

    // How many objects have come, and one of them.
    size_t Count();
    ComPtr<IWbemClassObject> ObjectAt(size_t index);
    // The same for a reader that never goes back: the call keeps the object no longer.
    ComPtr<IWbemClassObject> TakeObject(size_t index);

  private:
    class CTurn;

    bool Has(size_t count);
    bool ReadAnswer(DWORD milliseconds);
    void Take(CAnswer answer);

    const CHandle m_turn;          // one thread at a time reads the pipe
    std::unique_ptr<CPipe> m_pipe; // null once the call has ended
    CCriticalSection m_lock;       // for what has come
    std::vector<ComPtr<IWbemClassObject>> m_objects;
    std::optional<COutcome> m_outcome;
};

// What a client gets for a call that it will ask about later.
class CCallResult : public CComObject<IWbemCallResult>
{
  public:
    explicit CCallResult(std::shared_ptr<CCall> call) noexcept : m_call(std::move(call)) {}

    STDMETHODIMP GetResultObject(long timeout, IWbemClassObject** object) override;
    STDMETHODIMP GetResultString(long timeout, BSTR* text) override;
    STDMETHODIMP GetResultServices(long timeout, IWbemServices** services) override;
    STDMETHODIMP GetCallStatus(long timeout, long* status) override;

  private:
    template <class T, class Read>
    HRESULT WhenSucceeded(long timeout, T* out, Read read) noexcept;

    const std::shared_ptr<CCall> m_call;
};
} // namespace standin
