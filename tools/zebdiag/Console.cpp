#include "tools/zebdiag/Console.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/ByteWriter.h"
#include "tools/zebdiag/TerminalText.h"

#include <algorithm>
#include <windows.h>

namespace zebdiag
{
namespace
{
class CStream
{
  public:
    explicit CStream(DWORD which) : m_handle(GetStdHandle(which)), m_bytes(m_handle)
    {
        DWORD mode = 0;
        m_terminal = GetConsoleMode(m_handle, &mode) != FALSE;
    }

    bool IsTerminal() const noexcept { return m_terminal; }

    void Write(std::wstring_view text)
    {
        if (m_terminal)
            WriteText(text);
        else
            m_bytes.Write(Utf8Text(text));
    }

    unsigned long Error() const noexcept { return m_bytes.Error(); }

    unsigned Width() const
    {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        if (!m_terminal || !GetConsoleScreenBufferInfo(m_handle, &info))
            return 0;
        return static_cast<unsigned>(info.srWindow.Right - info.srWindow.Left + 1);
    }

    unsigned Height() const
    {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        if (!m_terminal || !GetConsoleScreenBufferInfo(m_handle, &info))
            return 0;
        return static_cast<unsigned>(info.srWindow.Bottom - info.srWindow.Top + 1);
    }

    void Redraw(const std::vector<CScreenLine>& lines)
    {
        CONSOLE_SCREEN_BUFFER_INFO info = {};
        if (!m_terminal || !GetConsoleScreenBufferInfo(m_handle, &info))
            return;
        const auto drawn = static_cast<SHORT>(m_drawn);
        const COORD begin = {0, static_cast<SHORT>(std::max(info.dwCursorPosition.Y - drawn, 0))};
        SetConsoleCursorPosition(m_handle, begin);
        for (const CScreenLine& line : lines)
        {
            for (const CPiece& piece : line)
                WriteInColour(piece, info.wAttributes);
            ClearLine(info);
            WriteToTerminal(L"\r\n");
        }
        ClearLinesBelow(info, m_drawn > lines.size() ? m_drawn - lines.size() : 0);
        m_drawn = lines.size();
    }

  private:
    // The background stays as it is.
    void WriteInColour(const CPiece& piece, WORD usual) const
    {
        constexpr WORD kForeground =
            FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_BLUE | FOREGROUND_INTENSITY;
        // In the order of Colour.
        constexpr WORD kColours[] = {0, FOREGROUND_GREEN, FOREGROUND_RED | FOREGROUND_GREEN, FOREGROUND_RED};
        const bool plain = piece.InColour == Colour::Plain;
        if (!plain)
            SetConsoleTextAttribute(m_handle, static_cast<WORD>((usual & ~kForeground) |
                                                                kColours[static_cast<int>(piece.InColour)]));
        WriteText(piece.Text);
        if (!plain)
            SetConsoleTextAttribute(m_handle, usual);
    }

    // From the cursor on.
    void ClearLine(const CONSOLE_SCREEN_BUFFER_INFO& usual) const
    {
        CONSOLE_SCREEN_BUFFER_INFO now = {};
        if (!GetConsoleScreenBufferInfo(m_handle, &now))
            return;
        const auto rest = static_cast<DWORD>(now.dwSize.X - now.dwCursorPosition.X);
        DWORD done = 0;
        FillConsoleOutputCharacterW(m_handle, L' ', rest, now.dwCursorPosition, &done);
        FillConsoleOutputAttribute(m_handle, usual.wAttributes, rest, now.dwCursorPosition, &done);
    }

    void ClearLinesBelow(const CONSOLE_SCREEN_BUFFER_INFO& usual, size_t count) const
    {
        CONSOLE_SCREEN_BUFFER_INFO now = {};
        if (count == 0 || !GetConsoleScreenBufferInfo(m_handle, &now))
            return;
        const DWORD cells = static_cast<DWORD>(now.dwSize.X) * static_cast<DWORD>(count);
        DWORD done = 0;
        FillConsoleOutputCharacterW(m_handle, L' ', cells, now.dwCursorPosition, &done);
        FillConsoleOutputAttribute(m_handle, usual.wAttributes, cells, now.dwCursorPosition, &done);
    }

