#include "standin/service/Query.h"

#include "Common/src/com/Text.h"
#include "standin/service/TokenRules.h"

#include <algorithm>

namespace standin
{
namespace
{
namespace pegtl = tao::pegtl;

// Deeper brackets than this have no use, and each level costs stack.
constexpr int kDeepest = 64;

namespace wql
{
using namespace pegtl;

// clang-format off
struct Gap : plus<space> {};
struct Opt : star<space> {};
template <class Word> struct Keyword : seq<Word, not_at<rules::NameRest>> {};
struct And : Keyword<TAO_PEGTL_ISTRING("and")> {};
struct Or : Keyword<TAO_PEGTL_ISTRING("or")> {};
struct Not : Keyword<TAO_PEGTL_ISTRING("not")> {};
struct Is : Keyword<TAO_PEGTL_ISTRING("is")> {};
struct Where : Keyword<TAO_PEGTL_ISTRING("where")> {};
struct Of : Keyword<TAO_PEGTL_ISTRING("of")> {};

// Conditions
struct Property : rules::Name {};
struct Null : Keyword<TAO_PEGTL_ISTRING("null")> {};
struct Text : rules::Quoted {};
struct Number : rules::Number {};
struct Boolean : rules::Boolean {};
struct Literal : sor<Null, Boolean, Text, Number> {};
struct Operator : sor<TAO_PEGTL_STRING("<="), TAO_PEGTL_STRING(">="), TAO_PEGTL_STRING("<>"),
                      TAO_PEGTL_STRING("!="), one<'=', '<', '>'>, Keyword<TAO_PEGTL_ISTRING("like")>> {};
struct IsNull : seq<Is, Gap, Null> {};
struct IsNotNull : seq<Is, Gap, Not, Gap, Null> {};
struct PropertyFirst : seq<Property, Opt, sor<IsNotNull, IsNull, seq<Operator, Opt, Literal>>> {};
struct LiteralFirst : seq<Literal, Opt, Operator, Opt, Property> {};
struct Condition;
struct Group : seq<one<'('>, Opt, Condition, Opt, one<')'>> {};
struct Simple : sor<Group, LiteralFirst, PropertyFirst> {};
struct Negated : seq<Not, Opt, Simple> {};
struct Term : sor<Negated, Simple> {};
struct AndTail : seq<Opt, And, Opt, Term> {};
struct Conjunction : seq<Term, star<AndTail>> {};
struct OrTail : seq<Opt, Or, Opt, Conjunction> {};
struct Condition : seq<Conjunction, star<OrTail>> {};

// SELECT
struct Selected : rules::Name {};
struct SelectedList : sor<one<'*'>, list<Selected, one<','>, space>> {};
struct FromClass : rules::Name {};
struct Select : seq<Keyword<TAO_PEGTL_ISTRING("select")>, Opt, SelectedList, Opt, Keyword<TAO_PEGTL_ISTRING("from")>,
                    Gap, FromClass, opt<Opt, Where, Opt, Condition>> {};

// ASSOCIATORS and REFERENCES. A quoted key may hold a closing brace.
struct Path : star<sor<rules::Quoted, not_one<'}'>>> {};
struct Object : seq<one<'{'>, Opt, Path, one<'}'>> {};
struct LimitValue : rules::Name {};
template <class Word> struct Limit : seq<Keyword<Word>, Opt, one<'='>, Opt, LimitValue> {};
struct AssocClass : Limit<TAO_PEGTL_ISTRING("assocclass")> {};
struct ResultClass : Limit<TAO_PEGTL_ISTRING("resultclass")> {};
struct Role : Limit<TAO_PEGTL_ISTRING("role")> {};
struct ResultRole : Limit<TAO_PEGTL_ISTRING("resultrole")> {};
struct ClassDefsOnly : Keyword<TAO_PEGTL_ISTRING("classdefsonly")> {};
template <class... Limits> struct Limits_ : opt<Opt, Where, Gap, list<sor<Limits...>, Gap>> {};
struct Associators : seq<Keyword<TAO_PEGTL_ISTRING("associators")>, Gap, Of, Opt, Object,
                         Limits_<AssocClass, ResultClass, Role, ResultRole, ClassDefsOnly>> {};
struct References : seq<Keyword<TAO_PEGTL_ISTRING("references")>, Gap, Of, Opt, Object,
                        Limits_<ResultClass, Role, ClassDefsOnly>> {};

struct Whole : seq<Opt, sor<Select, Associators, References>, Opt, eof> {};
// clang-format on
} // namespace wql

// What the rules that matched so far have left. A rule that matched and was given up again leaves only what
// the next match of it overwrites.
struct CBuilder
{
    CSelectQuery Select;
    CAssociationQuery Association;
    bool IsAssociation = false;
    std::wstring LimitValue;
    CCondition Current;
    std::vector<CCondition> Stack;

