// A run's surroundings under the control of a test: a clock that moves only when a wait says so, and waits
// that end as the test has written down. Threads are real.
#pragma once

#include "CDM/src/engine/runs/RunEnvironment.h"

#include <deque>
#include <functional>
#include <initializer_list>
#include <utility>
#include <vector>

class CFakeRunEnvironment : public IRunEnvironment
{
  public:
    enum class Wake
    {
        TimeOut,
        Event,       // which is signalled then
        LateEvent,   // which somebody else has reset by the time the run looks
        WorkerEnded, // waits for the worker really to end
        Failed,
        Abandoned
    };

    // How the next waits for event or worker end; when none is left, with a time-out.
    void Script(std::initializer_list<Wake> wakes) { m_wakes.assign(wakes); }
    void FailThreads() { m_failThreads = true; }
    void FailWorkerWaits() { m_failWorkerWaits = true; }
    // Waits with a time-out look once and give up.
    void DoNotWait(bool on = true) { m_doNotWait = on; }
    void SetClock(ULONGLONG milliseconds) { m_now = milliseconds; }
    // Called at every wait for event or worker, before it ends.
    void OnWait(std::function<void()> action) { m_onWait = std::move(action); }
    // Called before the next thread starts.
    void OnThread(std::function<void()> action) { m_onThread = std::move(action); }
    // The time-outs that the waits asked for.
    std::vector<DWORD> TimeOuts() const { return m_timeOuts; }
    void ForgetTimeOuts() { m_timeOuts.clear(); }

    SYSTEMTIME LocalTime() override
    {
        // 2024-03-05 10:00:00 plus the clock, up to a day.
        const ULONGLONG seconds = 36000 + m_now / 1000;
        SYSTEMTIME time{};
        time.wYear = 2024;
        time.wMonth = 3;
        time.wDay = 5;
        time.wHour = static_cast<WORD>(seconds / 3600);
        time.wMinute = static_cast<WORD>(seconds / 60 % 60);
        time.wSecond = static_cast<WORD>(seconds % 60);
        return time;
    }
    ULONGLONG ProcessMilliseconds() override { return m_now; }
    CHandle StartThread(LPTHREAD_START_ROUTINE procedure, void* parameter) override
    {
        if (const auto action = std::exchange(m_onThread, nullptr))
            action();
        return CHandle(m_failThreads ? nullptr : CreateThread(nullptr, 0, procedure, parameter, 0, nullptr));
    }
    DWORD WaitForEither(HANDLE event, HANDLE worker, DWORD milliseconds) override
    {
        m_timeOuts.push_back(milliseconds);
        if (m_onWait)
            m_onWait();
        Wake wake = Wake::TimeOut;
        if (!m_wakes.empty())
        {
            wake = m_wakes.front();
            m_wakes.pop_front();
        }
        switch (wake)
        {
        case Wake::Event:
            SetEvent(event);
            return WAIT_OBJECT_0;
        case Wake::LateEvent:
            return WAIT_OBJECT_0;
        case Wake::WorkerEnded:
            WaitForSingleObject(worker, INFINITE);
            return WAIT_OBJECT_0 + 1;
        case Wake::Failed:
            return WAIT_FAILED;
        case Wake::Abandoned:
            return WAIT_ABANDONED_0;
        default:
            m_now += milliseconds;
            return WAIT_TIMEOUT;
        }
    }
    DWORD Wait(HANDLE object, DWORD milliseconds) override
    {
        const bool looks = m_doNotWait && milliseconds != INFINITE;
        const DWORD result = WaitForSingleObject(object, looks ? 0 : milliseconds);
        return m_failWorkerWaits ? WAIT_FAILED : result;
    }

  private:
    std::deque<Wake> m_wakes;
    std::vector<DWORD> m_timeOuts;
    std::function<void()> m_onWait;
    std::function<void()> m_onThread;
    ULONGLONG m_now = 0;
    bool m_failThreads = false;
    bool m_failWorkerWaits = false;
    bool m_doNotWait = false;
};
