#include "CDM/src/engine/ResultsStore.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebLock.h"
#include "CDM/src/ZebTrace.h"
#include "CDM/src/engine/EngineBoundary.h"
#include "CDM/src/engine/ResultFields.h"
#include "CDM/src/engine/StoreStream.h"
#include "Common/src/com/WmiStatus.h"

#include <algorithm>

namespace
{
// Files of another version are dropped: give the layout a new identifier whenever it changes.
constexpr wchar_t kVersion[] = L"{5C0E7B1E-8F1B-4B6C-9F0A-6D8C2B7E4A31}";
// "vg", "nt", "ag" and the fields; the messages come on top.
constexpr ULONG kSingleValues = 21;
// Names that no result identifier can have: they lack its separator.
constexpr wchar_t kUnfinished[] = L"unfinished";
constexpr wchar_t kPrevious[] = L"previous";

constexpr DWORD kReadWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

CCriticalSection& StoreLock() noexcept
{
    static CCriticalSection lock;
    return lock;
}

// What opening a file gives that is there but is no usable storage.
bool IsDamagedFile(HRESULT hr) noexcept
{
    constexpr HRESULT kDamaged[] = {STG_E_INVALIDHEADER, STG_E_DOCFILECORRUPT, STG_E_OLDFORMAT, STG_E_OLDDLL};
    return std::find(std::begin(kDamaged), std::end(kDamaged), hr) != std::end(kDamaged);
}

HRESULT DestroyIfThere(IStorage& root, const wchar_t* name)
{
    const HRESULT hr = root.DestroyElement(name);
    return hr == STG_E_FILENOTFOUND ? S_OK : hr;
}
} // namespace

HRESULT CResultsStore::OpenOrCreate()
{
    const HRESULT hr = m_session.Open(m_root);
    if (SUCCEEDED(hr))
        return S_OK;
    // A damaged file has nothing left to lose, and while it stands there no result could be kept ever again.
    // A file that is only out of reach at the moment must stay.
    if (IsDamagedFile(hr))
        ZebDebug().Write("CResultsStore: the result file is damaged and gives way to a new one, hr = <%x>",
                         hr);
    else if (hr != STG_E_FILENOTFOUND)
        return hr;
    return m_session.Create(m_root);
}

HRESULT CResultsStore::StoreResult(const CBstr& resultId, const CBstr& adapterKey, const CDiagResult& result)
{
    const CZebTrace trace("CResultsStore::StoreResult");
    const CZebLock held(StoreLock());
    m_resultId = resultId.Text();
    m_adapterKey = adapterKey.Text();

    HRESULT hr = OpenOrCreate();
    if (FAILED(hr))
    {
        ZebDebug().Write("CResultsStore::StoreResult: StgCreateDocfile failed, hr = <%x>", hr);
        return hr;
    }
    m_session.SetChanged();
    // The new result is built beside the old one, which stays until everything is written.
    hr = DestroyIfThere(*m_root.Get(), kUnfinished);
    if (SUCCEEDED(hr))
        hr = m_root->CreateStorage(kUnfinished, kReadWrite, 0, 0, m_sub.Put());
    if (SUCCEEDED(hr))
        hr = WithinMemory([&] { return WriteValues(result.Data()); });
    m_sub.Reset();
    if (SUCCEEDED(hr))
        hr = PutInPlace();
    if (FAILED(hr))
        m_root->DestroyElement(kUnfinished);
    m_root.Reset();
    return hr;
}

HRESULT CResultsStore::PutInPlace()
{
    IStorage& root = *m_root.Get();
    HRESULT hr = DestroyIfThere(root, kPrevious);
    if (FAILED(hr))
        return hr;
    hr = root.RenameElement(m_resultId.c_str(), kPrevious);
    if (FAILED(hr) && hr != STG_E_FILENOTFOUND)
        return hr;
    hr = root.RenameElement(kUnfinished, m_resultId.c_str());
    if (FAILED(hr))
    {
        root.RenameElement(kPrevious, m_resultId.c_str());
        return hr;
    }
    // What is left of the old result hurts nobody; the next change of this file tries again.
    root.DestroyElement(kPrevious);
    return S_OK;
}

