// The way back to a client: objects in the order in which they came, then one status. A call to another
// process is slow, so whatever has gathered while one is under way goes with the next. Any thread.
#pragma once

#include "Common/src/com/CriticalSection.h"
#include "standin/service/Outcome.h"

#include <memory>
#include <optional>
#include <vector>

namespace standin
{
class COutbox : public std::enable_shared_from_this<COutbox>
{
  public:
    explicit COutbox(ComPtr<IWbemObjectSink> client) noexcept : m_client(std::move(client)) {}

    // Takes an object for the client. WBEM_E_CALL_CANCELLED where the status has been given or the client
    // refused an object or is gone.
    HRESULT Indicate(ComPtr<IWbemClassObject> object);
    // Gives the status; only the first one counts. What was indicated before is still delivered, unless
    // `dropObjects`.
    void Finish(COutcome outcome, bool dropObjects = false);
    // The client is gone: nothing is sent any more.
    void Abandon();

    const ComPtr<IWbemObjectSink>& Client() const noexcept { return m_client; }

  private:
    void Wake();
    void Deliver();
    void Send(const std::vector<ComPtr<IWbemClassObject>>& objects);

    const ComPtr<IWbemObjectSink> m_client;
    CCriticalSection m_lock;
    std::vector<ComPtr<IWbemClassObject>> m_objects;
    std::optional<COutcome> m_outcome;
    bool m_sending = false;
    bool m_finished = false; // the status has been given
    bool m_broken = false;   // the client takes no more objects
    bool m_abandoned = false;
};
} // namespace standin
