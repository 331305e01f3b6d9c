#include "standin/pipe/Pipe.h"

#include <cstring>
#include <new>

namespace standin
{
namespace
{
constexpr size_t kChunk = 0x10000;

HANDLE NewEvent()
{
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (!event)
        throw std::bad_alloc();
    return event;
}
} // namespace

DWORD CDeadline::Left() const noexcept
{
    if (m_length == INFINITE)
        return INFINITE;
    const ULONGLONG passed = GetTickCount64() - m_start;
    return passed >= m_length ? 0 : static_cast<DWORD>(m_length - passed);
}

CPipe::CPipe(CFileHandle handle)
    : m_handle(std::move(handle)), m_written(NewEvent()), m_read(NewEvent()), m_chunk(kChunk)
{
}

CPipe::~CPipe()
{
    // The system writes into this object until the read has ended.
    DWORD size = 0;
    if (m_underWay)
    {
        CancelIoEx(m_handle.Get(), &m_reading);
        GetOverlappedResult(m_handle.Get(), &m_reading, &size, TRUE);
    }
}

bool CPipe::Send(std::span<const BYTE> frame)
{
    const auto size = static_cast<uint32_t>(frame.size());
    const auto* head = reinterpret_cast<const BYTE*>(&size);
    std::vector<BYTE> bytes(head, head + sizeof size);
    bytes.insert(bytes.end(), frame.begin(), frame.end());

    for (size_t sent = 0; sent < bytes.size();)
    {
        OVERLAPPED writing = {};
        writing.hEvent = m_written.Get();
        DWORD written = 0;
        const auto left = static_cast<DWORD>(bytes.size() - sent);
        if (!WriteFile(m_handle.Get(), bytes.data() + sent, left, nullptr, &writing) &&
            GetLastError() != ERROR_IO_PENDING)
            return false;
        if (!GetOverlappedResult(m_handle.Get(), &writing, &written, TRUE) || written == 0)
            return false;
        sent += written;
    }
    return true;
}

bool CPipe::IsTooLong() const noexcept
{
    uint32_t size = 0;
    if (m_bytes.size() >= sizeof size)
        memcpy(&size, m_bytes.data(), sizeof size);
    return size > kLargestFrame;
}

bool CPipe::TakeFrame(std::vector<BYTE>& frame)
{
    uint32_t size = 0;
    if (m_bytes.size() < sizeof size)
        return false;
    memcpy(&size, m_bytes.data(), sizeof size);
    if (m_bytes.size() - sizeof size < size)
        return false;
    const auto first = m_bytes.begin() + sizeof size;
    frame.assign(first, first + size);
    m_bytes.erase(m_bytes.begin(), first + size);
    return true;
}

bool CPipe::BeginRead()
{
    if (m_underWay || m_gone)
        return m_underWay;
    m_reading = {};
    m_reading.hEvent = m_read.Get();
    m_underWay =
        ReadFile(m_handle.Get(), m_chunk.data(), static_cast<DWORD>(m_chunk.size()), nullptr, &m_reading) ||
        GetLastError() == ERROR_IO_PENDING;
    m_gone = !m_underWay;
    return m_underWay;
}

HANDLE CPipe::Incoming()
{
    if (!BeginRead())
        SetEvent(m_read.Get());
    return m_read.Get();
}

CPipe::Received CPipe::Receive(std::vector<BYTE>& frame, DWORD milliseconds)
{
    const CDeadline deadline(milliseconds);
    while (!TakeFrame(frame))
    {
        if (IsTooLong())
            return Received::TooLong;
        if (!BeginRead())
            return Received::TheEnd;
        if (WaitForSingleObject(m_read.Get(), deadline.Left()) != WAIT_OBJECT_0)
            return Received::Nothing;
        m_underWay = false;
        DWORD size = 0;
        if (GetOverlappedResult(m_handle.Get(), &m_reading, &size, TRUE))
            m_bytes.insert(m_bytes.end(), m_chunk.begin(), m_chunk.begin() + size);
        else // the system ends what a thread began and did not wait for when the thread ends
            m_gone = GetLastError() != ERROR_OPERATION_ABORTED;
    }
    return Received::Frame;
}
} // namespace standin
