#include "tests/system/support/Process.h"

#include "Common/src/com/ComPtr.h"
#include "Common/src/com/Owned.h"
#include "Common/src/com/Text.h"
#include "tests/system/support/Documents.h"

#include <algorithm>
#include <stdexcept>
#include <tlhelp32.h>

namespace
{
constexpr DWORD kLongest = 120000;
constexpr DWORD kLongestEnd = 60000;

struct CPipe
{
    CHandle Read;
    CHandle Write;
};

// The running processes of an image. A handle keeps the number of its process, so one that is still listed
// once it is open is of that image.
std::vector<CHandle> OpenProcessesOf(const std::wstring& image, DWORD access)
{
    std::vector<CHandle> processes;
    for (const DWORD id : ProcessesOf(image))
    {
        CHandle process(OpenProcess(access, FALSE, id));
        const std::vector<DWORD> now = ProcessesOf(image);
        if (process && std::find(now.begin(), now.end(), id) != now.end())
            processes.push_back(std::move(process));
    }
    return processes;
}

bool WaitForEnd(const std::vector<CHandle>& processes, ULONGLONG deadline)
{
    for (const CHandle& process : processes)
    {
        const ULONGLONG now = GetTickCount64();
        const DWORD left = now < deadline ? static_cast<DWORD>(deadline - now) : 0;
        if (WaitForSingleObject(process.Get(), left) != WAIT_OBJECT_0)
            return false;
    }
    return true;
}

// A service that is just starting or stopping takes no orders, and nothing tells when it does.
bool StopService(SC_HANDLE service)
{
    constexpr DWORD kBetweenAttempts = 20;
    const ULONGLONG deadline = GetTickCount64() + kLongestEnd;
    SERVICE_STATUS status = {};
    while (!ControlService(service, SERVICE_CONTROL_STOP, &status))
    {
        if (GetLastError() == ERROR_SERVICE_NOT_ACTIVE)
            return true;
        if (GetLastError() != ERROR_SERVICE_CANNOT_ACCEPT_CTRL || GetTickCount64() > deadline)
            return false;
        Sleep(kBetweenAttempts);
    }
    return true;
}

// Any client of COM may start its service again as soon as the old process is gone.
void RestartService(const wchar_t* name, const wchar_t* image)
{
    const CServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const CServiceHandle service(OpenServiceW(manager.Get(), name, SERVICE_STOP | SERVICE_START));
    const std::vector<CHandle> old = OpenProcessesOf(image, SYNCHRONIZE);
    if (!service || !StopService(service.Get()) || !WaitForEnd(old, GetTickCount64() + kLongestEnd) ||
        (!StartServiceW(service.Get(), 0, nullptr) && GetLastError() != ERROR_SERVICE_ALREADY_RUNNING))
        throw std::runtime_error("COM's own service could not be restarted");
}

CPipe MakeOutputPipe()
{
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    CPipe pipe;
    if (!CreatePipe(pipe.Read.Put(), pipe.Write.Put(), &inheritable, 0))
        throw std::runtime_error("no pipe for the output of a program");
    SetHandleInformation(pipe.Read.Get(), HANDLE_FLAG_INHERIT, 0);
    return pipe;
}
} // namespace

CRunningProgram::CRunningProgram(const std::wstring& commandLine, Errors errors) : m_commandLine(commandLine)
{
    CPipe pipe = MakeOutputPipe();
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = pipe.Write.Get();
    start.hStdError = errors == Errors::WithOutput ? pipe.Write.Get() : nullptr;
    PROCESS_INFORMATION process = {};
    std::wstring line = commandLine;
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process))
        throw std::runtime_error("cannot start " + NarrowText(commandLine));
    CloseHandle(process.hThread);
    m_process.Reset(process.hProcess);
    m_id = process.dwProcessId;
    m_output = std::move(pipe.Read);
}

CRunningProgram::~CRunningProgram()
{
    if (m_process && WaitForSingleObject(m_process.Get(), 0) == WAIT_TIMEOUT)
        TerminateProcess(m_process.Get(), 99);
}

