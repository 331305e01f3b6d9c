// The way back to a client: objects in the order in which they came, then one status. A call to another
// process is slow, so whatever has gathered while one is under way goes with the next. Any thread.
#pragma once

#include "standin/service/Outcome.h"
#include "standin/service/ServiceLife.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace standin
{
class COutbox : public std::enable_shared_from_this<COutbox>
{
  public:
    // `use` keeps the service up until the status is on its way.
    COutbox(CServiceLife::CUse use, ComPtr<IWbemObjectSink> client) noexcept
        : m_use(std::move(use)), m_client(std::move(client))
    {
    }

    // Takes an object for the client, which gets it soon. WBEM_E_CALL_CANCELLED where the status has been
    // given or the client refused an object or is gone.
    HRESULT Indicate(ComPtr<IWbemClassObject> object);
    // Gives the status, unless it has been given; the calling thread delivers it where no other one is about
    // to.
    void Finish(COutcome outcome);
    // Gives WBEM_E_CALL_CANCELLED as the status and forgets the objects that have not been delivered.
    void Cancel();
    // The client is gone: nothing is sent any more.
    void Abandon();

    const ComPtr<IWbemObjectSink>& Client() const noexcept { return m_client; }

  private:
    // Sees to it that a thread delivers.
    void Wake(std::unique_lock<std::mutex> lock);
    void Deliver();
    void Send(const std::vector<ComPtr<IWbemClassObject>>& objects);

    const CServiceLife::CUse m_use;
    const ComPtr<IWbemObjectSink> m_client;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<ComPtr<IWbemClassObject>> m_objects;
    std::optional<COutcome> m_outcome;
    bool m_delivering = false; // a thread is at it, until the status is out
    bool m_finished = false;   // the status has been given
    bool m_broken = false;     // the client takes no more objects
    bool m_abandoned = false;
};
} // namespace standin
