#include "CDM/src/engine/naming/DiagKeys.h"

#include "CDM/src/engine/naming/References.h"
#include "Common/src/com/Text.h"

#include <cwchar>

namespace
{
CBstr NumberText(const wchar_t* format, ULONG number)
{
    wchar_t text[16];
    _snwprintf(text, std::size(text), format, number);
    return CBstr(text);
}
} // namespace

CBstr TestNumberText(ULONG testId)
{
    return NumberText(L"%lX", testId);
}

CBstr AdapterIndexText(ULONG index)
{
    return NumberText(L"%lu", index);
}

std::wstring FoldKey(BSTR key)
{
    return key ? UpperCaseAnsi(std::wstring_view(key)) : std::wstring();
}

CBstr FoldedKey(BSTR key)
{
    return CBstr(std::wstring_view(FoldKey(key)));
}

CBstr MakeTestKey(ULONG testId, BSTR adapterKey)
{
    return JoinKey(TestNumberText(testId).View(), FoldKey(adapterKey));
}
