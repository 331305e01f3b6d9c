#include "standin/service/Activation.h"

#include "Common/src/com/ComBoundary.h"
#include "standin/locator/RemoteFailure.h"
#include "standin/locator/ServiceProgram.h"
#include "standin/locator/SharedReference.h"
#include "standin/service/ComService.h"

#include <atomic>

namespace standin
{
namespace
{
// A server that is just ending is gone for a moment only.
constexpr int kAttempts = 3;
constexpr DWORD kPauseMilliseconds = 200;
// COM itself waits half a minute for a server that it has started.
constexpr DWORD kLongestActivation = 120000;

// What COM answers where it hands a client on to a server that no longer serves the class.
bool IsServerEnding(HRESULT hr) noexcept
{
    return hr == E_FAIL || IsServerGone(hr);
}

HRESULT Activate(REFCLSID clsid, REFIID riid, void** out)
{
    HRESULT hr = E_FAIL;
    for (int attempt = 0; attempt < kAttempts && IsServerEnding(hr); ++attempt)
    {
        if (attempt > 0)
            Sleep(kPauseMilliseconds);
        hr = CoCreateInstance(clsid, nullptr, CLSCTX_LOCAL_SERVER, riid, out);
    }
    return hr;
}

std::wstring GuidText(REFGUID guid)
{
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, static_cast<int>(std::size(text)));
    return text;
}

std::wstring UniqueName()
{
    static std::atomic<unsigned> count{0};
    return L"WMI-stand-in-activation-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
           std::to_wstring(++count);
}

HRESULT ActivateInNewProcess(REFCLSID clsid, REFIID riid, void** out)
{
    const std::wstring name = UniqueName();
    CSharedReference reference;
    if (!reference.Create(name.c_str()))
        return E_OUTOFMEMORY;
    CHandle process;
    const HRESULT hr =
        StartServiceProgram(L"/activate " + GuidText(clsid) + L" " + GuidText(riid) + L" " + name, process);
    if (FAILED(hr))
        return hr;
    DWORD code = 0;
    if (WaitForSingleObject(process.Get(), kLongestActivation) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(process.Get(), &code))
        return E_FAIL;
    return FAILED(static_cast<HRESULT>(code)) ? static_cast<HRESULT>(code) : reference.Take(riid, out);
}

HRESULT ActivateWhereItWorks(REFCLSID clsid, REFIID riid, void** out)
{
    return ComServiceHasChanged() ? ActivateInNewProcess(clsid, riid, out) : Activate(clsid, riid, out);
}
} // namespace

HRESULT ActivateLocalServer(REFCLSID clsid, REFIID riid, void** out)
{
    const DWORD service = ComServiceProcess();
    const HRESULT hr = ActivateWhereItWorks(clsid, riid, out);
    if (!IsServerGone(hr))
        return hr;
    RestartComService(service);
    return ActivateWhereItWorks(clsid, riid, out);
}

int ActivateForAnother(const std::vector<std::wstring>& arguments)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            CLSID clsid = {};
            IID iid = {};
            CSharedReference reference;
            if (arguments.size() != 3 || FAILED(CLSIDFromString(arguments[0].c_str(), &clsid)) ||
                FAILED(IIDFromString(arguments[1].c_str(), &iid)) || !reference.Open(arguments[2].c_str()))
                return E_INVALIDARG;
            HRESULT hr = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            if (FAILED(hr))
                return hr;
            ComPtr<IUnknown> object;
            hr = Activate(clsid, iid, object.PutVoid());
            return FAILED(hr) ? hr : reference.Leave(iid, object.Get(), MSHLFLAGS_NORMAL);
        });
}
} // namespace standin
