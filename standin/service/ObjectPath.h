// An object path taken apart: who is asked, for which class, and by which keys.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{
struct CPathKey
{
    std::wstring Name;  // empty in the form Class="value"
    std::wstring Value; // a text without quotes and escapes; numbers and booleans as written
};

struct CObjectPath
{
    std::wstring Server;    // empty where the path names none
    std::wstring NameSpace; // with backslashes; empty where the path names none
    std::wstring ClassName;
    std::vector<CPathKey> Keys;
    bool IsInstance = false; // has keys or is a singleton (Class=@)
    std::wstring Relative;   // class and keys as written
};

// Nothing where the text is not an object path.
std::optional<CObjectPath> ParseObjectPath(std::wstring_view text);
} // namespace standin
