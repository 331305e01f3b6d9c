#include "bench/StreamCopy.h"

#include "CDM/src/engine/results/store/ResultFields.h"
#include "CDM/src/engine/results/store/StoreFiles.h"
#include "CDM/src/engine/results/store/StoreSession.h"
#include "Common/src/com/ComPtr.h"
#include "bench/Must.h"

#include <fstream>
#include <objbase.h>
#include <sstream>

namespace
{
constexpr DWORD kReadWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr ULONG kLongestStream = 4096;

ComPtr<IStorage> Open(const std::wstring& file)
{
    ComPtr<IStorage> root;
    Must(StgOpenStorage(file.c_str(), nullptr, kReadWrite, nullptr, 0, root.Put()), "StgOpenStorage");
    return root;
}

ComPtr<CMemoryBytes> ReadWhole(const std::wstring& file)
{
    std::ifstream stream(file.c_str(), std::ios::binary);
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return MakeCom<CMemoryBytes>(bytes.str());
}

ComPtr<IStorage> OpenOn(ILockBytes& bytes)
{
    ComPtr<IStorage> root;
    Must(StgOpenStorageOnILockBytes(&bytes, nullptr, kReadWrite, nullptr, 0, root.Put()),
         "StgOpenStorageOnILockBytes");
    return root;
}

ComPtr<IStorage> OpenSub(IStorage& root, const std::wstring& name)
{
    ComPtr<IStorage> sub;
    Must(root.OpenStorage(name.c_str(), nullptr, kReadWrite, nullptr, 0, sub.Put()), "OpenStorage");
    return sub;
}

// How many bytes of the stream now stand in `buffer`; -1 where there is no such stream.
long ReadStream(IStorage& storage, const std::wstring& name, std::string& buffer)
{
    ComPtr<IStream> stream;
    if (FAILED(storage.OpenStream(name.c_str(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, stream.Put())))
        return -1;
    ULONG read = 0;
    Must(stream->Read(buffer.data(), static_cast<ULONG>(buffer.size()), &read), "reading a stream");
    return static_cast<long>(read);
}

void WriteStream(IStorage& storage, const std::wstring& name, const std::string& bytes)
{
    ComPtr<IStream> stream;
    Must(storage.CreateStream(name.c_str(), STGM_CREATE | kReadWrite, 0, 0, stream.Put()), "CreateStream");
    Must(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr), "writing a stream");
}

// The prefixes of the streams of a result with this many messages.
std::vector<std::wstring> StreamNames(const std::wstring& id, size_t messages)
{
    std::vector<std::wstring> names;
    for (const wchar_t* prefix : {L"vg", L"nt", L"ag"})
        names.push_back(prefix + id);
    for (const CResultField& field : ResultFields())
        names.push_back(field.Prefix + id);
    for (size_t i = 0; i < messages; ++i)
        for (const wchar_t* prefix : {L"tidb", L"tmb"})
            names.push_back(prefix + id + std::to_wstring(i));
    names.push_back(L"tmc" + id);
    return names;
}
} // namespace

void CStreamCopy::Take(const std::wstring& file, const std::vector<std::wstring>& resultIds)
{
    const ComPtr<IStorage> root = Open(file);
    std::string buffer(kLongestStream, '\0');
    for (const std::wstring& id : resultIds)
    {
        const ComPtr<IStorage> sub = OpenSub(*root.Get(), id);
        size_t messages = 0;
        while (ReadStream(*sub.Get(), L"tidb" + id + std::to_wstring(messages), buffer) >= 0)
            ++messages;
        CResult result{id, {}};
        for (const std::wstring& name : StreamNames(id, messages))
        {
            const long size = ReadStream(*sub.Get(), name, buffer);
            Must(size >= 0, "finding a stream of a stored result");
            result.Streams.push_back({name, buffer.substr(0, static_cast<size_t>(size))});
        }
        m_results.push_back(std::move(result));
    }
}

void CStreamCopy::Replace(IStorage& root, size_t results) const
{
    for (size_t i = 0; i < results; ++i)
    {
        const CResult& result = m_results[i];
        Must(root.DestroyElement(result.Id.c_str()), "DestroyElement");
        ComPtr<IStorage> sub;
        Must(root.CreateStorage(result.Id.c_str(), kReadWrite, 0, 0, sub.Put()), "CreateStorage");
        for (const CStream& stream : result.Streams)
            WriteStream(*sub.Get(), stream.Name, stream.Bytes);
    }
}

void CStreamCopy::Write(const std::wstring& file, Where where, size_t results) const
{
    if (where == Where::File)
        return Replace(*Open(file).Get(), results);
    const ComPtr<CMemoryBytes> bytes = ReadWhole(file);
    ComPtr<IStorage> root = OpenOn(*bytes.Get());
    Replace(*root.Get(), results);
    Must(root->Commit(STGC_DEFAULT), "Commit");
    root.Reset();
    Must(PlatformStoreFiles().Write(file.c_str(), bytes->Bytes()), "replacing the file");
}

void CStreamCopy::Read(const std::wstring& file, Where where) const
{
    const ComPtr<IStorage> root = where == Where::File ? Open(file) : OpenOn(*ReadWhole(file).Get());
    std::string buffer(kLongestStream, '\0');
    for (const CResult& result : m_results)
    {
        const ComPtr<IStorage> sub = OpenSub(*root.Get(), result.Id);
        for (const CStream& stream : result.Streams)
            Must(ReadStream(*sub.Get(), stream.Name, buffer) == static_cast<long>(stream.Bytes.size()),
                 "reading a stream");
    }
}
