// Conversion between wide text and the ANSI code page, and the case folding that keys and class names use.
#pragma once

#include <string>
#include <string_view>

// Characters that the code page lacks become its default character. Throw std::bad_alloc only.
std::string NarrowText(std::wstring_view text);
std::string NarrowText(std::wstring_view text, unsigned codePage);
std::wstring WidenText(std::string_view text);
// UTF-8 is used by files and consoles, never by the management interface.
std::string Utf8Text(std::wstring_view text);
std::wstring WidenUtf8(std::string_view text);

// Upper case by the rules of the ANSI code page: to the code page, CharUpperA, and back. Characters outside
// the code page do not survive this; keys and class names are compared in this form.
std::wstring UpperCaseAnsi(std::wstring_view text);

// Equality that folds A to Z only.
bool EqualNoCaseAscii(std::wstring_view a, std::wstring_view b) noexcept;
