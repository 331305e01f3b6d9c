#include "CDM/src/engine/results/store/ResultsStore.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "CDM/src/engine/results/store/ResultFields.h"
#include "CDM/src/engine/results/store/StoreStream.h"
#include "Common/src/com/WmiStatus.h"

namespace
{
// Files of another version are dropped: give the layout a new identifier whenever it changes.
constexpr wchar_t kVersion[] = L"{5C0E7B1E-8F1B-4B6C-9F0A-6D8C2B7E4A31}";
// "vg", "nt", "ag" and the fields; the messages come on top.
constexpr ULONG kSingleValues = 21;
// More than any test gives. The count in a damaged file can be anything.
constexpr ULONG kMostMessages = 65536;

constexpr DWORD kReadWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

CCriticalSection& StoreLock() noexcept
{
    static CCriticalSection lock;
    return lock;
}
} // namespace

HRESULT CResultsStore::OpenOrCreate()
{
    const HRESULT hr = m_session.Open(m_root);
    if (SUCCEEDED(hr))
        return S_OK;
    if (hr == STG_E_FILENOTFOUND)
        return m_session.Create(m_root);
    // A damaged file has nothing left to lose, and no result could be kept ever again while it is there.
    if (!CStoreSession::IsDamage(hr))
        return hr;
    const HRESULT created = m_session.StartAnew(hr);
    return FAILED(created) ? created : m_session.Open(m_root);
}

HRESULT CResultsStore::StoreResult(const CBstr& resultId, const CBstr& adapterKey, const CDiagResult& result)
{
    const CZebTrace trace("CResultsStore::StoreResult");
    const CZebLock held(StoreLock());
    m_resultId = resultId.Text();
    m_adapterKey = adapterKey.Text();

    // All of this happens in memory. A result that fails half way is not kept, so the file does not see it.
    HRESULT hr = OpenOrCreate();
    if (SUCCEEDED(hr))
        hr = Replace(result);
    m_sub.Reset();
    m_root.Reset();
    if (SUCCEEDED(hr))
        hr = m_session.Keep();
    if (FAILED(hr))
        TraceFileFailure(hr);
    return hr;
}

HRESULT CResultsStore::Replace(const CDiagResult& result)
{
    HRESULT hr = m_root->DestroyElement(m_resultId.c_str());
    if (FAILED(hr) && hr != STG_E_FILENOTFOUND)
        return hr;
    hr = m_root->CreateStorage(m_resultId.c_str(), kReadWrite, 0, 0, m_sub.Put());
    return SUCCEEDED(hr) ? WithinMemory([&] { return WriteValues(result.Data()); }) : hr;
}

// A value whose stream cannot be made is left out. A stream that takes no text means that the file takes no
// more.
HRESULT CResultsStore::WriteText(const std::wstring& stream, const std::wstring& text)
{
    bool created = false;
    const HRESULT hr = WriteStreamText(*m_sub.Get(), stream.c_str(), text, created);
    if (created)
        return hr;
    ZebDebug().Write("CResultsStore::StoreResult:CreateStream failed <%x>", hr);
    return S_OK;
}

HRESULT CResultsStore::WriteValues(const CResultData& data)
{
    HRESULT hr = WriteText(StreamName(L"vg"), kVersion);
    if (SUCCEEDED(hr))
        hr = WriteText(StreamName(L"nt"), NumberText(kSingleValues));
    if (SUCCEEDED(hr))
        hr = WriteText(StreamName(L"ag"), m_adapterKey);
    for (const CResultField& field : ResultFields())
        if (SUCCEEDED(hr))
            hr = WriteText(StreamName(field.Prefix), field.Text(data));
    return SUCCEEDED(hr) ? WriteMessages(data) : hr;
}

HRESULT CResultsStore::WriteMessages(const CResultData& data)
{
    HRESULT hr = S_OK;
    for (ULONG i = 0; i < data.MessageCount && SUCCEEDED(hr); ++i)
    {
        const std::wstring index = std::to_wstring(i);
        hr = WriteText(StreamName(L"tidb") + index, NumberText(data.StringIDs[i]));
        if (SUCCEEDED(hr))
            hr = WriteText(StreamName(L"tmb") + index, NumberText(data.TestMessages[i]));
    }
    return SUCCEEDED(hr) ? WriteText(StreamName(L"tmc"), NumberText(data.MessageCount)) : hr;
}

HRESULT CResultsStore::LoadResult(const CBstr& resultId, const CBstr& adapterKey, CDiagResult& result)
{
    const CZebTrace trace("CResultsStore::LoadResult");
    m_resultId = resultId.Text();
    m_adapterKey = adapterKey.Text();
    HRESULT hr = S_OK;
    bool stale = false;
    {
        const CZebLock held(StoreLock());
        hr = Load(result, stale);
        m_sub.Reset();
        m_root.Reset();
    }
    if (stale)
        RemoveStale();
    return hr;
}

HRESULT CResultsStore::Load(CDiagResult& result, bool& stale)
{
    // S_FALSE, for a file that is no storage, goes to the caller as it is.
    HRESULT hr = m_session.IsStorageFile();
    if (hr == S_OK)
        hr = OpenResult();
    if (hr != S_OK)
        return hr;
    const Owner owner = ReadOwner();
    stale = owner == Owner::OtherAdapter;
    if (owner == Owner::OtherVersion)
    {
        m_sub.Reset();
        m_root.Reset();
        if (m_session.IsStorageFile() == S_OK)
            m_session.Delete();
    }
    if (owner != Owner::ThisAdapter)
        return wmi::Failed;
    CResultData data = result.Data();
    hr = ReadValues(data);
    if (hr == S_OK)
        result.SetData(std::move(data));
    return hr;
}

