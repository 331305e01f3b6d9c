#include "standin/service/Outbox.h"

#include "Common/src/com/WmiStatus.h"
#include "standin/locator/RemoteFailure.h"
#include "standin/service/Worker.h"

#include <algorithm>

namespace standin
{
namespace
{
// Keeps one message to a client at a reasonable size.
constexpr size_t kLargestBatch = 100;
} // namespace

HRESULT COutbox::Indicate(ComPtr<IWbemClassObject> object)
{
    std::unique_lock lock(m_mutex);
    if (m_finished || m_broken)
        return wmi::CallCancelled;
    m_objects.push_back(std::move(object));
    Wake(std::move(lock));
    return wmi::NoError;
}

void COutbox::Finish(COutcome outcome)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_finished)
            return;
        m_finished = true;
        m_outcome = std::move(outcome);
        m_changed.notify_one();
        if (std::exchange(m_delivering, true))
            return;
    }
    Deliver();
}

void COutbox::Cancel()
{
    std::unique_lock lock(m_mutex);
    if (std::exchange(m_finished, true))
        return;
    m_objects.clear();
    m_outcome = COutcome(wmi::CallCancelled);
    Wake(std::move(lock));
}

void COutbox::Abandon()
{
    const std::lock_guard lock(m_mutex);
    m_finished = m_broken = m_abandoned = true;
    m_objects.clear();
    m_outcome.reset();
    m_changed.notify_one();
}

void COutbox::Wake(std::unique_lock<std::mutex> lock)
{
    m_changed.notify_one();
    if (std::exchange(m_delivering, true))
        return;
    lock.unlock();
    RunOnWorker([self = shared_from_this()] { self->Deliver(); });
}

void COutbox::Deliver()
{
    for (;;)
    {
        std::vector<ComPtr<IWbemClassObject>> objects;
        std::optional<COutcome> outcome;
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [&] { return !m_objects.empty() || m_outcome || m_abandoned; });
            if (m_abandoned)
                return;
            objects.swap(m_objects);
            if (objects.empty())
                outcome.swap(m_outcome);
        }
        Send(objects);
        if (!outcome)
            continue;
        if (outcome->Object)
            Send({outcome->Object});
        CallProcess(
            [&]
            {
                return m_client->SetStatus(WBEM_STATUS_COMPLETE, outcome->Result, outcome->Text.Get(),
                                           outcome->Status.Get());
            });
        return;
    }
}

void COutbox::Send(const std::vector<ComPtr<IWbemClassObject>>& objects)
{
    for (size_t first = 0; first < objects.size(); first += kLargestBatch)
    {
        const size_t end = std::min(objects.size(), first + kLargestBatch);
        std::vector<IWbemClassObject*> batch;
        for (size_t i = first; i < end; ++i)
            batch.push_back(objects[i].Get());
        if (SUCCEEDED(CallProcess(
                [&] { return m_client->Indicate(static_cast<long>(batch.size()), batch.data()); })))
            continue;
        const std::lock_guard lock(m_mutex);
        m_broken = true;
        m_objects.clear();
        return;
    }
}
} // namespace standin
