#include "CDM/src/ZebTrace.h"

#include "CDM/src/ZebDebug.h"

namespace
{
constexpr int kIndent = 4;

// The depth of the calling thread. Kept up at every level, so that lines stand right whenever they are let
// through; and so kept where the system reaches it fastest, because functions that run for every instance are
// traced too. The thread's last error stays as it is: what it speaks of may not have been looked at yet.
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
