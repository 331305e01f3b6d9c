// A MOF text, taken apart. Every part remembers where it stood, so that whoever gives it a meaning can say
// what is wrong where.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace standin
{
struct CMofPlace
{
    size_t Line = 0; // both count from 1
    size_t Column = 0;
};

struct CMofName
{
    std::wstring Text;
    CMofPlace Place;
};

struct CMofValue
{
    enum EKind
    {
        Null,
        Boolean,
        Integer,
        Real,
        Character,
        Text,
        Alias, // $Name, without the $
        List
    };
    EKind Kind = Null;
    CMofPlace Place;
    bool Negative = false;   // of Integer
    uint64_t Number = 0;     // of Integer (the magnitude), Boolean and Character
    double Fraction = 0;     // of Real
    std::wstring Characters; // of Text and Alias
    std::vector<CMofValue> Items;
};

struct CMofQualifier
{
    CMofName Name;
    std::optional<CMofValue> Value; // absent: TRUE
    std::vector<CMofName> Flavors;
};

// A property or a parameter.
struct CMofElement
{
    std::vector<CMofQualifier> Qualifiers;
    CMofName Type; // a CIM type or the name of a class
    bool Reference = false;
    bool Array = false;
    CMofName Name;
    std::optional<CMofValue> Value;
};

struct CMofMethod
{
    std::vector<CMofQualifier> Qualifiers;
    CMofName Type; // of what it returns; "void" is nothing
    CMofName Name;
    std::vector<CMofElement> Parameters;
};

struct CMofClass
{
    std::vector<CMofQualifier> Qualifiers;
    CMofName Name;
    std::optional<CMofName> Superclass;
    std::vector<CMofElement> Properties;
    std::vector<CMofMethod> Methods;
};

struct CMofAssignment
{
    CMofName Name;
    CMofValue Value;
};

struct CMofInstance
{
    CMofName Class;
    std::optional<CMofName> Alias;
    std::vector<CMofAssignment> Assignments;
};

struct CMofPragma
{
    CMofName Name;
    std::vector<CMofValue> Arguments; // texts, words among them
};

using CMofStatement = std::variant<CMofClass, CMofInstance, CMofPragma>;

// Reads a text in UTF-8. Throws CMofError; `sourceName` stands in it.
std::vector<CMofStatement> ParseMof(std::string_view text, const std::string& sourceName);
} // namespace standin
