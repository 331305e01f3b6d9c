// The platform's structured storage with a fault built in: the n-th call of the whole operation, whichever it
// is, fails. Calls on the file, on storages and on streams count alike.
#pragma once

#include "CDM/src/engine/results/store/StoreFiles.h"
#include "Common/src/com/ComPtr.h"

#include <functional>
#include <string>
#include <vector>

class CFaultStore : public IStoreFiles
{
  public:
    // The n-th call from now on (counted from 1) fails with `code`; 0 for none. With `onwards`, so do all
    // after it, as on a disk that is full.
    void FailCall(int n, HRESULT code, bool onwards = false);
    // The first call of this name from now on fails.
    void FailNamed(const char* name, HRESULT code, int n = 1);
    // The calls since the last FailCall or FailNamed, by name.
    const std::vector<std::string>& Calls() const { return m_calls; }
    bool Failed() const { return m_failed; }
    // The names of the streams that were asked for since then, in their order.
    const std::vector<std::wstring>& Streams() const { return m_streams; }
    // Called before every call is carried out or failed.
    void OnCall(std::function<void()> action) { m_onCall = std::move(action); }

    HRESULT IsStorageFile(const wchar_t* path) override;
    HRESULT Read(const wchar_t* path, std::string& bytes) override;
    HRESULT Write(const wchar_t* path, const std::string& bytes) override;
    HRESULT Delete(const wchar_t* path) override;
    void KeepAside(const wchar_t* path) override { m_files->KeepAside(path); }
    HRESULT Open(ILockBytes& bytes, IStorage** root) override;
    HRESULT Create(ILockBytes& bytes, IStorage** root) override;

    // For the wrapped storages and streams: S_OK lets the call pass.
    HRESULT Next(const char* name);
    void NoteStream(const wchar_t* name) { m_streams.emplace_back(name); }

  private:
    const std::unique_ptr<IStoreFiles> m_files = MakePlatformStoreFiles(0);
    std::vector<std::string> m_calls;
    std::vector<std::wstring> m_streams;
    int m_failIn = 0;
    HRESULT m_code = S_OK;
    bool m_onwards = false;
    std::string m_named;
    bool m_failed = false;
    std::function<void()> m_onCall;
};
