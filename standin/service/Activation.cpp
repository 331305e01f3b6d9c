#include "standin/service/Activation.h"

#include "Common/src/com/ComBoundary.h"
#include "Common/src/com/Owned.h"
#include "standin/locator/ServiceProgram.h"
#include "standin/service/Settings.h"

#include <algorithm>
#include <iterator>
#include <tlhelp32.h>

namespace standin
{
namespace
{
// COM itself waits half a minute for a server that it has started.
constexpr DWORD kLongestActivation = 120000;
// How long a server may take to end.
constexpr DWORD kLongestEnd = 60000;
// How long COM's service may take to stop.
constexpr DWORD kLongestStop = 10000;

// COM's own service (RpcSs), which knows the local servers that run.
//
// Wine's keeps the registration of a server that ended without revoking it, and from then on answers every
// activation of the class with that dead process. To restart the service is the only way to make it forget. A
// process that has used it before that cannot use the new one: its connections name a group that the new one
// does not know, and are refused.
CServiceHandle OpenComService(DWORD access) noexcept
{
    const CServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    return CServiceHandle(OpenServiceW(manager.Get(), L"RpcSs", access));
}

DWORD ProcessOf(SC_HANDLE service) noexcept
{
    SERVICE_STATUS_PROCESS status = {};
    DWORD size = 0;
    return QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                                sizeof status, &size)
               ? status.dwProcessId
               : 0;
}

// The service's process; 0 while it does not run.
DWORD ComServiceProcess() noexcept
{
    return ProcessOf(OpenComService(SERVICE_QUERY_STATUS).Get());
}

// Stops the service if it is still this process, and returns when that has ended; the next use of COM starts
// another.
void RestartComService(DWORD process) noexcept
{
    const CServiceHandle service = OpenComService(SERVICE_STOP | SERVICE_QUERY_STATUS);
    if (process == 0 || ProcessOf(service.Get()) != process)
        return;
    // Its process must be gone before this returns: it would go on to answer for a while.
    const CHandle running(OpenProcess(SYNCHRONIZE, FALSE, process));
    SERVICE_STATUS status = {};
    if (ControlService(service.Get(), SERVICE_CONTROL_STOP, &status) && running)
        WaitForSingleObject(running.Get(), kLongestStop);
}

// A reference to an object as COM writes it for another process. All zero when new.
struct CReference
{
    ULONG Size;
    BYTE Bytes[4000];
};

struct ViewTraits
{
    using Type = CReference*;
    static Type Empty() noexcept { return nullptr; }
    static void Close(Type view) noexcept { UnmapViewOfFile(view); }
};
using CReferenceView = COwned<ViewTraits>;

CReferenceView View(const CHandle& section)
{
    return CReferenceView(
        static_cast<CReference*>(MapViewOfFile(section.Get(), FILE_MAP_WRITE, 0, 0, sizeof(CReference))));
}

// Where the exporter's identifier stands in a standard reference; its upper half is, under Wine, the number
// of the process.
constexpr size_t kExporter = 32;

DWORD ProcessOf(const CReference& reference)
{
    ULONGLONG exporter = 0;
    memcpy(&exporter, reference.Bytes + kExporter, sizeof exporter);
    return static_cast<DWORD>(exporter >> 32);
}

HRESULT Write(REFIID riid, IUnknown* object, CReference& reference)
{
    ComPtr<IStream> stream;
    HRESULT hr = CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    if (SUCCEEDED(hr))
        hr = CoMarshalInterface(stream.Get(), riid, object, MSHCTX_LOCAL, nullptr, MSHLFLAGS_NORMAL);
    if (SUCCEEDED(hr))
        hr = stream->Seek({}, STREAM_SEEK_SET, nullptr);
    return FAILED(hr) ? hr
                      : stream->Read(reference.Bytes, static_cast<ULONG>(std::size(reference.Bytes)),
                                     &reference.Size);
}

HRESULT Read(const CReference& reference, REFIID riid, CLocalServer& server)
{
    ComPtr<IStream> stream;
    HRESULT hr = CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    if (SUCCEEDED(hr))
        hr = stream->Write(reference.Bytes, reference.Size, nullptr);
    if (SUCCEEDED(hr))
        hr = stream->Seek({}, STREAM_SEEK_SET, nullptr);
    server.Process.Reset(OpenProcess(SYNCHRONIZE, FALSE, ProcessOf(reference)));
    if (SUCCEEDED(hr) && !server.Process)
        hr = CO_E_OBJNOTCONNECTED;
    return FAILED(hr) ? hr : CoUnmarshalInterface(stream.Get(), riid, server.Object.PutVoid());
}

std::wstring GuidText(REFGUID guid)
{
    wchar_t text[40] = {};
    StringFromGUID2(guid, text, static_cast<int>(std::size(text)));
    return text;
}

// The running processes of a class's local server.
std::vector<CHandle> ServerProcesses(REFCLSID clsid)
{
    wchar_t command[MAX_PATH] = {};
    DWORD size = sizeof command;
    const std::wstring key = L"CLSID\\" + GuidText(clsid) + L"\\LocalServer32";
    RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, command, &size);
    const std::wstring text = command;
    std::vector<CHandle> processes;
    const CFileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
         more = Process32NextW(snapshot.Get(), &entry))
        if (text.find(std::wstring(L"\\") + entry.szExeFile) != std::wstring::npos)
            processes.emplace_back(OpenProcess(SYNCHRONIZE, FALSE, entry.th32ProcessID));
    return processes;
}

