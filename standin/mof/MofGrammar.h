// The grammar of MOF as the management service's compiler reads it, without embedded instances and without
// declarations of qualifiers. Blanks and comments belong to the token before them, so that a failure is found
// where the unexpected token begins. Rules whose names end in "Node" make the nodes of the parse tree; those
// that begin with "Some" are asked for with must<> only, and have a message for where they do not match.
#pragma once

#include <tao/pegtl.hpp>

namespace standin::mof
{
using namespace tao::pegtl;

// Blanks and words

struct SomeEndOfComment : until<string<'*', '/'>>
{
};
struct Comment : sor<seq<two<'/'>, until<eolf>>, if_must<string<'/', '*'>, SomeEndOfComment>>
{
};
struct Blanks : star<sor<space, Comment>>
{
};
template <class... Rules>
struct Token : seq<Rules..., Blanks>
{
};
template <char C>
struct Mark : Token<one<C>>
{
};

struct WordCharacter : sor<alnum, one<'_'>>
{
};
struct Word : seq<sor<alpha, one<'_'>>, star<WordCharacter>>
{
};
template <class Letters>
struct Keyword : Token<Letters, not_at<WordCharacter>>
{
};
struct NameNode : Word
{
};
struct Name : Token<NameNode>
{
};
struct SomeName : Name
{
};

template <char C>
struct SomeMark : Mark<C>
{
};
using SomeOpeningBrace = SomeMark<'{'>;
using SomeClosingBrace = SomeMark<'}'>;
using SomeClosingBracket = SomeMark<']'>;
using SomeClosingParenthesis = SomeMark<')'>;
using SomeEqualsSign = SomeMark<'='>;
using SomeSemicolon = SomeMark<';'>;

// Values

struct NullNode : seq<TAO_PEGTL_ISTRING("null"), not_at<WordCharacter>>
{
};
struct TrueNode : seq<TAO_PEGTL_ISTRING("true"), not_at<WordCharacter>>
{
};
struct FalseNode : seq<TAO_PEGTL_ISTRING("false"), not_at<WordCharacter>>
{
};
struct Sign : opt<one<'+', '-'>>
{
};
struct Exponent : seq<one<'e', 'E'>, Sign, plus<digit>>
{
};
struct RealNode
    : seq<Sign, sor<seq<star<digit>, one<'.'>, plus<digit>, opt<Exponent>>, seq<plus<digit>, Exponent>>>
{
};
struct HexNode : seq<Sign, one<'0'>, one<'x', 'X'>, plus<xdigit>>
{
};
struct BinaryNode : seq<Sign, plus<one<'0', '1'>>, one<'b', 'B'>>
{
};
struct OctalNode : seq<Sign, one<'0'>, plus<range<'0', '7'>>>
{
};
struct DecimalNode : seq<Sign, sor<one<'0'>, seq<range<'1', '9'>, star<digit>>>>
{
};
struct Number : seq<sor<RealNode, HexNode, BinaryNode, OctalNode, DecimalNode>, not_at<WordCharacter>>
{
};
struct Escape
    : seq<one<'\\'>,
          sor<one<'b', 't', 'n', 'f', 'r', '"', '\'', '\\'>, seq<one<'x', 'X'>, rep_min_max<1, 4, xdigit>>>>
{
};
struct StringContentNode : star<sor<Escape, not_one<'"', '\\', '\r', '\n'>>>
{
};
struct SomeEndOfString : one<'"'>
{
};
// Literals that follow each other make one text.
struct StringNode : plus<if_must<one<'"'>, StringContentNode, SomeEndOfString, Blanks>>
{
};
struct CharacterNode : sor<Escape, utf8::not_one<'\'', '\\', '\r', '\n'>>
{
};
struct SomeEndOfCharacter : seq<CharacterNode, one<'\''>>
{
};
struct Character : if_must<one<'\''>, SomeEndOfCharacter>
{
};
struct AliasNode : Word
{
};
struct SomeAlias : seq<one<'$'>, AliasNode>
{
};
struct Scalar
    : Token<
          sor<NullNode, TrueNode, FalseNode, Number, StringNode, Character, if_must<at<one<'$'>>, SomeAlias>>>
{
};
struct SomeScalar : Scalar
{
};
struct ListNode : if_must<Mark<'{'>, sor<at<one<'}'>>, list<must<SomeScalar>, Mark<','>>>, SomeClosingBrace>
{
};
struct SomeValue : sor<ListNode, Scalar>
{
};

// Qualifiers

struct FlavorNode : Word
{
};
struct SomeFlavor : Token<FlavorNode>
{
};
struct QualifierNode
    : seq<must<SomeName>, opt<sor<if_must<Mark<'('>, SomeValue, SomeClosingParenthesis>, ListNode>>,
          opt<if_must<Mark<':'>, SomeFlavor, star<Token<FlavorNode>>>>>
{
};
struct Qualifiers : opt<if_must<Mark<'['>, list<QualifierNode, Mark<','>>, SomeClosingBracket>>
{
};

// Classes

struct RefNode : Keyword<TAO_PEGTL_ISTRING("ref")>
{
};
struct ArrayNode : if_must<Mark<'['>, star<digit>, Blanks, SomeClosingBracket>
{
};
struct ParameterNode : seq<Qualifiers, must<SomeName, opt<RefNode>, SomeName>, opt<ArrayNode>>
{
};
struct ParametersNode
    : if_must<Mark<'('>, sor<at<one<')'>>, list<ParameterNode, Mark<','>>>, SomeClosingParenthesis>
{
};
struct Default : if_must<Mark<'='>, SomeValue>
{
};
// A property, or a method where there are parameters.
struct FeatureNode
    : seq<Qualifiers, must<SomeName, opt<RefNode>, SomeName,
                           sor<ParametersNode, seq<opt<ArrayNode>, opt<Default>>>, SomeSemicolon>>
{
};
struct SuperclassNode : NameNode
{
};
struct SomeSuperclass : Token<SuperclassNode>
{
};
template <class Member>
struct Body : must<SomeOpeningBrace, until<at<one<'}'>>, Member>, SomeClosingBrace, SomeSemicolon>
{
};
struct ClassNode : if_must<seq<Qualifiers, Keyword<TAO_PEGTL_ISTRING("class")>>, SomeName,
                           opt<if_must<Mark<':'>, SomeSuperclass>>, Body<FeatureNode>>
{
};

// Instances

struct SomeOf : Keyword<TAO_PEGTL_ISTRING("of")>
{
};
struct InstanceAlias : if_must<Keyword<TAO_PEGTL_ISTRING("as")>, SomeAlias, Blanks>
{
};
struct AssignmentNode : seq<Qualifiers, must<SomeName, SomeEqualsSign, SomeValue, SomeSemicolon>>
{
};
struct InstanceNode : if_must<seq<Qualifiers, Keyword<TAO_PEGTL_ISTRING("instance")>>, SomeOf, SomeName,
                              opt<InstanceAlias>, Body<AssignmentNode>>
{
};

// Directives

struct SomePragma : Keyword<TAO_PEGTL_ISTRING("pragma")>
{
};
struct SomeArgument : sor<StringNode, Name>
{
};
struct PragmaNode
    : if_must<one<'#'>, SomePragma, SomeName,
              opt<if_must<Mark<'('>, list<must<SomeArgument>, Mark<','>>, SomeClosingParenthesis>>>
{
};

struct SomeStatement : sor<PragmaNode, ClassNode, InstanceNode>
{
};
struct Text : seq<Blanks, until<eof, must<SomeStatement>>>
{
};

// What a failure is told as: "expected ...".
template <class Rule>
inline constexpr const char* kExpected = nullptr;
template <>
inline constexpr const char* kExpected<SomeEndOfComment> = "the end of the comment";
template <>
inline constexpr const char* kExpected<SomeName> = "a name";
template <>
inline constexpr const char* kExpected<SomeOpeningBrace> = "\"{\"";
template <>
inline constexpr const char* kExpected<SomeClosingBrace> = "\"}\"";
template <>
inline constexpr const char* kExpected<SomeClosingBracket> = "\"]\"";
template <>
inline constexpr const char* kExpected<SomeClosingParenthesis> = "\")\"";
template <>
inline constexpr const char* kExpected<SomeEqualsSign> = "\"=\"";
template <>
inline constexpr const char* kExpected<SomeSemicolon> = "\";\"";
template <>
inline constexpr const char* kExpected<SomeEndOfString> = "the end of the string";
template <>
inline constexpr const char* kExpected<SomeEndOfCharacter> = "one character and \"'\"";
template <>
inline constexpr const char* kExpected<SomeAlias> = "an alias, \"$\" and a name";
template <>
inline constexpr const char* kExpected<SomeScalar> = "a value";
template <>
inline constexpr const char* kExpected<SomeValue> = "a value or a list of values in braces";
template <>
inline constexpr const char* kExpected<SomeFlavor> = "a flavor";
template <>
inline constexpr const char* kExpected<SomeSuperclass> = "the name of the superclass";
template <>
inline constexpr const char* kExpected<SomeOf> = "\"of\"";
template <>
inline constexpr const char* kExpected<SomePragma> = "\"pragma\"";
template <>
inline constexpr const char* kExpected<SomeArgument> = "a string or a name";
template <>
inline constexpr const char* kExpected<SomeStatement> = "a class, an instance or a #pragma";
} // namespace standin::mof
