#include "standin/locator/Connection.h"

#include "standin/locator/ServiceProgram.h"

namespace standin
{
namespace
{
constexpr HRESULT kNoService = HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE);
// How long a service may take to read its schema.
constexpr DWORD kLongestStart = 60000;
constexpr DWORD kLook = 1000;

class CMutexScope
{
  public:
    explicit CMutexScope(const wchar_t* name) noexcept : m_mutex(CreateMutexW(nullptr, FALSE, name))
    {
        WaitForSingleObject(m_mutex.Get(), INFINITE);
    }
    ~CMutexScope() { ReleaseMutex(m_mutex.Get()); }
    CMutexScope(const CMutexScope&) = delete;
    CMutexScope& operator=(const CMutexScope&) = delete;

  private:
    const CHandle m_mutex;
};

// Null where no service listens.
std::unique_ptr<CPipe> OpenPipe()
{
    for (;;)
    {
        CFileHandle handle(CreateFileW(kPipeName, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_OVERLAPPED, nullptr));
        if (handle)
            return std::make_unique<CPipe>(std::move(handle));
        // Another client has just taken the end that was free; the service is about to offer the next.
        if (GetLastError() != ERROR_PIPE_BUSY)
            return nullptr;
        WaitNamedPipeW(kPipeName, kLook);
    }
}

// Waits until the service listens or has failed.
HRESULT StartService()
{
    const CHandle listening(CreateEventW(nullptr, TRUE, FALSE, kListening));
    ResetEvent(listening.Get());
    CHandle process;
    const HRESULT hr = StartServiceProgram(L"/serve", process);
    if (FAILED(hr))
        return hr;
    const HANDLE either[] = {listening.Get(), process.Get()};
    return WaitForMultipleObjects(2, either, FALSE, kLongestStart) == WAIT_OBJECT_0
               ? S_OK
               : CO_E_SERVER_EXEC_FAILURE;
}
} // namespace

HRESULT CConnection::Connect(CCallMessage self, std::shared_ptr<CConnection>& connection)
{
    std::unique_ptr<CPipe> pipe = OpenPipe();
    if (!pipe)
        return kNoService;
    std::vector<BYTE> frame;
    if (!pipe->Send(Encode(self)) || pipe->Receive(frame, INFINITE) != CPipe::Received::Frame)
        return HRESULT_FROM_WIN32(RPC_S_CALL_FAILED);
    const COutcome outcome = std::get<COutcome>(DecodeAnswer(frame));
    if (outcome.Failed())
        return outcome.Result;
    self.Service = outcome.Text.View();
    connection.reset(new CConnection(std::move(pipe), std::move(self)));
    return S_OK;
}

HRESULT CConnection::Open(const std::wstring& nameSpace, std::shared_ptr<CConnection>& connection)
{
    CCallMessage self;
    self.NameSpace = nameSpace;
    const CMutexScope connecting(kConnecting);
    HRESULT hr = Connect(self, connection);
    if (hr != kNoService)
        return hr;
    hr = StartService();
    return FAILED(hr) ? hr : Connect(std::move(self), connection);
}

HRESULT CConnection::Begin(CCallMessage message, std::shared_ptr<CCall>& call) const
{
    std::unique_ptr<CPipe> pipe = OpenPipe();
    if (!pipe)
        return kNoService;
    message.Service = m_self.Service;
    message.NameSpace = m_self.NameSpace;
    call = std::make_shared<CCall>(std::move(pipe), message);
    return S_OK;
}
} // namespace standin
