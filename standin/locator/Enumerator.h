// The result set of an enumeration or a query.
#pragma once

#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/locator/Call.h"
#include "standin/locator/SecuredObject.h"

namespace standin
{
class CEnumerator : public CSecuredObject<IEnumWbemClassObject>
{
  public:
    // Clones share the call; the last one takes it back where it has not ended.
    CEnumerator(std::shared_ptr<CCall> call, bool forwardOnly, size_t position = 0) noexcept
        : m_call(std::move(call)), m_forwardOnly(forwardOnly), m_position(position)
    {
    }

    STDMETHODIMP Reset() override;
    STDMETHODIMP Next(long timeout, ULONG count, IWbemClassObject** objects, ULONG* returned) override;
    STDMETHODIMP NextAsync(ULONG, IWbemObjectSink*) override { return wmi::NotSupported; }
    STDMETHODIMP Clone(IEnumWbemClassObject** copy) override;
    STDMETHODIMP Skip(long timeout, ULONG count) override;

  private:
    using Objects = std::vector<ComPtr<IWbemClassObject>>;
    HRESULT Read(long timeout, ULONG count, Objects& objects);
    HRESULT TakeWhatIsThere(ULONG count, Objects& objects);
    size_t Position();

    const std::shared_ptr<CCall> m_call;
    const bool m_forwardOnly;
    CCriticalSection m_lock;
    size_t m_position;
};
} // namespace standin
