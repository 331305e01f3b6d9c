// One end of a named pipe between a client and the service, carrying frames: a 32-bit size, then that many
// bytes. It breaks when either process ends, however it ends, and the other one notices at once.
#pragma once

#include "Common/src/com/Owned.h"

#include <cstdint>
#include <span>
#include <vector>

namespace standin
{
// Under this name the service of the Wine prefix listens.
inline constexpr wchar_t kPipeName[] = L"\\\\.\\pipe\\WMI stand-in";

// Who announces more than this, some thousand times what the largest object takes, speaks another language.
inline constexpr uint32_t kLargestFrame = 0x1000000;

// Milliseconds from now at which a wait ends; INFINITE never ends.
class CDeadline
{
  public:
    explicit CDeadline(DWORD milliseconds) noexcept : m_length(milliseconds), m_start(GetTickCount64()) {}

    // What is left; 0 once it has passed.
    DWORD Left() const noexcept;

  private:
    const DWORD m_length;
    const ULONGLONG m_start;
};

// Used by one thread at a time.
class CPipe
{
  public:
    // Takes over a handle that was opened for overlapped use.
    explicit CPipe(CFileHandle handle);
    CPipe(const CPipe&) = delete;
    CPipe& operator=(const CPipe&) = delete;
    ~CPipe();

    // False where the other end is gone. Waits while it does not read. The frame is no longer than
    // kLargestFrame.
    bool Send(std::span<const BYTE> frame);

    enum class Received
    {
        Frame,
        Nothing, // in the given time
        TooLong, // and no frame that follows can be read
        TheEnd   // the other end is gone
    };
    // A wait that ends without a frame loses nothing: the next one goes on.
    Received Receive(std::vector<BYTE>& frame, DWORD milliseconds);

    // Set when bytes have come that no Receive has read yet, or when the other end is gone.
    HANDLE Incoming();

  private:
    bool IsTooLong() const noexcept;
    bool TakeFrame(std::vector<BYTE>& frame);
    bool BeginRead();

    const CFileHandle m_handle;
    const CHandle m_written;
    const CHandle m_read;
    OVERLAPPED m_reading = {};
    bool m_underWay = false; // a read into m_chunk
    bool m_gone = false;
    std::vector<BYTE> m_chunk;
    std::vector<BYTE> m_bytes; // read, and not yet taken
};
} // namespace standin
