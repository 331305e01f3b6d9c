#include "tests/support/FaultStore.h"

#include "Common/src/com/ComObject.h"

namespace
{
class CFaultStream final : public CComObject<IStream>
{
  public:
    CFaultStream(CFaultStore& plan, ComPtr<IStream> inner) : m_plan(plan), m_inner(std::move(inner)) {}

    STDMETHODIMP Read(void* data, ULONG size, ULONG* read) override
    {
        const HRESULT hr = m_plan.Next("Read");
        return FAILED(hr) ? hr : m_inner->Read(data, size, read);
    }
    STDMETHODIMP Write(const void* data, ULONG size, ULONG* written) override
    {
        const HRESULT hr = m_plan.Next("Write");
        return FAILED(hr) ? hr : m_inner->Write(data, size, written);
    }
    STDMETHODIMP Stat(STATSTG* stat, DWORD flags) override
    {
        const HRESULT hr = m_plan.Next("Stat");
        return FAILED(hr) ? hr : m_inner->Stat(stat, flags);
    }
    STDMETHODIMP Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override
    {
        return m_inner->Seek(move, origin, position);
    }
    STDMETHODIMP SetSize(ULARGE_INTEGER size) override { return m_inner->SetSize(size); }
    STDMETHODIMP CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP Commit(DWORD flags) override { return m_inner->Commit(flags); }
    STDMETHODIMP Revert() override { return E_NOTIMPL; }
    STDMETHODIMP LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IStream**) override { return E_NOTIMPL; }

  private:
    CFaultStore& m_plan;
    const ComPtr<IStream> m_inner;
};

class CFaultStorage final : public CComObject<IStorage>
{
  public:
    CFaultStorage(CFaultStore& plan, ComPtr<IStorage> inner) : m_plan(plan), m_inner(std::move(inner)) {}

    STDMETHODIMP CreateStream(const OLECHAR* name, DWORD mode, DWORD r1, DWORD r2, IStream** out) override
    {
        m_plan.NoteStream(name);
        return With<CFaultStream>("CreateStream", out,
                                  [&](IStream** inner)
                                  { return m_inner->CreateStream(name, mode, r1, r2, inner); });
    }
    STDMETHODIMP OpenStream(const OLECHAR* name, void* r1, DWORD mode, DWORD r2, IStream** out) override
    {
        m_plan.NoteStream(name);
        return With<CFaultStream>("OpenStream", out,
                                  [&](IStream** inner)
                                  { return m_inner->OpenStream(name, r1, mode, r2, inner); });
    }
    STDMETHODIMP CreateStorage(const OLECHAR* name, DWORD mode, DWORD r1, DWORD r2, IStorage** out) override
    {
        return With<CFaultStorage>("CreateStorage", out,
                                   [&](IStorage** inner)
                                   { return m_inner->CreateStorage(name, mode, r1, r2, inner); });
    }
    STDMETHODIMP OpenStorage(const OLECHAR* name, IStorage* priority, DWORD mode, SNB exclude, DWORD reserved,
                             IStorage** out) override
    {
        return With<CFaultStorage>(
            "OpenStorage", out,
            [&](IStorage** inner)
            { return m_inner->OpenStorage(name, priority, mode, exclude, reserved, inner); });
    }
    STDMETHODIMP DestroyElement(const OLECHAR* name) override
    {
        const HRESULT hr = m_plan.Next("DestroyElement");
        return FAILED(hr) ? hr : m_inner->DestroyElement(name);
    }
    STDMETHODIMP RenameElement(const OLECHAR*, const OLECHAR*) override { return E_NOTIMPL; }
    STDMETHODIMP Commit(DWORD flags) override
    {
        const HRESULT hr = m_plan.Next("Commit");
        return FAILED(hr) ? hr : m_inner->Commit(flags);
    }
    STDMETHODIMP CopyTo(DWORD, const IID*, SNB, IStorage*) override { return E_NOTIMPL; }
    STDMETHODIMP MoveElementTo(const OLECHAR*, IStorage*, const OLECHAR*, DWORD) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP Revert() override { return E_NOTIMPL; }
    STDMETHODIMP EnumElements(DWORD, void*, DWORD, IEnumSTATSTG**) override { return E_NOTIMPL; }
    STDMETHODIMP SetElementTimes(const OLECHAR*, const FILETIME*, const FILETIME*, const FILETIME*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP SetClass(REFCLSID) override { return E_NOTIMPL; }
    STDMETHODIMP SetStateBits(DWORD, DWORD) override { return E_NOTIMPL; }
    STDMETHODIMP Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }

  private:
    // Makes a call that gives a stream or a storage, and hands that out in its `Wrapper`.
    template <class Wrapper, class Interface, class Call>
    HRESULT With(const char* name, Interface** out, Call&& call)
    {
        *out = nullptr;
        ComPtr<Interface> inner;
        HRESULT hr = m_plan.Next(name);
        if (SUCCEEDED(hr))
            hr = call(inner.Put());
        if (SUCCEEDED(hr))
            *out = MakeCom<Wrapper>(m_plan, std::move(inner)).Detach();
        return hr;
    }

    CFaultStore& m_plan;
    const ComPtr<IStorage> m_inner;
};
} // namespace

void CFaultStore::FailCall(int n, HRESULT code, bool onwards)
{
    m_calls.clear();
    m_streams.clear();
    m_named.clear();
    m_failIn = n;
    m_code = code;
    m_onwards = onwards;
    m_failed = false;
}

void CFaultStore::FailNamed(const char* name, HRESULT code, int n)
{
    FailCall(n, code);
    m_named = name;
}

HRESULT CFaultStore::Next(const char* name)
{
    if (m_onCall)
        m_onCall();
    m_calls.push_back(name);
    if (m_failed && m_onwards)
        return m_code;
    if (m_failIn == 0 || (!m_named.empty() && m_named != name) || --m_failIn > 0)
        return S_OK;
    m_failed = true;
    return m_code;
}

HRESULT CFaultStore::IsStorageFile(const wchar_t* path)
{
    const HRESULT hr = Next("IsStorageFile");
    return FAILED(hr) ? hr : m_files->IsStorageFile(path);
}

HRESULT CFaultStore::Read(const wchar_t* path, std::string& bytes)
{
    const HRESULT hr = Next("ReadFile");
    return FAILED(hr) ? hr : m_files->Read(path, bytes);
}

HRESULT CFaultStore::Write(const wchar_t* path, const std::string& bytes)
{
    const HRESULT hr = Next("WriteFile");
    return FAILED(hr) ? hr : m_files->Write(path, bytes);
}

HRESULT CFaultStore::Delete(const wchar_t* path)
{
    const HRESULT hr = Next("DeleteFile");
    return FAILED(hr) ? hr : m_files->Delete(path);
}

HRESULT CFaultStore::Open(ILockBytes& bytes, IStorage** root)
{
    *root = nullptr;
    ComPtr<IStorage> inner;
    HRESULT hr = Next("Open");
    if (SUCCEEDED(hr))
        hr = m_files->Open(bytes, inner.Put());
    if (SUCCEEDED(hr))
        *root = MakeCom<CFaultStorage>(*this, std::move(inner)).Detach();
    return hr;
}

HRESULT CFaultStore::Create(ILockBytes& bytes, IStorage** root)
{
    *root = nullptr;
    ComPtr<IStorage> inner;
    HRESULT hr = Next("Create");
    if (SUCCEEDED(hr))
        hr = m_files->Create(bytes, inner.Put());
    if (SUCCEEDED(hr))
        *root = MakeCom<CFaultStorage>(*this, std::move(inner)).Detach();
    return hr;
}