// The end of the output is the end of the program: what the system started on the program's behalf, such as
// its desktop, can inherit the pipe and hold it open for long.
bool CRunningProgram::ReadMore(ULONGLONG deadline)
{
    constexpr DWORD kBetweenLooks = 20;
    for (;;)
    {
        if (GetTickCount64() > deadline)
            throw std::runtime_error("a program did not end: " + m_text);
        const bool ended = WaitForSingleObject(m_process.Get(), 0) == WAIT_OBJECT_0;
        char buffer[4096];
        DWORD size = 0;
        if (PeekNamedPipe(m_output.Get(), nullptr, 0, nullptr, &size, nullptr) && size > 0 &&
            ReadFile(m_output.Get(), buffer, std::min<DWORD>(size, sizeof buffer), &size, nullptr))
        {
            m_text.append(buffer, size);
            return true;
        }
        if (ended)
            return false;
        WaitForSingleObject(m_process.Get(), kBetweenLooks);
    }
}

bool CRunningProgram::WaitForOutput(const std::string& text)
{
    const ULONGLONG deadline = GetTickCount64() + kLongest;
    while (m_text.find(text) == std::string::npos)
        if (!ReadMore(deadline))
            return false;
    return true;
}

CRunResult CRunningProgram::Finish()
{
    const ULONGLONG deadline = GetTickCount64() + kLongest;
    while (ReadMore(deadline))
    {
    }
    CRunResult result;
    GetExitCodeProcess(m_process.Get(), &result.ExitCode);
    result.Output = std::move(m_text);
    KeepPrintedDocument(m_commandLine, result);
    return result;
}

CRunResult RunProgram(const std::wstring& commandLine, Errors errors)
{
    return CRunningProgram(commandLine, errors).Finish();
}

std::wstring BinFolder()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring full = path;
    return full.substr(0, full.rfind(L'\\') + 1);
}

std::vector<DWORD> ProcessesOf(const std::wstring& image)
{
    std::vector<DWORD> ids;
    const CFileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
         more = Process32NextW(snapshot.Get(), &entry))
        if (EqualNoCaseAscii(entry.szExeFile, image))
            ids.push_back(entry.th32ProcessID);
    return ids;
}

bool WaitForNoProcess(const std::wstring& image)
{
    const ULONGLONG deadline = GetTickCount64() + kLongestEnd;
    while (!ProcessesOf(image).empty())
        if (!WaitForEnd(OpenProcessesOf(image, SYNCHRONIZE), deadline) || GetTickCount64() > deadline)
            return false;
    return true;
}

CHandle OpenProcessOf(const std::wstring& image)
{
    std::vector<CHandle> processes =
        OpenProcessesOf(image, SYNCHRONIZE | PROCESS_TERMINATE | PROCESS_QUERY_LIMITED_INFORMATION);
    return processes.size() == 1 ? std::move(processes.front()) : CHandle();
}

void KillProcess(DWORD id)
{
    const CHandle process(OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
    if (process && TerminateProcess(process.Get(), 9))
        WaitForSingleObject(process.Get(), kLongest);
}

void RestartComService()
{
    RestartService(L"RpcSs", L"rpcss.exe");
}

void KillServers(const std::vector<std::wstring>& images)
{
    bool killed = false;
    for (const std::wstring& image : images)
    {
        const std::vector<CHandle> processes = OpenProcessesOf(image, PROCESS_TERMINATE | SYNCHRONIZE);
        for (const CHandle& process : processes)
            TerminateProcess(process.Get(), 9);
        if (!WaitForEnd(processes, GetTickCount64() + kLongestEnd))
            throw std::runtime_error("a server could not be killed");
        killed = killed || !processes.empty();
    }
    if (killed)
        RestartComService();
}

void BecomeFirstClientOfCom()
{
    static const bool done = []
    {
        RestartComService();
        // Nobody serves this class; the question alone brings the number.
        ComPtr<IUnknown> nobody;
        CoGetClassObject(GUID{}, CLSCTX_LOCAL_SERVER, nullptr, IID_IUnknown, nobody.PutVoid());
        RestartComService();
        return true;
    }();
    static_cast<void>(done);
}
