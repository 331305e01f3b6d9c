#include "CDM/src/engine/naming/InstancePath.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"

#include <algorithm>
#include <cwchar>
#include <limits>
#include <string_view>

namespace
{
bool IsSeparator(wchar_t c) noexcept
{
    return c == L'\\' || c == L'/';
}

bool IsDigit(wchar_t c) noexcept
{
    return c >= L'0' && c <= L'9';
}

bool IsNameStart(wchar_t c) noexcept
{
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || c == L'_' || c > 0x7F;
}

bool IsNameCharacter(wchar_t c) noexcept
{
    return IsNameStart(c) || IsDigit(c);
}

bool IsHexDigit(wchar_t c) noexcept
{
    return IsDigit(c) || (c >= L'A' && c <= L'F') || (c >= L'a' && c <= L'f');
}

// Reads a path from left to right. Every step says whether the text was as it must be.
class CPathReader
{
  public:
    explicit CPathReader(std::wstring_view text) : m_text(text) {}

    bool Read(CParsedObjectPath& path)
    {
        SkipBlanks();
        if (!ReadPrefix(path))
            return false;
        SkipBlanks();
        return ReadName(path.Class) && ReadKeys(path);
    }

  private:
    wchar_t Peek(size_t ahead = 0) const noexcept { return ahead < m_text.size() ? m_text[ahead] : L'\0'; }
    void Skip(size_t count = 1) noexcept { m_text.remove_prefix(count); }
    void SkipBlanks() noexcept
    {
        while (Peek() == L' ' || Peek() == L'\t')
            Skip();
    }
    bool Accept(wchar_t c) noexcept
    {
        SkipBlanks();
        if (Peek() != c)
            return false;
        Skip();
        return true;
    }
    bool AtEnd() noexcept
    {
        SkipBlanks();
        return m_text.empty();
    }

    // \\server\name\name: or name\name: or nothing.
    bool ReadPrefix(CParsedObjectPath& path)
    {
        const bool withServer = IsSeparator(Peek()) && IsSeparator(Peek(1));
        if (withServer)
        {
            Skip(2);
            path.Server = Take([](wchar_t c) { return !IsSeparator(c) && c != L':' && c != L'"'; });
            if (path.Server.empty() || !IsSeparator(Peek()))
                return false;
            Skip();
        }
        else
        {
            // A colon in a key's value is no end of a namespace.
            const size_t end = m_text.find_first_of(L":.=\"'@");
            if (end == m_text.npos || m_text[end] != L':')
                return true;
        }
        do
        {
            std::wstring name;
            if (!ReadName(name))
                return false;
            path.Namespaces.push_back(std::move(name));
        } while (IsSeparator(Peek()) && (Skip(), true));
        return Accept(L':');
    }

    bool ReadKeys(CParsedObjectPath& path)
    {
        if (AtEnd())
            return true;
        if (Accept(L'='))
        {
            if (Accept(L'@'))
                path.Singleton = true;
            else if (CKeyRef unnamed; ReadValue(unnamed.Value))
                path.Keys.push_back(std::move(unnamed));
            else
                return false;
            return AtEnd();
        }
        if (!Accept(L'.'))
            return false;
        do
        {
            CKeyRef key;
            key.Name.emplace();
            SkipBlanks();
            if (!ReadName(*key.Name) || !Accept(L'=') || !ReadValue(key.Value))
                return false;
            path.Keys.push_back(std::move(key));
        } while (Accept(L','));
        return AtEnd();
    }

    bool ReadName(std::wstring& name)
    {
        if (!IsNameStart(Peek()))
            return false;
        name = Take(IsNameCharacter);
        return true;
    }

    bool ReadValue(std::variant<std::wstring, LONG>& value)
    {
        SkipBlanks();
        if (Peek() == L'"' || Peek() == L'\'')
            return ReadQuoted(value.emplace<std::wstring>());
        return ReadWord(value.emplace<LONG>());
    }

