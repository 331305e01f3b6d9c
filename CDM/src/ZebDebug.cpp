#include "CDM/src/ZebDebug.h"

#include "CDM/src/ZebRegistry.h"
#include "Common/src/com/Owned.h"

#include <algorithm>
#include <cstring>
#include <io.h>
#include <new>
#include <share.h>

namespace
{
constexpr size_t kFileNameMax = 245;
constexpr DWORD kImagePathMax = 256;

int s_lifetimes = 0;
alignas(CZebDebug) unsigned char s_storage[sizeof(CZebDebug)];

// The system's own formatting, which the compiler does not check: some of the formats are odd on purpose.
int Print(char* room, size_t max, const char* format, ...) noexcept
{
    va_list arguments;
    va_start(arguments, format);
    const int count = _vsnprintf(room, max, format, arguments);
    va_end(arguments);
    return count;
}

std::string PerProcessName(const std::string& fileName)
{
    std::string name(fileName.size() + 16, '\0');
    const int length = _snprintf(name.data(), name.size(), "%d-%s", static_cast<int>(GetCurrentProcessId()),
                                 fileName.c_str());
    name.resize(static_cast<size_t>(length));
    return name;
}
} // namespace

std::string ZebDebugPath(const std::string& fileName)
{
    CRegKey key;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, kZebKey, 0, KEY_READ, key.Put()) != ERROR_SUCCESS)
        return fileName;
    DWORD perProcess = 0;
    const bool asked = ReadNumber(key.Get(), "LogFilePerProcess", perProcess) && perProcess != 0;
    const std::string name = asked ? PerProcessName(fileName) : fileName;
    const std::optional<std::string> folder = ReadTerminatedString(key.Get(), "ImagePath", kImagePathMax);
    return folder ? *folder + "\\DebugLog\\" + name : name;
}

CZebDebug& ZebDebug() noexcept
{
    return *std::launder(reinterpret_cast<CZebDebug*>(s_storage));
}

// Static construction and destruction run on one thread.
CZebDebugLifetime::CZebDebugLifetime() noexcept
{
    if (s_lifetimes++ == 0)
        new (s_storage) CZebDebug;
}

CZebDebugLifetime::~CZebDebugLifetime()
{
    if (--s_lifetimes == 0)
        ZebDebug().~CZebDebug();
}

CZebDebug::~CZebDebug()
{
    Close();
}

long CZebDebug::Configure(const char* title, const char* fileName, long level, unsigned long flag,
                          bool append, DWORD maxSize) noexcept
try
{
    if (m_configured)
    {
        Error("CDM/src/ZebDebug", 478, "CZebDebug class already configured\n"); // sic, the number too
        return -1;
    }
    if (level == 0)
    {
        m_level = 0;
        return -1;
    }
    const size_t length = fileName ? std::strlen(fileName) : 0;
    if (length == 0 || length > kFileNameMax)
        return -1;

    // Held to the end, so that nothing comes before the heading.
    CLockScope lock(m_lock);
    m_title = title ? title : "";
    m_maxSize = maxSize;
    // Others may read the file while it is written.
    m_file = _fsopen(ZebDebugPath(fileName).c_str(), append ? "a" : "w", _SH_DENYNO);
    if (!m_file)
        return -1;
    m_flag = flag;
    m_configured = true;
    m_level = level;
    // The file is meant to be looked at with a browser.
    std::fprintf(m_file, "<center><h1>%s</h1></center>\n", m_title.c_str());
    std::fprintf(m_file, "<xmp>\n");
    std::fflush(m_file);
    return 0;
}
catch (const std::bad_alloc&)
{
    return -1;
}

void CZebDebug::Close() noexcept
{
    CLockScope lock(m_lock);
    m_configured = false;
    m_level = 0;
    if (m_file)
        std::fclose(std::exchange(m_file, nullptr));
}

