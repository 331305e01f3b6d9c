// What one call to the service has brought so far: its objects and, in the end, its status. The service fills
// it from threads of its own while the client waits. Any thread may wait; in a single-threaded apartment
// waiting lets the service's calls in.
#pragma once

#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComObject.h"
#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"

#include <memory>
#include <vector>
#include <wbemcli.h>

namespace standin
{
// WBEM_INFINITE, which the platform header declares unsigned.
inline constexpr long kForever = static_cast<long>(WBEM_INFINITE);

using SharedHandle = std::shared_ptr<const CHandle>;

class CCallSink : public CComObject<IWbemObjectSink>
{
  public:
    // `serviceProcess` may be null. Where it ends before the call does, the call has failed.
    explicit CCallSink(SharedHandle serviceProcess);

    STDMETHODIMP Indicate(long count, IWbemClassObject** objects) override;
    STDMETHODIMP SetStatus(long flags, HRESULT result, BSTR text, IWbemClassObject* object) override;

    // Waits until `count` objects are there or the call has ended; false where the time (milliseconds or
    // kForever) passed first.
    bool Wait(size_t count, long timeout);
    bool WaitForEnd(long timeout);
    // Ends the wait of everybody; what comes later is refused.
    void Cancel();

    bool Ended();
    // The status of a call that has ended. A failure becomes the error object of the calling thread.
    HRESULT Outcome();
    CBstr OutcomeText();
    // How many objects there are, and one of them.
    size_t Count();
    ComPtr<IWbemClassObject> ObjectAt(size_t index);
    // The same for a reader that never goes back: the sink keeps the object no longer.
    ComPtr<IWbemClassObject> TakeObject(size_t index);

  private:
    bool End(HRESULT result, BSTR text, IWbemClassObject* object);

    const SharedHandle m_service;
    CHandle m_progress; // set when something has changed since the last look
    CCriticalSection m_lock;
    std::vector<ComPtr<IWbemClassObject>> m_objects;
    bool m_ended = false;
    HRESULT m_result = WBEM_S_NO_ERROR;
    CBstr m_text;
    ComPtr<IWbemClassObject> m_status;
};
} // namespace standin