// COM hands a client on to the server that is registered. Elsewhere it notices when that has just revoked its
// classes; Wine's leaves it to the server, which answers E_FAIL and is about to end.
HRESULT CreateInstance(REFCLSID clsid, REFIID riid, void** out)
{
    const HRESULT hr = CoCreateInstance(clsid, nullptr, CLSCTX_LOCAL_SERVER, riid, out);
    if (hr != E_FAIL)
        return hr;
    Count(kStartsRepeated);
    for (const CHandle& process : ServerProcesses(clsid))
        WaitForSingleObject(process.Get(), kLongestEnd);
    return CoCreateInstance(clsid, nullptr, CLSCTX_LOCAL_SERVER, riid, out);
}

HRESULT ActivateInProcessOfItsOwn(REFCLSID clsid, REFIID riid, CLocalServer& server, const wchar_t*& step)
{
    step = L"activation";
    static unsigned count = 0;
    const std::wstring name = L"WMI-stand-in-activation-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                              std::to_wstring(++count);
    const CHandle section(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                             sizeof(CReference), name.c_str()));
    const CReferenceView reference = View(section);
    if (!reference)
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
    if (FAILED(static_cast<HRESULT>(code)))
        return static_cast<HRESULT>(code);
    step = L"reading of the reference";
    return Read(*reference.Get(), riid, server);
}
} // namespace

bool IsServerGone(HRESULT hr) noexcept
{
    static const HRESULT codes[] = {
        HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE),
        HRESULT_FROM_WIN32(RPC_S_CALL_FAILED),
        HRESULT_FROM_WIN32(RPC_S_CALL_FAILED_DNE),
        HRESULT_FROM_WIN32(ERROR_BROKEN_PIPE),
        RPC_E_DISCONNECTED,
        RPC_E_SERVER_DIED,
        RPC_E_SERVER_DIED_DNE,
        CO_E_OBJNOTCONNECTED,
        CO_E_SERVER_STOPPING,
    };
    return std::find(std::begin(codes), std::end(codes), hr) != std::end(codes);
}

HRESULT ActivateLocalServer(REFCLSID clsid, REFIID riid, CLocalServer& server, const wchar_t*& step)
{
    const DWORD service = ComServiceProcess();
    const HRESULT hr = ActivateInProcessOfItsOwn(clsid, riid, server, step);
    if (!IsServerGone(hr))
        return hr;
    Count(kDeadServersForgotten);
    RestartComService(service);
    return ActivateInProcessOfItsOwn(clsid, riid, server, step);
}

int ActivateForService(const std::vector<std::wstring>& arguments)
{
    return AtComBoundary(
        [&]() -> HRESULT
        {
            CLSID clsid = {};
            IID iid = {};
            if (arguments.size() != 3 || FAILED(CLSIDFromString(arguments[0].c_str(), &clsid)) ||
                FAILED(IIDFromString(arguments[1].c_str(), &iid)))
                return E_INVALIDARG;
            const CHandle section(OpenFileMappingW(FILE_MAP_WRITE, FALSE, arguments[2].c_str()));
            const CReferenceView reference = View(section);
            if (!reference)
                return E_INVALIDARG;
            HRESULT hr = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            if (FAILED(hr))
                return hr;
            ComPtr<IUnknown> object;
            hr = CreateInstance(clsid, iid, object.PutVoid());
            return FAILED(hr) ? hr : Write(iid, object.Get(), *reference.Get());
        });
}
} // namespace standin
