// The tokens that object paths and queries share. Texts are parsed in UTF-8.
#pragma once

#include "Common/src/com/Text.h"

#include <string>
#include <string_view>
#include <tao/pegtl.hpp>
#include <tao/pegtl/contrib/uint8.hpp>

namespace standin::rules
{
struct NameStart
    : tao::pegtl::sor<tao::pegtl::alpha, tao::pegtl::one<'_'>, tao::pegtl::uint8::range<0x80, 0xff>>
{
};
struct NameRest : tao::pegtl::sor<NameStart, tao::pegtl::digit>
{
};
// The name of a class, property or key.
struct Name : tao::pegtl::seq<NameStart, tao::pegtl::star<NameRest>>
{
};
struct Spaces : tao::pegtl::star<tao::pegtl::space>
{
};
// A text in quotes of either kind; a backslash takes the next character as it is.
template <char Quote>
struct QuotedBy
    : tao::pegtl::seq<
          tao::pegtl::one<Quote>,
          tao::pegtl::until<
              tao::pegtl::one<Quote>,
              tao::pegtl::sor<tao::pegtl::seq<tao::pegtl::one<'\\'>, tao::pegtl::any>, tao::pegtl::any>>>
{
};
struct Quoted : tao::pegtl::sor<QuotedBy<'"'>, QuotedBy<'\''>>
{
};
struct Number
    : tao::pegtl::seq<
          tao::pegtl::opt<tao::pegtl::one<'-', '+'>>,
          tao::pegtl::sor<
              tao::pegtl::seq<tao::pegtl::one<'0'>, tao::pegtl::one<'x', 'X'>,
                              tao::pegtl::plus<tao::pegtl::xdigit>>,
              tao::pegtl::seq<tao::pegtl::plus<tao::pegtl::digit>,
                              tao::pegtl::opt<tao::pegtl::one<'.'>, tao::pegtl::plus<tao::pegtl::digit>>>>>
{
};
struct Boolean : tao::pegtl::seq<tao::pegtl::sor<tao::pegtl::istring<'t', 'r', 'u', 'e'>,
                                                 tao::pegtl::istring<'f', 'a', 'l', 's', 'e'>>,
                                 tao::pegtl::not_at<NameRest>>
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
