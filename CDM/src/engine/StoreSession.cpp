#include "CDM/src/engine/StoreSession.h"

#include "Common/src/com/CriticalSection.h"

namespace
{
CCriticalSection& Turn() noexcept
{
    static CCriticalSection turn;
    return turn;
}
} // namespace

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

HRESULT CStoreSession::IsStorageFile()
{
    if (!m_isStorage)
        m_isStorage = m_files.IsStorageFile(m_path.c_str());
    return *m_isStorage;
}

HRESULT CStoreSession::ReadFile()
{
    std::string bytes;
    const HRESULT hr = m_files.Read(m_path.c_str(), bytes);
    if (FAILED(hr))
        return hr;
    m_bytes = MakeCom<CMemoryBytes>(std::move(bytes));
    return m_files.Open(*m_bytes.Get(), m_root.Put());
}

HRESULT CStoreSession::Open(ComPtr<IStorage>& root)
{
    if (!m_root && SUCCEEDED(m_openFailure))
        m_openFailure = ReadFile();
    if (SUCCEEDED(m_openFailure))
        root = m_root;
    return m_openFailure;
}

HRESULT CStoreSession::Create(ComPtr<IStorage>& root)
{
    m_bytes = MakeCom<CMemoryBytes>(std::string());
    const HRESULT hr = m_files.Create(*m_bytes.Get(), m_root.Put());
    if (FAILED(hr))
        return hr;
    m_openFailure = S_OK;
    m_isStorage = S_OK;
    m_changed = true;
    root = m_root;
    return S_OK;
}

HRESULT CStoreSession::Delete()
{
    m_root.Reset();
    m_isStorage.reset();
    m_openFailure = S_OK;
    m_changed = false;
    return m_files.Delete(m_path.c_str());
}

HRESULT CStoreSession::Publish()
{
    if (!m_root || !m_changed)
        return S_OK;
    const HRESULT hr = m_root->Commit(STGC_DEFAULT);
    m_root.Reset();
    m_changed = false;
    return FAILED(hr) ? hr : m_files.Write(m_path.c_str(), m_bytes->Bytes());
}
