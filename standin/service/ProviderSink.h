// The sink that a provider answers to. Hands each object on at once and remembers how the call ended.
#pragma once

#include "Common/src/com/ComObject.h"
#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Owned.h"
#include "standin/pipe/Messages.h"

#include <functional>
#include <optional>

namespace standin
{
// Takes an object that a provider delivered. A failure goes back to the provider, which then should stop.
using ObjectConsumer = std::function<HRESULT(IWbemClassObject*)>;

class CProviderSink : public CComObject<IWbemObjectSink>
{
  public:
    explicit CProviderSink(ObjectConsumer consume);

    STDMETHODIMP Indicate(long count, IWbemClassObject** objects) override;
    STDMETHODIMP SetStatus(long flags, HRESULT result, BSTR text, IWbemClassObject* object) override;

    // Set when the provider has given its status.
    HANDLE Ended() const noexcept { return m_ended.Get(); }
    // Takes what the provider said, if it has, and refuses everything from now on.
    std::optional<COutcome> Close();

  private:
    const CHandle m_ended;
    CCriticalSection m_lock;
    ObjectConsumer m_consume; // empty once closed
    std::optional<COutcome> m_outcome;
};
} // namespace standin
