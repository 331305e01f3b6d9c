#include "standin/service/Outbox.h"

#include "Common/src/com/WmiStatus.h"
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
    {
        const CLockScope lock(m_lock);
        if (m_finished || m_broken)
            return wmi::CallCancelled;
        m_objects.push_back(std::move(object));
    }
    Wake();
    return wmi::NoError;
}

void COutbox::Finish(COutcome outcome, bool dropObjects)
{
    {
        const CLockScope lock(m_lock);
        if (m_finished)
            return;
        m_finished = true;
        if (dropObjects)
            m_objects.clear();
        m_outcome = std::move(outcome);
    }
    Wake();
}

void COutbox::Abandon()
{
    const CLockScope lock(m_lock);
    m_finished = true;
    m_broken = true;
    m_abandoned = true;
    m_objects.clear();
    m_outcome.reset();
}

void COutbox::Wake()
{
    {
        const CLockScope lock(m_lock);
        if (m_sending || m_abandoned)
            return;
        m_sending = true;
    }
    RunOnWorker([self = shared_from_this()] { self->Deliver(); });
}

void COutbox::Deliver()
{
    for (;;)
    {
        std::vector<ComPtr<IWbemClassObject>> objects;
        std::optional<COutcome> outcome;
        {
            const CLockScope lock(m_lock);
            objects.swap(m_objects);
            if (objects.empty())
            {
                outcome.swap(m_outcome);
                m_sending = outcome.has_value();
                if (!outcome)
                    return;
            }
        }
        if (outcome)
            m_client->SetStatus(WBEM_STATUS_COMPLETE, outcome->Result, outcome->Text.Get(),
                                outcome->Status.Get());
        else
            Send(objects);
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
        if (SUCCEEDED(m_client->Indicate(static_cast<long>(batch.size()), batch.data())))
            continue;
        const CLockScope lock(m_lock);
        m_broken = true;
        m_objects.clear();
        return;
    }
}
} // namespace standin