    void WriteText(std::wstring_view text) const { WriteToTerminal(ForTerminal(std::wstring(text))); }

    // As it is.
    void WriteToTerminal(std::wstring_view text) const
    {
        while (!text.empty())
        {
            // A console takes no more than 64 KB in one call.
            const DWORD count = static_cast<DWORD>(text.size() < 8192 ? text.size() : 8192);
            DWORD written = 0;
            if (!WriteConsoleW(m_handle, text.data(), count, &written, nullptr) || written == 0)
                return;
            text.remove_prefix(written);
        }
    }

    HANDLE m_handle;
    CByteWriter m_bytes;
    bool m_terminal = false;
    size_t m_drawn = 0; // lines above the cursor
};

// Switches the echo of typed characters off for as long as it lives.
class CEchoOff
{
  public:
    explicit CEchoOff(HANDLE input) : m_input(input)
    {
        m_terminal = GetConsoleMode(m_input, &m_mode) != FALSE;
        if (m_terminal)
            SetConsoleMode(m_input,
                           (m_mode & ~ENABLE_ECHO_INPUT) | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT);
    }
    CEchoOff(const CEchoOff&) = delete;
    CEchoOff& operator=(const CEchoOff&) = delete;
    ~CEchoOff()
    {
        if (m_terminal)
            SetConsoleMode(m_input, m_mode);
    }
    bool IsTerminal() const noexcept { return m_terminal; }

  private:
    HANDLE m_input;
    DWORD m_mode = 0;
    bool m_terminal = false;
};

// One line without its end.
std::wstring ReadTerminalLine(HANDLE input)
{
    std::wstring line;
    wchar_t c = 0;
    DWORD read = 0;
    while (ReadConsoleW(input, &c, 1, &read, nullptr) && read == 1 && c != L'\n')
        if (c != L'\r')
            line += c;
    return line;
}

std::wstring ReadFileLine(HANDLE input)
{
    std::string line;
    char c = 0;
    DWORD read = 0;
    while (ReadFile(input, &c, 1, &read, nullptr) && read == 1 && c != '\n')
        if (c != '\r')
            line += c;
    return WidenUtf8(line);
}

class CProcessConsole final : public IConsole
{
  public:
    void Out(std::wstring_view text) override { m_out.Write(text); }
    void Err(std::wstring_view text) override { m_err.Write(text); }
    unsigned long OutError() const override { return m_out.Error(); }
    bool OutIsTerminal() const override { return m_out.IsTerminal(); }
    bool ErrIsTerminal() const override { return m_err.IsTerminal(); }
    unsigned Width() const override { return m_out.Width(); }
    unsigned ErrWidth() const override { return m_err.Width(); }
    unsigned Height(Stream stream) const override { return Of(stream).Height(); }
    bool Colours() const override
    {
        // Set to nothing, it counts as not set.
        return GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) <= 1;
    }
    void Redraw(Stream stream, const std::vector<CScreenLine>& lines) override
    {
        (stream == Stream::Out ? m_out : m_err).Redraw(lines);
    }

    std::wstring AskPassword(const std::wstring& prompt) override
    {
        const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
        const CEchoOff echoOff(input);
        if (!echoOff.IsTerminal())
            return ReadFileLine(input);
        m_err.Write(prompt);
        std::wstring password = ReadTerminalLine(input);
        m_err.Write(L"\n");
        return password;
    }

  private:
    const CStream& Of(Stream stream) const { return stream == Stream::Out ? m_out : m_err; }

    CStream m_out{STD_OUTPUT_HANDLE};
    CStream m_err{STD_ERROR_HANDLE};
};
} // namespace

IConsole& ProcessConsole()
{
    static CProcessConsole console;
    return console;
}
} // namespace zebdiag