    CCondition Pop()
    {
        CCondition top = std::move(Stack.back());
        Stack.pop_back();
        return top;
    }
    void Push()
    {
        Stack.push_back(std::move(Current));
        Current = {};
    }
    void Join(CCondition::Kind kind)
    {
        CCondition right = Pop();
        CCondition left = Pop();
        if (left.Type != kind)
        {
            CCondition joined;
            joined.Type = kind;
            joined.Operands.push_back(std::move(left));
            left = std::move(joined);
        }
        left.Operands.push_back(std::move(right));
        Stack.push_back(std::move(left));
    }
};

CCondition::Operator OperatorOf(const std::string& text)
{
    using Operator = CCondition::Operator;
    static const std::pair<const char*, Operator> operators[] = {
        {"=", Operator::Equal},           {"<>", Operator::NotEqual},
        {"!=", Operator::NotEqual},       {"<", Operator::Less},
        {"<=", Operator::LessOrEqual},    {">", Operator::Greater},
        {">=", Operator::GreaterOrEqual},
    };
    for (const auto& [name, op] : operators)
        if (text == name)
            return op;
    return Operator::Like;
}

// "5 < x" is "x > 5".
CCondition::Operator Mirrored(CCondition::Operator op)
{
    using Operator = CCondition::Operator;
    switch (op)
    {
    case Operator::Less:
        return Operator::Greater;
    case Operator::LessOrEqual:
        return Operator::GreaterOrEqual;
    case Operator::Greater:
        return Operator::Less;
    case Operator::GreaterOrEqual:
        return Operator::LessOrEqual;
    default:
        return op;
    }
}

template <class Rule>
struct Action : pegtl::nothing<Rule>
{
};

#define ON_MATCH(Rule, ...)                                                                                  \
    template <>                                                                                              \
    struct Action<wql::Rule>                                                                                 \
    {                                                                                                        \
        template <class Input>                                                                               \
        static void apply([[maybe_unused]] const Input& in, CBuilder& out)                                   \
        {                                                                                                    \
            __VA_ARGS__;                                                                                     \
        }                                                                                                    \
    }

ON_MATCH(Selected, out.Select.Properties.push_back(WidenUtf8(in.string())));
ON_MATCH(FromClass, out.Select.ClassName = WidenUtf8(in.string()));
ON_MATCH(Property, out.Current.Property = WidenUtf8(in.string()));
ON_MATCH(Operator, out.Current.Op = OperatorOf(in.string()));
ON_MATCH(Null, out.Current.Literal = {});
ON_MATCH(Text, out.Current.Literal = (CLiteral{CLiteral::Kind::Text, rules::LiteralText(in.string())}));
ON_MATCH(Number, out.Current.Literal = (CLiteral{CLiteral::Kind::Number, WidenUtf8(in.string())}));
ON_MATCH(Boolean, out.Current.Literal = (CLiteral{CLiteral::Kind::Boolean, WidenUtf8(in.string())}));
ON_MATCH(IsNull, out.Current.Op = CCondition::Operator::Equal);
ON_MATCH(IsNotNull, out.Current.Op = CCondition::Operator::NotEqual);
ON_MATCH(PropertyFirst, out.Push());
ON_MATCH(LiteralFirst, out.Current.Op = Mirrored(out.Current.Op); out.Push());
ON_MATCH(Negated, CCondition negated; negated.Type = CCondition::Kind::Not;
         negated.Operands.push_back(out.Pop()); out.Stack.push_back(std::move(negated)));
ON_MATCH(AndTail, out.Join(CCondition::Kind::And));
ON_MATCH(OrTail, out.Join(CCondition::Kind::Or));
ON_MATCH(Condition, if (out.Stack.size() == 1) out.Select.Where = out.Stack.front());
ON_MATCH(Path, out.Association.ObjectText = WidenUtf8(in.string()); out.IsAssociation = true);
ON_MATCH(LimitValue, out.LimitValue = WidenUtf8(in.string()));
ON_MATCH(AssocClass, out.Association.AssocClass = out.LimitValue);
ON_MATCH(ResultClass, out.Association.ResultClass = out.LimitValue);
ON_MATCH(Role, out.Association.Role = out.LimitValue);
ON_MATCH(ResultRole, out.Association.ResultRole = out.LimitValue);
ON_MATCH(ClassDefsOnly, out.Association.ClassDefsOnly = true);
ON_MATCH(References, out.Association.References = true);

#undef ON_MATCH

bool IsTooDeep(std::string_view text)
{
    int depth = 0;
    int deepest = 0;
    for (const char c : text)
        deepest = std::max(deepest, depth += c == '(' ? 1 : c == ')' ? -1 : 0);
    return deepest > kDeepest;
}
} // namespace

std::shared_ptr<const CQuery> ParseQuery(std::wstring_view text)
{
    const std::string utf8 = Utf8Text(text);
    pegtl::memory_input<> input(utf8, "query");
    CBuilder built;
    if (IsTooDeep(utf8) || !pegtl::parse<wql::Whole, Action>(input, built))
        return nullptr;
    if (!built.IsAssociation)
        return std::make_shared<const CQuery>(CQuery{std::move(built.Select)});
    std::optional<CObjectPath> object = ParseObjectPath(built.Association.ObjectText);
    if (!object)
        return nullptr;
    built.Association.Object = std::move(*object);
    return std::make_shared<const CQuery>(CQuery{std::move(built.Association)});
}
} // namespace standin
