#include "standin/service/Listener.h"

#include "Common/src/com/ComBoundary.h"
#include "standin/service/ClientPipe.h"
#include "standin/service/Service.h"

namespace standin
{
namespace
{
constexpr DWORD kBuffer = 0x10000;

CFileHandle NewEnd()
{
    return CFileHandle(CreateNamedPipeW(kPipeName, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT,
                                        PIPE_UNLIMITED_INSTANCES, kBuffer, kBuffer, 0, nullptr));
}
} // namespace

CListener::CListener(CService& service)
    : m_service(service), m_stop(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      m_connected(CreateEventW(nullptr, TRUE, FALSE, nullptr)), m_end(NewEnd())
{
    if (m_end)
        m_thread.Reset(CreateThread(nullptr, 0, ThreadProcedure, this, 0, nullptr));
    if (!m_thread)
        throw std::bad_alloc();
}

void CListener::Stop() noexcept
{
    SetEvent(m_stop.Get());
    WaitForSingleObject(m_thread.Get(), INFINITE);
}

DWORD WINAPI CListener::ThreadProcedure(void* listener)
{
    AtComBoundary(
        [&]
        {
            static_cast<CListener*>(listener)->Listen();
            return S_OK;
        });
    return 0;
}

void CListener::Listen()
{
    while (m_end && AwaitClient())
    {
        CServiceLife::CUse use(m_service.Life());
        // The next client finds no end that is free until this has made one, and waits for it.
        CFileHandle next = NewEnd();
        // A client that cannot be served finds its pipe closed; the next one may have better luck.
        AtComBoundary(
            [&]
            {
                ServePipe(m_service, std::move(use), std::make_unique<CPipe>(std::move(m_end)));
                return S_OK;
            });
        m_end = std::move(next);
    }
    m_end.Reset();
}

// False once it is to stop.
bool CListener::AwaitClient()
{
    OVERLAPPED connecting = {};
    connecting.hEvent = m_connected.Get();
    if (ConnectNamedPipe(m_end.Get(), &connecting) || GetLastError() == ERROR_PIPE_CONNECTED)
        return true;
    if (GetLastError() != ERROR_IO_PENDING)
        return true; // a client that has gone already; its pipe says so
    const HANDLE handles[] = {m_connected.Get(), m_stop.Get()};
    DWORD none = 0;
    const bool came = WaitForMultipleObjects(2, handles, FALSE, INFINITE) == WAIT_OBJECT_0;
    if (!came)
        CancelIoEx(m_end.Get(), &connecting);
    GetOverlappedResult(m_end.Get(), &connecting, &none, TRUE);
    return came;
}
} // namespace standin
