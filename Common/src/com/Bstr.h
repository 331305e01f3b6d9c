// The owner of a BSTR. A null BSTR and an empty one are different things here, as they are in COM:
// the text of both is empty, only the first is "absent".
#pragma once

#include <windows.h>

#include <new>
#include <oleauto.h>
#include <string>
#include <string_view>
#include <utility>

class CBstr
{
  public:
    CBstr() noexcept = default;
    // Copies the text; throws std::bad_alloc. A null pointer gives a null BSTR.
    explicit CBstr(const wchar_t* text) : m_text(text ? Checked(SysAllocString(text)) : nullptr) {}
    explicit CBstr(std::wstring_view text)
        : m_text(Checked(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))))
    {
    }
    CBstr(const CBstr& other) : m_text(Copy(other.m_text)) {}
    CBstr(CBstr&& other) noexcept : m_text(other.Detach()) {}
    CBstr& operator=(CBstr other) noexcept
    {
        std::swap(m_text, other.m_text);
        return *this;
    }
    ~CBstr() { SysFreeString(m_text); }

    // Takes over a BSTR that the caller owned.
    static CBstr Attach(BSTR text) noexcept
    {
        CBstr owner;
        owner.m_text = text;
        return owner;
    }
    // A copy made without an exception: null if memory ran out or the source is null.
    static BSTR CopyOrNull(BSTR text) noexcept
    {
        return text ? SysAllocStringLen(text, SysStringLen(text)) : nullptr;
    }

    BSTR Get() const noexcept { return m_text; }
    // Never null: for formats and comparisons.
    const wchar_t* Text() const noexcept { return m_text ? m_text : L""; }
    UINT Length() const noexcept { return SysStringLen(m_text); }
    std::wstring_view View() const noexcept { return {Text(), Length()}; }
    explicit operator bool() const noexcept { return m_text != nullptr; }

    BSTR* Put() noexcept
    {
        SysFreeString(std::exchange(m_text, nullptr));
        return &m_text;
    }
    BSTR Detach() noexcept { return std::exchange(m_text, nullptr); }

  private:
    static BSTR Checked(BSTR text)
    {
        if (!text)
            throw std::bad_alloc();
        return text;
    }
    static BSTR Copy(BSTR text)
    {
        return text ? Checked(SysAllocStringLen(text, SysStringLen(text))) : nullptr;
    }

    BSTR m_text = nullptr;
};