bool CZebDebug::IsFull() const noexcept
{
    return m_maxSize != 0 && _filelengthi64(_fileno(m_file)) >= static_cast<long long>(m_maxSize);
}

// `print` puts at most kMessageMax characters at the place it is given and returns their number, or less than
// 0 if it had to cut the message or failed. Called under the lock.
template <class Printer>
void CZebDebug::WriteLine(Printer&& print) noexcept
{
    if (!m_file || IsFull())
        return;
    SYSTEMTIME now;
    GetLocalTime(&now);
    const int prefix = Print(m_line, kLineBytes - 1, "[%x] %02.2d:%02.2d:%02.2d.%03.3d ",
                             GetCurrentThreadId(), now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    char* const message = m_line + prefix;
    std::memset(message, 0, kMessageBytes);
    const int printed = print(message);
    const int count = printed < 0 ? kMessageMax : printed;
    // A NUL inside the message would cost the line its end.
    std::replace(message, message + count, '\0', ' ');
    const int length = std::min(prefix + count, kLineBytes - 2);
    m_line[length] = '\n';
    m_line[length + 1] = '\0';
    std::fputs(m_line, m_file);
    std::fflush(m_file);
}

int CZebDebug::PrintWide(char* message, const wchar_t* format, va_list arguments) noexcept
{
    std::fill(std::begin(m_wide), std::end(m_wide), L'\0');
    const int printed = _vsnwprintf(m_wide, kMessageMax, format, arguments);
    const int count = printed < 0 ? kMessageMax : printed;
    if (count == 0)
        return 0;
    const int narrow = WideCharToMultiByte(CP_ACP, 0, m_wide, count, message, kMessageMax, nullptr, nullptr);
    return narrow == 0 ? -1 : narrow;
}

void CZebDebug::Write(const char* format, ...) noexcept
{
    if (!Writes(2))
        return;
    CLockScope lock(m_lock);
    va_list arguments;
    va_start(arguments, format);
    WriteLine([&](char* message) { return _vsnprintf(message, kMessageMax, format, arguments); });
    va_end(arguments);
}

void CZebDebug::Write(const wchar_t* format, ...) noexcept
{
    if (!Writes(2))
        return;
    CLockScope lock(m_lock);
    va_list arguments;
    va_start(arguments, format);
    WriteLine([&](char* message) { return PrintWide(message, format, arguments); });
    va_end(arguments);
}

void CZebDebug::WriteLong(const char* text) noexcept
{
    constexpr size_t kPiece = 974;
    if (!Writes(2))
        return;
    for (size_t left = std::strlen(text); left > 0;)
    {
        Write("%.974s", text);
        const size_t piece = std::min(left, kPiece);
        text += piece;
        left -= piece;
    }
}

void CZebDebug::Error(const char* sourceFile, long line, const char* format, ...) noexcept
{
    if (!Writes(1))
        return;
    CLockScope lock(m_lock);
    std::memset(m_message, 0, sizeof(m_message));
    va_list arguments;
    va_start(arguments, format);
    _vsnprintf(m_message, kMessageMax, format, arguments);
    va_end(arguments);
    // Past the level: raising it for the moment would let other threads' trace lines through.
    WriteLine(
        [&](char* message) {
            return Print(message, kMessageMax, "%s (%d): %s", sourceFile, static_cast<int>(line), m_message);
        });
}

void CZebDebug::SystemError(DWORD code) noexcept
{
    if (code == 0)
        code = GetLastError();
    CLocalText text;
    if (FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                           FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, code, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                       reinterpret_cast<char*>(text.Put()), 0, nullptr) == 0)
        return;
    // The text is the format, as it has always been: a "%" in it counts as a conversion. What such a
    // conversion finds in place of whatever the stack holds are empty texts that it may write to.
    char scratch[8][16] = {};
    Write(text.Get(), scratch[0], scratch[1], scratch[2], scratch[3], scratch[4], scratch[5], scratch[6],
          scratch[7]);
}
