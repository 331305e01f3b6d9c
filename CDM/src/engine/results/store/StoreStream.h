// One value of the result store: a stream that holds a 32-bit byte count and that many bytes of UTF-16 text,
// its terminating NUL included.
#pragma once

#include <objidl.h>
#include <string>
#include <string_view>

// Fails with CreateStream's code or Write's; `created` says which of the two.
HRESULT WriteStreamText(IStorage& storage, const wchar_t* name, std::wstring_view text, bool& created);

enum class StreamRead
{
    Done,
    Missing, // traced
    Refused, // it is there and cannot be opened, which is traced, or not be read
    Damaged  // its content is not such a text
};

// Missing leaves `text` as it is. Never reads more than the stream has, whatever its count says. Throws
// std::bad_alloc.
StreamRead ReadStreamText(IStorage& storage, const wchar_t* name, std::wstring& text);
