// What one run of one test has brought, or is bringing.
#pragma once

#include "CDM/src/engine/DiagObject.h"
#include "CDM/src/engine/DiagRecords.h"

#include <atomic>

// The messages of a result while they are put together. They reach the result in one step, so that a client
// that reads a running test never sees half a list.
class CResultMessages
{
  public:
    void AddStringID(ULONG id) { m_stringIds.push_back(id); }
    void AddMessageValue(ULONG value) { m_values.push_back(value); }
    // Makes the string and the value added last count as one message.
    void CommitMessage() noexcept { ++m_count; }
    void Add(ULONG stringId, ULONG value);

  private:
    friend class CDiagResult;
    std::vector<ULONG> m_stringIds;
    std::vector<ULONG> m_values;
    ULONG m_count = 0;
};

class CDiagResult : public CDiagObject
{
  public:
    CDiagResult(BSTR key, ULONG diagnosticNameStringId, bool senderResponder);

    CResultData Data() const;
    // Puts a whole record in place, as read from the result store. The key stays.
    void SetData(CResultData data);

    // E_INVALIDARG, state unchanged, above TestStateStopped.
    HRESULT SetTestState(TestState state);
    // E_INVALIDARG, value unchanged, for what a byte does not hold.
    HRESULT SetPercentComplete(LONGLONG percent);
    void SetStartTime(const SYSTEMTIME& localTime) { Set(&CResultData::TestStartTime, localTime); }
    void SetCompletionTime(const SYSTEMTIME& localTime) { Set(&CResultData::TestCompletionTime, localTime); }
    void RemoveCompletionTime() { Set(&CResultData::TestCompletionTime, std::nullopt); }
    void SetTimeStamp(const SYSTEMTIME& localTime) { Set(&CResultData::TimeStamp, localTime); }

    void ClearMessages() { SetMessages({}); }
    void SetMessages(CResultMessages messages);

    // The six values that govern a run.
    void SetSettingValues(const CSettingData& setting);

    // To be called before the result is loaded from the store, and when a run begins and ends.
    void SetLoaded() noexcept;
    void SetChanged() noexcept;
    bool IsAsLoaded() const noexcept { return m_asLoaded; }
    // When that was. Changes are numbered through the whole process, each number greater than all before it.
    ULONGLONG Change() const noexcept { return m_change; }
    static ULONGLONG NextChange() noexcept;

  private:
    template <class Member, class Value>
    void Set(Member member, const Value& value)
    {
        const CWriteScope held(Lock());
        m_data.*member = value;
    }

    std::atomic<bool> m_asLoaded{false};
    std::atomic<ULONGLONG> m_change{0};
    CResultData m_data; // its ResultID stays empty: the object has the key
};
