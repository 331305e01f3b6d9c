#include "tools/zebdiag/ByteWriter.h"

#include <algorithm>
#include <iterator>

namespace zebdiag
{
namespace
{
// The reader has what it wanted and has gone, or there has never been one.
constexpr DWORD kNotWanted[] = {ERROR_BROKEN_PIPE, ERROR_NO_DATA, ERROR_PIPE_NOT_CONNECTED,
                                ERROR_INVALID_HANDLE};
} // namespace

void CByteWriter::Write(std::string_view bytes) noexcept
{
    while (!bytes.empty())
    {
        DWORD written = 0;
        DWORD error = ERROR_SUCCESS;
        if (!WriteFile(m_to, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
            error = GetLastError();
        else if (written == 0)
            error = ERROR_WRITE_FAULT;
        if (error != ERROR_SUCCESS)
        {
            const bool wanted = std::ranges::find(kNotWanted, error) == std::end(kNotWanted);
            if (wanted && m_error == ERROR_SUCCESS)
                m_error = error;
            return;
        }
        bytes.remove_prefix(written);
    }
}
} // namespace zebdiag
