#include "CDM/src/engine/StoreSession.h"

namespace
{
CCriticalSection& Turn() noexcept
{
    static CCriticalSection turn;
    return turn;
}

bool IsMissing(HRESULT hr) noexcept
{
    return hr == STG_E_FILENOTFOUND || hr == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
}
} // namespace

CStoreSession::CStoreSession(IStoreFiles& files, std::wstring path, Purpose purpose)
    : m_turn(Turn()), m_files(files), m_path(std::move(path)), m_change(purpose == Purpose::Change),
      m_work(m_change ? m_path + L".new" : m_path)
{
}

CStoreSession::~CStoreSession()
{
    m_root.Reset();
    if (m_change && m_prepared)
        m_files.Delete(m_work.c_str());
}

HRESULT CStoreSession::IsStorageFile()
{
    if (!m_isStorage)
        m_isStorage = m_files.IsStorageFile(m_path.c_str());
    return *m_isStorage;
}

// The working copy. A file that is there but cannot be copied must not be lost to one that starts empty.
HRESULT CStoreSession::Prepare()
{
    if (!m_prepared)
    {
        const HRESULT copied = m_change ? m_files.Copy(m_path.c_str(), m_work.c_str()) : S_OK;
        m_prepared = IsMissing(copied) ? S_OK : copied;
        if (IsMissing(copied))
            m_files.Delete(m_work.c_str()); // what a process that died has left
    }
    return *m_prepared;
}

HRESULT CStoreSession::Open(ComPtr<IStorage>& root)
{
    HRESULT hr = m_openFailure;
    if (SUCCEEDED(hr))
        hr = Prepare();
    if (SUCCEEDED(hr) && !m_root)
        hr = m_openFailure = m_files.Open(m_work.c_str(), m_root.Put());
    if (SUCCEEDED(hr))
        root = m_root;
    return hr;
}

HRESULT CStoreSession::Create(bool replace, ComPtr<IStorage>& root)
{
    HRESULT hr = Prepare();
    if (SUCCEEDED(hr))
        hr = m_files.Create(m_work.c_str(), replace, m_root.Put());
    if (SUCCEEDED(hr))
    {
        m_openFailure = S_OK;
        m_isStorage = S_OK;
        root = m_root;
    }
    return hr;
}

HRESULT CStoreSession::Delete()
{
    m_root.Reset();
    m_isStorage.reset();
    m_openFailure = S_OK;
    return m_files.Delete(m_path.c_str());
}

HRESULT CStoreSession::Publish()
{
    if (!m_root)
        return S_OK;
    HRESULT hr = m_change ? m_root->Commit(STGC_DEFAULT) : S_OK;
    m_root.Reset();
    if (!m_change || FAILED(hr))
        return hr;
    hr = m_files.Replace(m_work.c_str(), m_path.c_str());
    if (SUCCEEDED(hr))
        m_prepared.reset();
    return hr;
}
