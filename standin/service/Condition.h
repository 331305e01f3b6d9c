// The WHERE clause of a query, as a tree.
#pragma once

#include <string>
#include <vector>
#include <wbemcli.h>

namespace standin
{
struct CLiteral
{
    enum class Kind
    {
        Null,
        Text,
        Number,
        Boolean
    };
    Kind Type = Kind::Null;
    std::wstring Value; // a text without quotes; a number or boolean as written
};

struct CCondition
{
    enum class Kind
    {
        And,
        Or,
        Not,
        Compare
    };
    enum class Operator
    {
        Equal,
        NotEqual,
        Less,
        LessOrEqual,
        Greater,
        GreaterOrEqual,
        Like
    };

    Kind Type = Kind::Compare;
    std::vector<CCondition> Operands; // of And, Or and Not
    std::wstring Property;            // the rest is of Compare
    Operator Op = Operator::Equal;
    CLiteral Literal;
};

// Whether an object meets the condition. A property without a value meets only comparisons with NULL; values
// that cannot be compared with the literal do not meet it. Texts are compared without regard to case.
bool Meets(IWbemClassObject* object, const CCondition& condition);
} // namespace standin
