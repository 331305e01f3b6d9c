// The marshalled form's building blocks: little-endian numbers, counted texts and blocks. Reading trusts
// nothing: what is missing or cannot be throws CBadBytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

namespace standin
{
struct CBadBytes
{
};

// Objects within objects, signatures within classes: no deeper than this.
constexpr int kMaxNesting = 16;

class CByteWriter
{
  public:
    explicit CByteWriter(std::vector<BYTE>& bytes) noexcept : m_bytes(bytes) {}

    void Raw(const void* data, size_t size)
    {
        const auto* first = static_cast<const BYTE*>(data);
        m_bytes.insert(m_bytes.end(), first, first + size);
    }
    template <class T>
    void Number(T value)
    {
        Raw(&value, sizeof value);
    }
    void Text(std::wstring_view text)
    {
        Number(static_cast<uint32_t>(text.size()));
        Raw(text.data(), text.size() * sizeof(wchar_t));
    }
    void Block(std::span<const BYTE> bytes)
    {
        Number(static_cast<uint32_t>(bytes.size()));
        Raw(bytes.data(), bytes.size());
    }

  private:
    std::vector<BYTE>& m_bytes;
};

class CByteReader
{
  public:
    CByteReader(std::span<const BYTE> bytes, int nesting) noexcept : m_left(bytes), m_nesting(nesting) {}

    std::span<const BYTE> Raw(size_t size)
    {
        if (size > m_left.size())
            throw CBadBytes();
        const auto taken = m_left.first(size);
        m_left = m_left.subspan(size);
        return taken;
    }
    template <class T>
    T Number()
    {
        T value;
        memcpy(&value, Raw(sizeof value).data(), sizeof value);
        return value;
    }
    // A number of things of which each takes at least `least` bytes.
    uint32_t Count(size_t least = 1)
    {
        const auto count = Number<uint32_t>();
        if (count > m_left.size() / least)
            throw CBadBytes();
        return count;
    }
    std::wstring Text()
    {
        std::wstring text(Count(sizeof(wchar_t)), L'\0');
        const auto bytes = Raw(text.size() * sizeof(wchar_t));
        memcpy(text.data(), bytes.data(), bytes.size());
        return text;
    }
    std::span<const BYTE> Block() { return Raw(Count()); }
    // How many levels of nesting there may still be.
    int Nested() const
    {
        if (m_nesting == 0)
            throw CBadBytes();
        return m_nesting - 1;
    }
    bool AtEnd() const noexcept { return m_left.empty(); }

  private:
    std::span<const BYTE> m_left;
    int m_nesting;
};
} // namespace standin
