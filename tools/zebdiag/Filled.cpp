#include "tools/zebdiag/Filled.h"

namespace zebdiag
{
std::wstring Filled(std::wstring_view text, std::initializer_list<std::wstring> values)
{
    std::wstring filled;
    while (!text.empty())
    {
        const size_t place = text.size() > 2 && text[0] == L'{' && text[2] == L'}'
                                 ? static_cast<size_t>(text[1] - L'1')
                                 : values.size();
        if (place < values.size())
            filled += values.begin()[place];
        else
            filled += text.front();
        text.remove_prefix(place < values.size() ? 3 : 1);
    }
    return filled;
}
} // namespace zebdiag
