#include "standin/service/Condition.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"

#include <algorithm>
#include <compare>
#include <cwchar>
#include <optional>

namespace standin
{
namespace
{
using Operator = CCondition::Operator;

std::optional<double> NumberIn(const std::wstring& text)
{
    wchar_t* end = nullptr;
    const double value = std::wcstod(text.c_str(), &end);
    return text.empty() || *end != L'\0' ? std::nullopt : std::optional(value);
}

std::optional<bool> TruthIn(const CLiteral& literal)
{
    if (literal.Type == CLiteral::Kind::Number)
        return NumberIn(literal.Value).value_or(0) != 0;
    if (EqualNoCaseAscii(literal.Value, L"true"))
        return true;
    if (EqualNoCaseAscii(literal.Value, L"false"))
        return false;
    return std::nullopt;
}

std::optional<double> NumberIn(const VARIANT& value)
{
    CVariant number;
    if (FAILED(VariantChangeType(number.Put(), const_cast<VARIANT*>(&value), 0, VT_R8)))
        return std::nullopt;
    return number.dblVal;
}

bool IsNumeric(CIMTYPE type)
{
    switch (type)
    {
    case CIM_SINT8:
    case CIM_UINT8:
    case CIM_SINT16:
    case CIM_UINT16:
    case CIM_SINT32:
    case CIM_UINT32:
    case CIM_SINT64:
    case CIM_UINT64:
    case CIM_REAL32:
    case CIM_REAL64:
        return true;
    default:
        return false;
    }
}

std::partial_ordering Order(double a, double b)
{
    return a <=> b;
}

// How a property's value stands to a literal; unordered where they cannot be compared.
std::partial_ordering Order(const VARIANT& value, CIMTYPE type, const CLiteral& literal)
{
    if (type == CIM_BOOLEAN && value.vt == VT_BOOL)
    {
        const std::optional<bool> truth = TruthIn(literal);
        return truth ? Order(value.boolVal != VARIANT_FALSE, *truth) : std::partial_ordering::unordered;
    }
    if (IsNumeric(type))
    {
        const std::optional<double> left = NumberIn(value);
        const std::optional<double> right = NumberIn(literal.Value);
        return left && right ? Order(*left, *right) : std::partial_ordering::unordered;
    }
    if (value.vt != VT_BSTR || literal.Type != CLiteral::Kind::Text)
        return std::partial_ordering::unordered;
    const int order =
        CompareStringOrdinal(value.bstrVal, static_cast<int>(SysStringLen(value.bstrVal)),
                             literal.Value.c_str(), static_cast<int>(literal.Value.size()), TRUE);
    return order == 0 ? std::partial_ordering::unordered : Order(order, CSTR_EQUAL);
}

bool SameLetter(wchar_t a, wchar_t b)
{
    return CompareStringOrdinal(&a, 1, &b, 1, TRUE) == CSTR_EQUAL;
}

// Matches one character against the set that begins after '[' at `pattern`; sets `pattern` behind its ']'.
bool InSet(const wchar_t*& pattern, const wchar_t* end, wchar_t c)
{
    const bool negated = pattern != end && *pattern == L'^';
    if (negated)
        ++pattern;
    bool found = false;
    for (; pattern != end && *pattern != L']'; ++pattern)
    {
        if (end - pattern > 2 && pattern[1] == L'-' && pattern[2] != L']')
        {
            found = found || (c >= pattern[0] && c <= pattern[2]);
            pattern += 2;
        }
        else
            found = found || SameLetter(*pattern, c);
    }
    if (pattern != end)
        ++pattern;
    return found != negated;
}

// '%' stands for any text, '_' for one character, '[...]' for one of a set.
bool Like(std::wstring_view text, std::wstring_view pattern)
{
    const wchar_t* t = text.data();
    const wchar_t* const textEnd = t + text.size();
    const wchar_t* p = pattern.data();
    const wchar_t* const patternEnd = p + pattern.size();
    const wchar_t* retryText = nullptr; // where to go on after the last '%' took one more character
    const wchar_t* retryPattern = nullptr;
    while (t != textEnd || p != patternEnd)
    {
        if (p != patternEnd && *p == L'%')
        {
            retryPattern = ++p;
            retryText = t;
            continue;
        }
        if (p != patternEnd && t != textEnd)
        {
            const wchar_t* next = p + 1;
            const bool matches =
                *p == L'_' || (*p == L'[' ? InSet(next, patternEnd, *t) : SameLetter(*p, *t));
            if (matches)
            {
                p = next;
                ++t;
                continue;
            }
        }
        if (!retryPattern || retryText == textEnd)
            return false;
        p = retryPattern;
        t = ++retryText;
    }
    return true;
}

bool Compare(IWbemClassObject* object, const CCondition& condition)
{
    CVariant value;
    CIMTYPE type = CIM_EMPTY;
    if (FAILED(object->Get(condition.Property.c_str(), 0, value.Put(), &type, nullptr)))
        return false;
    const bool isNull = value.vt == VT_NULL || value.vt == VT_EMPTY;
    if (condition.Literal.Type == CLiteral::Kind::Null)
        return (condition.Op == Operator::Equal && isNull) || (condition.Op == Operator::NotEqual && !isNull);
    if (isNull)
        return false;
    if (condition.Op == Operator::Like)
        return value.vt == VT_BSTR &&
               Like({value.bstrVal, SysStringLen(value.bstrVal)}, condition.Literal.Value);
    const std::partial_ordering order = Order(value, type, condition.Literal);
    switch (condition.Op)
    {
    case Operator::Equal:
        return order == 0;
    case Operator::NotEqual:
        return order < 0 || order > 0;
    case Operator::Less:
        return order < 0;
    case Operator::LessOrEqual:
        return order <= 0;
    case Operator::Greater:
        return order > 0;
    default:
        return order >= 0;
    }
}
} // namespace

bool Meets(IWbemClassObject* object, const CCondition& condition)
{
    const auto meets = [&](const CCondition& operand) { return Meets(object, operand); };
    switch (condition.Type)
    {
    case CCondition::Kind::And:
        return std::all_of(condition.Operands.begin(), condition.Operands.end(), meets);
    case CCondition::Kind::Or:
        return std::any_of(condition.Operands.begin(), condition.Operands.end(), meets);
    case CCondition::Kind::Not:
        return !meets(condition.Operands.front());
    default:
        return Compare(object, condition);
    }
}
} // namespace standin