// A value whose stream cannot be made is left out; it fails the result only where nothing could be read back
// without it. A stream that takes no text means that the file takes no more.
HRESULT CResultsStore::WriteText(const std::wstring& stream, const std::wstring& text, bool* skipped)
{
    bool created = false;
    const HRESULT hr = WriteStreamText(*m_sub.Get(), stream.c_str(), text, created);
    if (created)
        return hr;
    ZebDebug().Write("CResultsStore::StoreResult:CreateStream failed <%x>", hr);
    if (!skipped)
        return hr;
    *skipped = true;
    return S_OK;
}

HRESULT CResultsStore::WriteValues(const CResultData& data)
{
    bool skipped = false;
    HRESULT hr = WriteText(StreamName(L"vg"), kVersion, nullptr);
    if (SUCCEEDED(hr))
        hr = WriteText(StreamName(L"nt"), NumberText(kSingleValues), &skipped);
    if (SUCCEEDED(hr))
        hr = WriteText(StreamName(L"ag"), m_adapterKey, nullptr);
    for (const CResultField& field : ResultFields())
        if (SUCCEEDED(hr))
            hr = WriteText(StreamName(field.Prefix), field.Text(data), &skipped);
    return SUCCEEDED(hr) ? WriteMessages(data) : hr;
}

// The count says how many messages are there as a whole.
HRESULT CResultsStore::WriteMessages(const CResultData& data)
{
    HRESULT hr = S_OK;
    ULONG written = 0;
    for (bool skipped = false; written < data.MessageCount; ++written)
    {
        const std::wstring index = std::to_wstring(written);
        hr = WriteText(StreamName(L"tidb") + index, NumberText(data.StringIDs[written]), &skipped);
        if (SUCCEEDED(hr) && !skipped)
            hr = WriteText(StreamName(L"tmb") + index, NumberText(data.TestMessages[written]), &skipped);
        if (FAILED(hr))
            return hr;
        if (skipped)
            break;
    }
    bool skipped = false;
    return WriteText(StreamName(L"tmc"), NumberText(written), &skipped);
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
    change.SetChanged();
    change.Publish();
}

// Whether the stored result is of this version and of this adapter.
CResultsStore::Owner CResultsStore::ReadOwner()
{
    std::wstring adapterKey; // empty where the result has none, and so is the version: neither is ours
    std::wstring version;
    const StreamRead adapterRead = ReadStreamText(*m_sub.Get(), StreamName(L"ag").c_str(), adapterKey);
    const StreamRead versionRead = ReadStreamText(*m_sub.Get(), StreamName(L"vg").c_str(), version);
    // One result with an illegible version says nothing about the others in the file.
    if (versionRead == StreamRead::Damaged)
    {
        Damaged(StreamName(L"vg"));
        return Owner::Illegible;
    }
    if (version != kVersion)
        return Owner::OtherVersion;
    if (adapterRead == StreamRead::Damaged)
    {
        Damaged(StreamName(L"ag"));
        return Owner::Illegible;
    }
    return adapterKey == m_adapterKey ? Owner::ThisAdapter : Owner::OtherAdapter;
}

HRESULT CResultsStore::ReadValues(CResultData& data)
{
    const std::wstring key = data.ResultID.Text();
    for (const CResultField& field : ResultFields())
    {
        const std::wstring stream = StreamName(field.Prefix);
        std::wstring text;
        const StreamRead read = ReadStreamText(*m_sub.Get(), stream.c_str(), text);
        if (read == StreamRead::Damaged || (read == StreamRead::Done && !field.Take(text, data)))
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
    if (read == StreamRead::Damaged || !TakeNumber(text, count) || static_cast<LONG>(count) < 0)
        return Damaged(stream);
    // The lists grow with what is there, whatever the count says.
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

bool CResultsStore::ReadNumber(const std::wstring& stream, ULONG& number)
{
    std::wstring text;
    return ReadStreamText(*m_sub.Get(), stream.c_str(), text) == StreamRead::Done && TakeNumber(text, number);
}

HRESULT CResultsStore::Damaged(const std::wstring& stream)
{
    ZebDebug().Write(L"CResultsStore::LoadResult: <%s> cannot be used", stream.c_str());
    return wmi::Failed;
}

HRESULT CResultsStore::Publish()
{
    const CZebLock held(StoreLock());
    return m_session.Publish();
}

// Does not take the store lock: a client waits for the answer.
HRESULT CResultsStore::RemoveResult(const CBstr& resultId)
{
    HRESULT hr = OpenOrCreate();
    if (SUCCEEDED(hr))
        hr = m_root->DestroyElement(resultId.Text());
    if (SUCCEEDED(hr))
        m_session.SetChanged();
    m_root.Reset();
    return hr;
}
