#include "standin/mof/MofValue.h"

#include "Common/src/com/SafeArray.h"
#include "Common/src/com/Text.h"
#include "standin/object/CimType.h"

namespace standin
{
namespace
{
CVariant ToInteger(const CMofNumber& number, const CMofReader& reader)
{
    CVariant integer;
    integer.vt = number.Negative ? VT_I8 : VT_UI8;
    integer.ullVal = number.Negative ? 0 - number.Magnitude : number.Magnitude;
    if (number.Negative && integer.llVal > 0)
        reader.Fail("not a decimal number of 64 bits");
    return integer;
}

CVariant ReadScalar(CMofReader& reader, const CMofAliases& aliases)
{
    if (reader.Kind() == CMofReader::Text)
        return CVariant::FromBstr(CBstr(std::wstring_view(reader.TakeTexts())).Detach());
    if (reader.Kind() == CMofReader::Number)
        return ToInteger(reader.TakeNumber(), reader);
    if (reader.TakeWord("null"))
        return CVariant::Null();
    if (reader.IsWord("true") || reader.IsWord("false"))
    {
        const bool value = reader.TakeWord("true");
        if (!value)
            reader.TakeWord("false");
        return CVariant::FromBool(value);
    }
    if (!reader.Take('$'))
        reader.Fail("expected a value");
    const CMofName alias = reader.TakeName();
    const auto found = aliases.find(FoldName(alias.Text));
    if (found == aliases.end())
        throw CMofProblem{alias.Place, "no instance has the alias $" + Utf8Text(alias.Text)};
    return CVariant::FromText(found->second.c_str());
}

std::string TypeWord(CIMTYPE type)
{
    return Utf8Text(FindCimType(type)->Name) + (IsArray(type) ? "[]" : "");
}

CVariant ArrayOf(const std::vector<CCimValue>& items)
{
    CSafeArray array(SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(items.size())));
    for (LONG i = 0; i < static_cast<LONG>(items.size()); ++i)
        if (FAILED(
                SafeArrayPutElement(array.Get(), &i, const_cast<CCimValue*>(&items[static_cast<size_t>(i)]))))
            throw std::bad_alloc();
    return CVariant::FromArray(array.Detach(), VT_VARIANT);
}
} // namespace

std::wstring FoldName(std::wstring_view name)
{
    std::wstring folded(name);
    CharLowerBuffW(folded.data(), static_cast<DWORD>(folded.size()));
    return folded;
}

CMofValue ReadMofValue(CMofReader& reader, const CMofAliases& aliases)
{
    if (reader.Is('{'))
        return ReadMofList(reader, aliases);
    CMofValue value{reader.Place(), false, {}};
    value.Items.push_back(ReadScalar(reader, aliases));
    return value;
}

CMofValue ReadMofList(CMofReader& reader, const CMofAliases& aliases)
{
    CMofValue value{reader.Place(), true, {}};
    reader.Expect('{');
    if (reader.Take('}'))
        return value;
    do
        value.Items.push_back(ReadScalar(reader, aliases));
    while (reader.Take(','));
    reader.Expect('}');
    return value;
}

CCimValue ToCimValue(const CMofValue& value, CIMTYPE type)
{
    CCimValue stored;
    const CVariant given = value.List ? ArrayOf(value.Items) : CCimValue(value.Items.front());
    if (FAILED(ToCimValue(given, type, stored)))
        throw CMofProblem{value.Place, "the value does not fit the type " + TypeWord(type)};
    return stored;
}

CCimValue ToQualifierValue(const CMofValue& value)
{
    CIMTYPE type = CIM_ILLEGAL;
    if (!value.Items.empty())
        switch (value.Items.front().vt)
        {
        case VT_BOOL:
            type = CIM_BOOLEAN;
            break;
        case VT_I8:
        case VT_UI8:
            type = CIM_SINT32;
            break;
        case VT_BSTR:
            type = CIM_STRING;
        }
    if (type == CIM_ILLEGAL)
        throw CMofProblem{value.Place, "a qualifier cannot have this value"};
    return ToCimValue(value, value.List ? type | CIM_FLAG_ARRAY : type);
}
} // namespace standin
