#include "CDM/src/ZebTrace.h"

#include "CDM/src/ZebDebug.h"

namespace
{
constexpr int kIndent = 4;

// The depth of the calling thread. Kept up to date at every level, so that lines are indented correctly as
// soon as the level lets them through. Thread-local storage is the fastest place for it: functions that run
// for every instance are traced too. The thread's last error is preserved, because a caller may still look at
// it.
class CThreadDepth
{
  public:
    CThreadDepth() noexcept : m_error(GetLastError()) {}
    ~CThreadDepth() { SetLastError(m_error); }
    CThreadDepth(const CThreadDepth&) = delete;
    CThreadDepth& operator=(const CThreadDepth&) = delete;

    int Get() const noexcept { return static_cast<int>(reinterpret_cast<INT_PTR>(TlsGetValue(Slot()))); }
    void Set(int depth) const noexcept
    {
        TlsSetValue(Slot(), reinterpret_cast<void*>(static_cast<INT_PTR>(depth)));
    }

  private:
    static DWORD Slot() noexcept
    {
        static const DWORD slot = TlsAlloc();
        return slot;
    }

    const DWORD m_error;
};
} // namespace

bool Failed(HRESULT hr, const char* text) noexcept
{
    if (SUCCEEDED(hr))
        return false;
    const DWORD error = GetLastError();
    ZebDebug().Write(text, hr);
    SetLastError(error);
    return true;
}

HRESULT TraceFailure(HRESULT hr, const char* text) noexcept
{
    Failed(hr, text);
    return hr;
}

CZebTrace::CZebTrace(const char* name) noexcept : m_name(name)
{
    const CThreadDepth depth;
    const int outer = depth.Get();
    ZebDebug().Write("%*s { --> %s", outer * kIndent, "", m_name);
    depth.Set(outer + 1);
}

CZebTrace::~CZebTrace()
{
    const CThreadDepth depth;
    const int outer = depth.Get() - 1;
    depth.Set(outer);
    ZebDebug().Write("%*s } <-- %s", outer * kIndent, "", m_name);
}

CZebLock::CZebLock(CCriticalSection& section) noexcept : m_section(section)
{
    ZebDebug().Write("Locking %p", &m_section);
    m_section.Enter();
    ZebDebug().Write("Entered");
}

CZebLock::~CZebLock()
{
    ZebDebug().Write("Unlocking %p", &m_section);
    m_section.Leave();
}
