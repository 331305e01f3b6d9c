// The marshalled form's building blocks: little-endian numbers, counted texts, values with their type.
// Reading trusts nothing: what is missing or cannot be throws CBadBytes.
#pragma once

#include "standin/object/CimValue.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{
// By which objects and contexts give their marshalled form, in memory of the task allocator. They may have
// been made by another module of the process.
struct IByValue : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE Encode(BYTE** bytes, ULONG* size) = 0;
};
} // namespace standin
__CRT_UUID_DECL(standin::IByValue, 0x1b6e07c7, 0x52d9, 0x4f0b, 0x8a, 0x41, 0x3c, 0x77, 0xd0, 0x5e, 0x92, 0x16)

namespace standin
{
struct CBadBytes
{
};

// Of an IByValue: copies its bytes out, and asks another for them. None where the object is null or not one
// of ours; std::bad_alloc.
HRESULT GiveBytes(const std::vector<BYTE>& from, BYTE** bytes, ULONG* size) noexcept;
std::vector<BYTE> TakeBytes(IUnknown* object);

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
    void Text(std::wstring_view text);
    // VT_EMPTY included.
    void Value(const VARIANT& value);

  private:
    void Element(VARTYPE type, const void* data, size_t size);

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
    uint32_t Count(size_t least = 1);
    std::wstring Text();
    CCimValue Value();
    // How many levels of nesting there may still be; throws where there are none.
    int Nested() const;
    bool AtEnd() const noexcept { return m_left.empty(); }

  private:
    CBstr Bstr();
    CVariant Element(VARTYPE type);

    std::span<const BYTE> m_left;
    int m_nesting;
};
} // namespace standin
