#include "CDM/src/engine/results/store/MemoryBytes.h"

#include "Common/src/com/ComBoundary.h"

#include <algorithm>
#include <cstring>

STDMETHODIMP CMemoryBytes::ReadAt(ULARGE_INTEGER offset, void* to, ULONG size, ULONG* read)
{
    ULONG count = 0;
    if (offset.QuadPart < m_bytes.size())
    {
        count = static_cast<ULONG>(std::min<ULONGLONG>(size, m_bytes.size() - offset.QuadPart));
        std::memcpy(to, m_bytes.data() + offset.QuadPart, count);
    }
    if (read)
        *read = count;
    return S_OK;
}

STDMETHODIMP CMemoryBytes::WriteAt(ULARGE_INTEGER offset, const void* from, ULONG size, ULONG* written)
{
    if (written)
        *written = 0;
    const ULONGLONG end = offset.QuadPart + size;
    ULARGE_INTEGER needed{};
    needed.QuadPart = std::max<ULONGLONG>(end, m_bytes.size());
    const HRESULT hr = SetSize(needed);
    if (FAILED(hr))
        return hr;
    std::memcpy(m_bytes.data() + offset.QuadPart, from, size);
    if (written)
        *written = size;
    return S_OK;
}

STDMETHODIMP CMemoryBytes::SetSize(ULARGE_INTEGER size)
{
    return AtComBoundary(
        [&]
        {
            m_bytes.resize(size.QuadPart);
            return S_OK;
        });
}

STDMETHODIMP CMemoryBytes::Stat(STATSTG* stat, DWORD)
{
    *stat = {};
    stat->type = STGTY_LOCKBYTES;
    stat->cbSize.QuadPart = m_bytes.size();
    return S_OK;
}
