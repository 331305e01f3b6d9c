#include "CDM/src/engine/results/store/StoreSession.h"

#include "CDM/src/ZebDebug.h"
#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/CriticalSection.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

namespace
{
CCriticalSection& Turn() noexcept
{
    static CCriticalSection turn;
    return turn;
}

// The newest change of each result in each file.
struct CNewest
{
    CCriticalSection lock;
    std::map<std::pair<std::wstring, std::wstring>, ULONGLONG> changes;
};

// Lives until the process is gone, as a thread may still store results then.
CNewest& Newest()
{
    static CNewest& newest = *new CNewest;
    return newest;
}
} // namespace

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

CStoreSession::CStoreSession(IStoreFiles& files, std::wstring path, Purpose purpose)
    : m_files(files), m_path(std::move(path)), m_purpose(purpose)
{
    if (m_purpose == Purpose::Change)
        Turn().Enter();
}

CStoreSession::CStoreSession(const CStoreSession& other, Purpose purpose)
    : CStoreSession(other.m_files, other.m_path, purpose)
{
}

CStoreSession::~CStoreSession()
{
    if (m_purpose == Purpose::Change)
        Turn().Leave();
}

bool CStoreSession::Claim(const wchar_t* resultId, ULONGLONG change) const
{
    std::pair<std::wstring, std::wstring> name(m_path, resultId);
    CNewest& newest = Newest();
    const CLockScope held(newest.lock);
    ULONGLONG& stored = newest.changes[std::move(name)];
    if (change < stored)
        return false;
    stored = change;
    return true;
}

HRESULT CStoreSession::IsStorageFile()
{
    if (!m_isStorage)
        m_isStorage = m_files.IsStorageFile(m_path.c_str());
    return *m_isStorage;
}

HRESULT CStoreSession::ReadFile()
{
    m_fromFile = true;
    std::string bytes;
    const HRESULT hr = m_files.Read(m_path.c_str(), bytes);
    if (FAILED(hr))
        return hr;
    m_bytes = MakeCom<CMemoryBytes>(std::move(bytes));
    return m_files.Open(*m_bytes.Get(), m_root.Put());
}

HRESULT CStoreSession::Open()
{
    if (!m_root && SUCCEEDED(m_openFailure))
        m_openFailure = ReadFile();
    return m_openFailure;
}

HRESULT CStoreSession::OpenOrCreate()
{
    const HRESULT hr = Open();
    if (hr == STG_E_FILENOTFOUND)
        return Create();
    // A damaged file has nothing left to lose, and no result could be kept ever again while it is there.
    if (!IsDamage(hr))
        return hr;
    const HRESULT created = StartAnew(hr);
    return FAILED(created) ? created : Open();
}

bool CStoreSession::WorksOnFile()
{
    return SUCCEEDED(Open()) && m_fromFile;
}

HRESULT CStoreSession::Create()
{
    m_bytes = MakeCom<CMemoryBytes>(std::string());
    m_fromFile = false;
    HRESULT hr = m_files.Create(*m_bytes.Get(), m_root.Put());
    if (SUCCEEDED(hr))
        hr = Keep();
    if (FAILED(hr))
        return hr;
    m_openFailure = S_OK;
    m_isStorage = S_OK;
    return S_OK;
}

HRESULT CStoreSession::Delete()
{
    m_root.Reset();
    m_isStorage.reset();
    m_openFailure = S_OK;
    m_kept.reset();
    return m_files.Delete(m_path.c_str());
}

HRESULT CStoreSession::Keep()
{
    const HRESULT hr = m_root->Commit(STGC_DEFAULT);
    if (SUCCEEDED(hr))
        m_kept = m_bytes->Bytes();
    return hr;
}

HRESULT CStoreSession::Publish()
{
    m_root.Reset();
    if (!m_kept)
        return S_OK;
    const HRESULT hr = m_files.Write(m_path.c_str(), *m_kept);
    m_kept.reset();
    return hr;
}

HRESULT CStoreSession::StartAnew(HRESULT damage)
{
    if (!m_fromFile)
        return S_FALSE;
    ZebDebug().Write("CResultsStore: the result file is damaged and gives way to a new one, hr = <%x>",
                     damage);
    m_files.KeepAside(m_path.c_str());
    m_root.Reset();
    return Create();
}

bool CStoreSession::IsDamage(HRESULT hr) noexcept
{
    constexpr HRESULT kOutOfReach[] = {STG_E_FILENOTFOUND,     STG_E_PATHNOTFOUND,  STG_E_ACCESSDENIED,
                                       STG_E_SHAREVIOLATION,   STG_E_LOCKVIOLATION, STG_E_INUSE,
                                       STG_E_TOOMANYOPENFILES, STG_E_MEDIUMFULL,    STG_E_INSUFFICIENTMEMORY};
    constexpr DWORD kUnreadable[] = {ERROR_CRC, ERROR_READ_FAULT, ERROR_SECTOR_NOT_FOUND, ERROR_FILE_CORRUPT,
                                     ERROR_DISK_CORRUPT};
    const auto isOne = [](const auto& of, auto what)
    { return std::find(std::begin(of), std::end(of), what) != std::end(of); };
    if (HRESULT_FACILITY(hr) == FACILITY_WIN32)
        return isOne(kUnreadable, static_cast<DWORD>(HRESULT_CODE(hr)));
    return FAILED(hr) && HRESULT_FACILITY(hr) == FACILITY_STORAGE && !isOne(kOutOfReach, hr);
}
