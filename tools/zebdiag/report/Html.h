// Writes a page. Whatever gets onto it, be it a text or the value of an attribute, is escaped here and
// nowhere else; tags and names of attributes are the caller's own.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace zebdiag
{
// The text as a browser shows it and as it may stand in an attribute. Characters that no page may hold become
// the one that stands for such.
std::wstring Escaped(std::wstring_view text);

class CHtml
{
  public:
    using Attributes = std::initializer_list<std::pair<const wchar_t*, std::wstring>>;

    // Closes its element at the end of the scope.
    class CElement
    {
      public:
        CElement(CHtml& html, const wchar_t* tag) : m_html(html), m_tag(tag) {}
        CElement(const CElement&) = delete;
        CElement& operator=(const CElement&) = delete;
        ~CElement() { m_html.Close(m_tag); }

      private:
        CHtml& m_html;
        const wchar_t* m_tag;
    };

    [[nodiscard]] CElement Element(const wchar_t* tag, Attributes attributes = {});
    // An element with nothing but text.
    void Add(const wchar_t* tag, std::wstring_view text, Attributes attributes = {});
    // An element without end, such as meta.
    void AddVoid(const wchar_t* tag, Attributes attributes);
    void AddText(std::wstring_view text);

    const std::wstring& Page() const noexcept { return m_page; }

  private:
    void Open(const wchar_t* tag, Attributes attributes);
    void Close(const wchar_t* tag);

    std::wstring m_page = L"<!DOCTYPE html>\n";
};
} // namespace zebdiag
