// Writes bytes to what the program was started with, a file or a pipe, and remembers whether any were lost.
#pragma once

#include <string_view>
#include <windows.h>

namespace zebdiag
{
class CByteWriter
{
  public:
    explicit CByteWriter(HANDLE to) noexcept : m_to(to) {}

    void Write(std::string_view bytes) noexcept;
    // Of the first write that lost bytes; ERROR_SUCCESS if there was none. To have no output at all, or a
    // reader that has closed its end, is no loss.
    DWORD Error() const noexcept { return m_error; }

  private:
    HANDLE m_to;
    DWORD m_error = ERROR_SUCCESS;
};
} // namespace zebdiag
