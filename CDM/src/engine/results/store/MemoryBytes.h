// The bytes of a structured-storage file in memory. The system's storage reads and writes thousands of small
// pieces: on a file that takes ten times as long, and a process that dies meanwhile leaves a broken file.
#pragma once

#include "Common/src/com/ComObject.h"

#include <objidl.h>
#include <string>

class CMemoryBytes final : public CComObject<ILockBytes>
{
  public:
    explicit CMemoryBytes(std::string bytes) : m_bytes(std::move(bytes)) {}

    // Whole once the storage on them was committed or released.
    const std::string& Bytes() const noexcept { return m_bytes; }

    STDMETHODIMP ReadAt(ULARGE_INTEGER offset, void* to, ULONG size, ULONG* read) override;
    STDMETHODIMP WriteAt(ULARGE_INTEGER offset, const void* from, ULONG size, ULONG* written) override;
    STDMETHODIMP SetSize(ULARGE_INTEGER size) override;
    STDMETHODIMP Stat(STATSTG* stat, DWORD flags) override;
    STDMETHODIMP Flush() override { return S_OK; }
    STDMETHODIMP LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return STG_E_INVALIDFUNCTION; }
    STDMETHODIMP UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return STG_E_INVALIDFUNCTION;
    }

  private:
    std::string m_bytes;
};
