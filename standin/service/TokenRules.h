// The tokens that object paths and queries share. Texts are parsed in UTF-8.
#pragma once

#include "Common/src/com/Text.h"

#include <string>
#include <string_view>
#include <tao/pegtl.hpp>
#include <tao/pegtl/contrib/uint8.hpp>

namespace standin::rules
{
using namespace tao::pegtl;

struct NameStart : sor<alpha, one<'_'>, uint8::range<0x80, 0xff>>
{
};
struct NameRest : sor<NameStart, digit>
{
};
// The name of a class, property or key.
struct Name : seq<NameStart, star<NameRest>>
{
};
struct Spaces : star<space>
{
};
// A text in quotes of either kind; a backslash takes the next character as it is.
template <char Quote>
struct QuotedBy : seq<one<Quote>, until<one<Quote>, sor<seq<one<'\\'>, any>, any>>>
{
};
struct Quoted : sor<QuotedBy<'"'>, QuotedBy<'\''>>
{
};
struct Number
    : seq<opt<one<'-', '+'>>,
          sor<seq<one<'0'>, one<'x', 'X'>, plus<xdigit>>, seq<plus<digit>, opt<one<'.'>, plus<digit>>>>>
{
};
struct Boolean : seq<sor<TAO_PEGTL_ISTRING("true"), TAO_PEGTL_ISTRING("false")>, not_at<NameRest>>
{
};

// What a literal stands for: quotes and escapes are taken off a text, anything else stays as written.
inline std::wstring LiteralText(std::string_view literal)
{
    if (literal.empty() || (literal.front() != '"' && literal.front() != '\''))
        return WidenUtf8(literal);
    std::string plain;
    for (size_t i = 1; i + 1 < literal.size(); ++i)
    {
        if (literal[i] == '\\' && i + 2 < literal.size())
            ++i;
        plain += literal[i];
    }
    return WidenUtf8(plain);
}
} // namespace standin::rules