    // A backslash escapes the quote and itself. Before any other character it stands for itself, because the
    // references that are handed out carry adapter keys unescaped.
    bool ReadQuoted(std::wstring& text)
    {
        const wchar_t quote = Peek();
        Skip();
        while (!m_text.empty() && Peek() != quote)
        {
            if (Peek() == L'\\' && (Peek(1) == L'\\' || Peek(1) == quote))
                Skip();
            text += Peek();
            Skip();
        }
        if (m_text.empty())
            return false;
        Skip();
        return true;
    }

    bool ReadWord(LONG& number)
    {
        const std::wstring word =
            Take([](wchar_t c) { return c == L'-' || c == L'+' || IsNameCharacter(c); });
        if (EqualNoCaseAscii(word, L"TRUE"))
            return number = 1, true;
        if (EqualNoCaseAscii(word, L"FALSE"))
            return number = 0, true;
        if (word.size() > 2 && word[0] == L'0' && (word[1] == L'x' || word[1] == L'X'))
            return ReadHex(word, number);
        return ReadDecimal(word, number);
    }

    static bool ReadHex(const std::wstring& word, LONG& number)
    {
        const std::wstring_view digits = std::wstring_view(word).substr(2);
        const size_t leading = std::min(digits.find_first_not_of(L'0'), digits.size());
        if (digits.size() - leading > 8)
            return false;
        for (const wchar_t c : digits)
            if (!IsHexDigit(c))
                return false;
        unsigned value = 0;
        if (swscanf(word.c_str() + 2, L"%x", &value) != 1)
            return false;
        number = static_cast<LONG>(value);
        return true;
    }

    // Whatever 32 bits hold, signed or unsigned.
    static bool ReadDecimal(std::wstring_view word, LONG& number)
    {
        const bool negative = !word.empty() && word.front() == L'-';
        if (negative || (!word.empty() && word.front() == L'+'))
            word.remove_prefix(1);
        const LONGLONG limit = negative ? -static_cast<LONGLONG>(std::numeric_limits<LONG>::min())
                                        : std::numeric_limits<ULONG>::max();
        if (word.empty())
            return false;
        LONGLONG value = 0;
        for (const wchar_t c : word)
        {
            if (!IsDigit(c))
                return false;
            value = value * 10 + (c - L'0');
            if (value > limit)
                return false;
        }
        number = static_cast<LONG>(negative ? -value : value);
        return true;
    }

    template <class Predicate>
    std::wstring Take(Predicate belongs)
    {
        size_t length = 0;
        while (length < m_text.size() && belongs(m_text[length]))
            ++length;
        std::wstring taken(m_text.substr(0, length));
        Skip(length);
        return taken;
    }

    std::wstring_view m_text;
};
} // namespace

CBstr CKeyRef::Text() const
{
    if (const std::wstring* text = std::get_if<std::wstring>(&Value))
        return CBstr(std::wstring_view(*text));
    wchar_t digits[16];
    _snwprintf(digits, std::size(digits), L"%ld", std::get<LONG>(Value));
    return CBstr(digits);
}

HRESULT ParseObjectPath(const wchar_t* path, CParsedObjectPath& parsed)
{
    CParsedObjectPath result;
    if (!path || !CPathReader(path).Read(result))
        return wmi::InvalidObjectPath;
    parsed = std::move(result);
    return S_OK;
}

const CKeyRef* GetKeyRef(const CParsedObjectPath& path, const wchar_t* name, bool acceptUnnamed)
{
    for (const CKeyRef& key : path.Keys)
    {
        const std::optional<std::wstring>& known = key.Name ? key.Name : path.DefaultKeyName;
        if (!key.Name && acceptUnnamed)
            return &key;
        if (known && EqualNoCaseAscii(*known, name))
            return &key;
    }
    return nullptr;
}

CBstr ReadKey(const CParsedObjectPath& path, const wchar_t* name, KeyForm form)
{
    const CKeyRef* const key = GetKeyRef(path, name, form == KeyForm::NamedOrSingle);
    return key ? key->Text() : CBstr();
}
