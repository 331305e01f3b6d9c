#include "standin/mof/MofReader.h"

#include "Common/src/com/Text.h"

#include <algorithm>
#include <charconv>

namespace standin
{
namespace
{
bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsWordCharacter(char c)
{
    return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

std::string Expected(std::string_view what)
{
    return "expected " + std::string(what);
}
} // namespace

std::string Quoted(std::wstring_view name)
{
    return '"' + Utf8Text(name) + '"';
}

CMofReader::CMofReader(std::string_view text) : m_left(text)
{
    Advance();
}

void CMofReader::Skip(size_t count)
{
    for (const char c : m_left.substr(0, count))
        if (c == '\n')
            m_at = {m_at.Line + 1, 1};
        else
            ++m_at.Column;
    m_left.remove_prefix(std::min(count, m_left.size()));
}

void CMofReader::SkipBlanks()
{
    for (;;)
        if (m_left.starts_with("//"))
            Skip(m_left.find('\n'));
        else if (m_left.starts_with("/*"))
        {
            const CMofPlace begin = m_at;
            const size_t end = m_left.find("*/", 2);
            if (end == std::string_view::npos)
                throw CMofProblem{begin, "a comment without an end"};
            Skip(end + 2);
        }
        else if (!m_left.empty() &&
                 std::string_view(" \t\r\n\f\v").find(m_left.front()) != std::string_view::npos)
            Skip(1);
        else
            return;
}

void CMofReader::Advance()
{
    SkipBlanks();
    m_place = m_at;
    if (m_left.empty())
    {
        m_kind = End;
        return;
    }
    const char first = m_left.front();
    if (first == '"')
        return LexText();
    const bool sign = (first == '-' || first == '+') && IsDigit(Peek(1));
    m_kind = sign || IsDigit(first) ? Number : IsWordCharacter(first) ? Word : Mark;
    size_t length = 1;
    while (m_kind != Mark && IsWordCharacter(Peek(length)))
        ++length;
    m_token = m_left.substr(0, length);
    Skip(length);
}

void CMofReader::LexText()
{
    constexpr std::string_view kEscapes = "btnfr\"'\\";
    constexpr std::string_view kMeanings = "\b\t\n\f\r\"'\\";
    m_kind = Text;
    m_text.clear();
    Skip(1);
    while (Peek() != '"')
    {
        const bool escape = Peek() == '\\';
        const size_t known = escape ? kEscapes.find(Peek(1)) : 0;
        if (m_left.empty() || Peek() == '\n' || known == std::string_view::npos)
            throw CMofProblem{m_at, Expected("the end of the string")};
        m_text += escape ? kMeanings[known] : Peek();
        Skip(escape ? 2 : 1);
    }
    Skip(1);
}

bool CMofReader::IsWord(std::string_view word) const noexcept
{
    const auto lower = [](char c) { return static_cast<char>(c | 0x20); };
    return m_kind == Word && std::ranges::equal(m_token, word, {}, lower, lower);
}

bool CMofReader::Take(char mark)
{
    const bool is = Is(mark);
    if (is)
        Advance();
    return is;
}

bool CMofReader::TakeWord(std::string_view word)
{
    const bool is = IsWord(word);
    if (is)
        Advance();
    return is;
}

void CMofReader::Expect(char mark)
{
    if (!Take(mark))
        Fail(Expected(std::string{'"', mark, '"'}));
}

void CMofReader::ExpectWord(std::string_view word)
{
    if (!TakeWord(word))
        Fail(Expected('"' + std::string(word) + '"'));
}

CMofName CMofReader::TakeName(const char* what)
{
    if (m_kind != Word)
        Fail(Expected(what));
    CMofName name{WidenUtf8(m_token), m_place};
    Advance();
    return name;
}

std::wstring CMofReader::TakeTexts()
{
    std::string text;
    for (; m_kind == Text; Advance())
        text += m_text;
    return WidenUtf8(text);
}

CMofNumber CMofReader::TakeNumber()
{
    CMofNumber number;
    std::string_view digits = m_token;
    number.Negative = digits.front() == '-';
    if (!IsDigit(digits.front()))
        digits.remove_prefix(1);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number.Magnitude);
    if (error != std::errc() || end != digits.data() + digits.size())
        Fail("not a decimal number of 64 bits");
    Advance();
    return number;
}
} // namespace standin
