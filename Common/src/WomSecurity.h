// The client's identity: a request takes it on, shows it in the trace and gives it back. Impersonation
// belongs to the calling thread. If it fails, the request goes on under the process's own identity.
#pragma once

#include <windows.h>

class CWomSecurity
{
  public:
    // The switch: when it is off, no operation here touches the thread.
    explicit CWomSecurity(bool enabled = true) noexcept : m_enabled(enabled) {}
    virtual ~CWomSecurity() = default;

    bool Enabled() const noexcept { return m_enabled; }
    // Whether COM says that the calling thread runs as its client.
    bool Impersonating() const noexcept;
    // S_OK, S_FALSE when the switch is off, or COM's failure, which has been traced as an error.
    HRESULT Impersonate() const noexcept;
    // Traces the thread's user name and impersonation level.
    void OutputSecurityDebug() const noexcept;
    // Traces the security state and returns the thread to the process's identity.
    void RevertToSelf() const noexcept;

  private:
    bool m_enabled;
};
