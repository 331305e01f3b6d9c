#include "standin/service/Query.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/Variant.h"
#include "standin/service/TokenRules.h"

#include <algorithm>
#include <compare>

namespace standin
{
namespace
{
namespace pegtl = tao::pegtl;

namespace wql
{
using namespace pegtl;

// clang-format off
struct Gap : plus<space> {};
struct Opt : star<space> {};
template <class Word> struct Keyword : seq<Word, not_at<rules::NameRest>> {};
struct Where : Keyword<TAO_PEGTL_ISTRING("where")> {};
struct Of : Keyword<TAO_PEGTL_ISTRING("of")> {};

// SELECT
struct Property : rules::Name {};
struct Operator : sor<TAO_PEGTL_STRING("<="), TAO_PEGTL_STRING(">="), TAO_PEGTL_STRING("<>"),
                      TAO_PEGTL_STRING("!="), one<'=', '<', '>'>> {};
struct Literal : sor<rules::Boolean, rules::Quoted, rules::Number> {};
struct Comparison : seq<Property, Opt, Operator, Opt, Literal> {};
struct And : seq<Opt, Keyword<TAO_PEGTL_ISTRING("and")>, Opt> {};
struct Selected : rules::Name {};
struct SelectedList : sor<one<'*'>, list<Selected, one<','>, space>> {};
struct FromClass : rules::Name {};
struct Select : seq<Keyword<TAO_PEGTL_ISTRING("select")>, Opt, SelectedList, Opt, Keyword<TAO_PEGTL_ISTRING("from")>,
                    Gap, FromClass, opt<Opt, Where, Opt, list<Comparison, And>>> {};

// ASSOCIATORS and REFERENCES. A quoted key may hold a closing brace.
struct Path : star<sor<rules::Quoted, not_one<'}'>>> {};
struct Object : seq<one<'{'>, Opt, Path, one<'}'>> {};
struct LimitValue : rules::Name {};
template <class Word> struct Limit : seq<Keyword<Word>, Opt, one<'='>, Opt, LimitValue> {};
struct AssocClass : Limit<TAO_PEGTL_ISTRING("assocclass")> {};
struct ResultClass : Limit<TAO_PEGTL_ISTRING("resultclass")> {};
struct Role : Limit<TAO_PEGTL_ISTRING("role")> {};
struct ResultRole : Limit<TAO_PEGTL_ISTRING("resultrole")> {};
template <class... Limits> struct Limits_ : opt<Opt, Where, Gap, list<sor<Limits...>, Gap>> {};
struct Associators : seq<Keyword<TAO_PEGTL_ISTRING("associators")>, Gap, Of, Opt, Object,
                         Limits_<AssocClass, ResultClass, Role, ResultRole>> {};
struct References : seq<Keyword<TAO_PEGTL_ISTRING("references")>, Gap, Of, Opt, Object,
                        Limits_<ResultClass, Role>> {};

struct Whole : seq<Opt, sor<Select, Associators, References>, Opt, eof> {};
// clang-format on
} // namespace wql

// What the rules that matched so far have left.
struct CBuilder
{
    CSelectQuery Select;
    CAssociationQuery Association;
    std::wstring ObjectText;
    std::wstring LimitValue;
    CComparison Comparison;
};

template <class Rule>
struct Action : pegtl::nothing<Rule>
{
};

#define ON_MATCH(Rule, ...)                                                                                  \
    template <>                                                                                              \
    struct Action<wql::Rule>                                                                                 \
    {                                                                                                        \
        template <class Input>                                                                               \
        static void apply(const Input& in, CBuilder& out)                                                    \
        {                                                                                                    \
            [[maybe_unused]] const std::string text = in.string();                                           \
            __VA_ARGS__;                                                                                     \
        }                                                                                                    \
    }

ON_MATCH(Selected, out.Select.Properties.push_back(WidenUtf8(text)));
ON_MATCH(FromClass, out.Select.ClassName = WidenUtf8(text));
ON_MATCH(Property, out.Comparison.Property = WidenUtf8(text));
ON_MATCH(Operator, out.Comparison.Operator = WidenUtf8(text));
ON_MATCH(Literal, out.Comparison.Literal = rules::LiteralText(text));
ON_MATCH(Comparison, out.Select.Where.push_back(out.Comparison));
ON_MATCH(Path, out.ObjectText = WidenUtf8(text));
ON_MATCH(LimitValue, out.LimitValue = WidenUtf8(text));
ON_MATCH(AssocClass, out.Association.AssocClass = out.LimitValue);
ON_MATCH(ResultClass, out.Association.ResultClass = out.LimitValue);
ON_MATCH(Role, out.Association.Role = out.LimitValue);
ON_MATCH(ResultRole, out.Association.ResultRole = out.LimitValue);
ON_MATCH(References, out.Association.References = true);

#undef ON_MATCH

// How a property's value stands to a literal; unordered where they cannot be compared.
std::partial_ordering Order(const VARIANT& value, CIMTYPE type, const std::wstring& literal)
{
    const bool isLongNumber = type == CIM_UINT64 || type == CIM_SINT64;
    if (value.vt == VT_BSTR && !isLongNumber)
    {
        const int order = CompareStringOrdinal(value.bstrVal, static_cast<int>(SysStringLen(value.bstrVal)),
                                               literal.c_str(), static_cast<int>(literal.size()), TRUE);
        return order <=> CSTR_EQUAL;
    }
    CVariant left;
    CVariant right = CVariant::FromText(literal.c_str());
    const VARTYPE common = value.vt == VT_BOOL ? VT_BOOL : VT_R8;
    if (FAILED(VariantChangeType(left.Put(), const_cast<VARIANT*>(&value), 0, common)) ||
        FAILED(VariantChangeType(&right, &right, 0, common)))
        return std::partial_ordering::unordered;
    return common == VT_BOOL ? right.boolVal <=> left.boolVal : left.dblVal <=> right.dblVal;
}

bool Meets(IWbemClassObject* object, const CComparison& comparison)
{
    struct OperatorRow
    {
        const wchar_t* Text;
        bool (*Holds)(std::partial_ordering order);
    };
    static const OperatorRow operators[] = {
        {L"=", std::is_eq},    {L"<>", [](std::partial_ordering o) { return o < 0 || o > 0; }},
        {L"<", std::is_lt},    {L"!=", [](std::partial_ordering o) { return o < 0 || o > 0; }},
        {L"<=", std::is_lteq}, {L">", std::is_gt},
        {L">=", std::is_gteq},
    };
    CVariant value;
    CIMTYPE type = CIM_EMPTY;
    if (FAILED(object->Get(comparison.Property.c_str(), 0, value.Put(), &type, nullptr)) ||
        value.vt == VT_NULL)
        return false;
    const std::partial_ordering order = Order(value, type, comparison.Literal);
    return std::any_of(std::begin(operators), std::end(operators),
                       [&](const OperatorRow& row)
                       { return comparison.Operator == row.Text && row.Holds(order); });
}
} // namespace

bool CSelectQuery::Selects(IWbemClassObject* object) const
{
    return std::all_of(Where.begin(), Where.end(),
                       [&](const CComparison& comparison) { return Meets(object, comparison); });
}

std::shared_ptr<const CQuery> ParseQuery(std::wstring_view text)
{
    const std::string utf8 = Utf8Text(text);
    pegtl::memory_input<> input(utf8, "query");
    CBuilder built;
    if (!pegtl::parse<wql::Whole, Action>(input, built))
        return nullptr;
    if (!built.Select.ClassName.empty())
        return std::make_shared<const CQuery>(std::move(built.Select));
    std::optional<CObjectPath> object = ParseObjectPath(built.ObjectText);
    if (!object)
        return nullptr;
    built.Association.Object = std::move(*object);
    return std::make_shared<const CQuery>(std::move(built.Association));
}
} // namespace standin
