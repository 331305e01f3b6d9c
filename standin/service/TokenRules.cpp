#include "standin/service/TokenRules.h"

#include "Common/src/com/Text.h"

namespace standin::rules
{
std::wstring LiteralText(std::string_view literal)
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