HRESULT CResultsStore::OpenResult()
{
    const HRESULT hr = m_session.Open(m_root);
    return hr == S_OK ? m_root->OpenStorage(m_resultId.c_str(), nullptr, kReadWrite, nullptr, 0, m_sub.Put())
                      : hr;
}

// Removes the result of an adapter that is not there any more. The store lock is not held here, as this waits
// for the turn of others, who need the lock; so one of them may have replaced the result meanwhile.
void CResultsStore::RemoveStale()
{
    CStoreSession change(m_session, CStoreSession::Purpose::Change);
    const CZebLock held(StoreLock());
    CResultsStore store(change);
    store.m_resultId = m_resultId;
    store.m_adapterKey = m_adapterKey;
    if (store.OpenResult() != S_OK || store.ReadOwner() != Owner::OtherAdapter)
        return;
    store.m_sub.Reset();
    if (FAILED(store.m_root->DestroyElement(m_resultId.c_str())))
        return;
    store.m_root.Reset();
    if (SUCCEEDED(change.Keep()))
        change.Publish();
}

// Whether the stored result is of this version and of this adapter.
CResultsStore::Owner CResultsStore::ReadOwner()
{
    std::wstring adapterKey; // empty where the result has none, and so is the version: neither is ours
    std::wstring version;
    const StreamRead adapterRead = ReadStreamText(*m_sub.Get(), StreamName(L"ag").c_str(), adapterKey);
    const StreamRead versionRead = ReadStreamText(*m_sub.Get(), StreamName(L"vg").c_str(), version);
    if (versionRead == StreamRead::Refused)
        return Illegible(L"vg");
    if (versionRead == StreamRead::Damaged || version != kVersion)
        return Owner::OtherVersion;
    if (adapterRead == StreamRead::Refused || adapterRead == StreamRead::Damaged)
        return Illegible(L"ag");
    return adapterKey == m_adapterKey ? Owner::ThisAdapter : Owner::OtherAdapter;
}

CResultsStore::Owner CResultsStore::Illegible(const wchar_t* prefix)
{
    Damaged(StreamName(prefix));
    return Owner::Illegible;
}

HRESULT CResultsStore::ReadValues(CResultData& data)
{
    const std::wstring key = data.ResultID.Text();
    for (const CResultField& field : ResultFields())
    {
        const std::wstring stream = StreamName(field.Prefix);
        std::wstring text;
        const StreamRead read = ReadStreamText(*m_sub.Get(), stream.c_str(), text);
        if (read != StreamRead::Missing && (read != StreamRead::Done || !field.Take(text, data)))
            return Damaged(stream);
    }
    // A result that names another test would be listed under a key by which it cannot be asked for.
    if (key != data.ResultID.View())
        return Damaged(StreamName(L"k"));
    return ReadMessages(data);
}

HRESULT CResultsStore::ReadMessages(CResultData& data)
{
    const std::wstring stream = StreamName(L"tmc");
    std::wstring text;
    const StreamRead read = ReadStreamText(*m_sub.Get(), stream.c_str(), text);
    if (read == StreamRead::Missing)
        return S_OK;
    ULONG count = 0;
    if (read != StreamRead::Done || !TakeNumber(text, count) || count > kMostMessages)
        return Damaged(stream);
    for (ULONG i = 0; i < count; ++i)
    {
        const std::wstring index = std::to_wstring(i);
        ULONG id = 0;
        ULONG value = 0;
        if (!ReadNumber(StreamName(L"tidb") + index, id) || !ReadNumber(StreamName(L"tmb") + index, value))
            return Damaged(stream);
        data.StringIDs.push_back(id);
        data.TestMessages.push_back(value);
    }
    data.MessageCount = count;
    return S_OK;
}

// A number whose stream is missing stays as it is.
bool CResultsStore::ReadNumber(const std::wstring& stream, ULONG& number)
{
    std::wstring text;
    const StreamRead read = ReadStreamText(*m_sub.Get(), stream.c_str(), text);
    return read == StreamRead::Missing || (read == StreamRead::Done && TakeNumber(text, number));
}

HRESULT CResultsStore::Damaged(const std::wstring& stream)
{
    ZebDebug().Write(L"CResultsStore::LoadResult: <%s> cannot be used", stream.c_str());
    return wmi::Failed;
}

HRESULT CResultsStore::Publish()
{
    const CZebLock held(StoreLock());
    const HRESULT hr = m_session.Publish();
    if (FAILED(hr))
        TraceFileFailure(hr);
    return hr;
}

void CResultsStore::TraceFileFailure(HRESULT hr)
{
    ZebDebug().Write("CResultsStore::StoreResult: StgCreateDocfile failed, hr = <%x>", hr);
}

// Does not take the store lock: a client waits for the answer.
HRESULT CResultsStore::RemoveResult(const CBstr& resultId)
{
    HRESULT hr = OpenOrCreate();
    if (SUCCEEDED(hr))
        hr = m_root->DestroyElement(resultId.Text());
    m_root.Reset();
    return SUCCEEDED(hr) ? m_session.Keep() : hr;
}
