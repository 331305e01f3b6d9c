#include "standin/mof/MofSyntax.h"

#include "Common/src/com/Text.h"
#include "standin/mof/MofError.h"
#include "standin/mof/MofGrammar.h"

#include <charconv>
#include <tao/pegtl/contrib/parse_tree.hpp>

namespace standin
{
namespace
{
using namespace mof;
using CNode = parse_tree::node;

template <class Rule>
using Selector = parse_tree::selector<
    Rule, parse_tree::store_content::on<AliasNode, ArrayNode, AssignmentNode, BinaryNode, CharacterNode,
                                        ClassNode, DecimalNode, FalseNode, FeatureNode, FlavorNode, HexNode,
                                        InstanceNode, ListNode, NameNode, NullNode, OctalNode, ParameterNode,
                                        ParametersNode, PragmaNode, QualifierNode, RealNode, RefNode,
                                        StringContentNode, StringNode, SuperclassNode, TrueNode>>;

struct CMessages
{
    template <class Rule>
    static constexpr const char* message = kExpected<Rule>;
    template <class Rule>
    static constexpr bool raise_on_failure = false;
};
template <class Rule>
using Control = must_if<CMessages, normal, false>::control<Rule>;

CMofPlace PlaceOf(const CNode& node)
{
    const auto begin = node.begin();
    return {begin.line, begin.column};
}

// What is wrong with a literal that the grammar takes.
struct CBadLiteral
{
    CMofPlace Place;
    const char* Reason;
};

CMofName NameOf(const CNode& node)
{
    return {WidenUtf8(node.string_view()), PlaceOf(node)};
}

int DigitOf(char c)
{
    return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
}

// The characters that an escape sequence stands for; `text` begins behind the backslash and is shortened.
wchar_t TakeEscape(std::string_view& text)
{
    const char kind = text.front();
    text.remove_prefix(1);
    switch (kind)
    {
    case 'b':
        return L'\b';
    case 't':
        return L'\t';
    case 'n':
        return L'\n';
    case 'f':
        return L'\f';
    case 'r':
        return L'\r';
    case 'x':
    case 'X':
    {
        unsigned value = 0;
        for (int i = 0; i < 4 && !text.empty() && isxdigit(static_cast<unsigned char>(text.front())); ++i)
        {
            value = value * 16 + static_cast<unsigned>(DigitOf(text.front()));
            text.remove_prefix(1);
        }
        return static_cast<wchar_t>(value);
    }
    }
    return static_cast<wchar_t>(kind);
}

std::wstring Unescape(std::string_view text)
{
    std::wstring result;
    while (!text.empty())
    {
        const size_t plain = std::min(text.find('\\'), text.size());
        result += WidenUtf8(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty())
            break;
        text.remove_prefix(1);
        result += TakeEscape(text);
    }
    return result;
}

CMofValue Integer(const CNode& node, int base, size_t prefix, size_t suffix)
{
    CMofValue value;
    value.Kind = CMofValue::Integer;
    value.Place = PlaceOf(node);
    std::string_view digits = node.string_view();
    if (digits.front() == '-' || digits.front() == '+')
    {
        value.Negative = digits.front() == '-';
        digits.remove_prefix(1);
    }
    digits.remove_prefix(prefix);
    digits.remove_suffix(suffix);
    if (std::from_chars(digits.data(), digits.data() + digits.size(), value.Number, base).ec != std::errc())
        throw CBadLiteral{value.Place, "a number of more than 64 bits"};
    return value;
}

CMofValue ValueOf(const CNode& node)
{
    CMofValue value;
    value.Place = PlaceOf(node);
    if (node.is_type<DecimalNode>())
        return Integer(node, 10, 0, 0);
    if (node.is_type<HexNode>())
        return Integer(node, 16, 2, 0);
    if (node.is_type<BinaryNode>())
        return Integer(node, 2, 0, 1);
    if (node.is_type<OctalNode>())
        return Integer(node, 8, 1, 0);
    if (node.is_type<StringNode>())
    {
        value.Kind = CMofValue::Text;
        for (const auto& part : node.children)
            value.Characters += Unescape(part->string_view());
    }
    else if (node.is_type<NameNode>()) // a bare word among the arguments of a directive
    {
        value.Kind = CMofValue::Text;
        value.Characters = NameOf(node).Text;
    }
    else if (node.is_type<AliasNode>())
    {
        value.Kind = CMofValue::Alias;
        value.Characters = NameOf(node).Text;
    }
    else if (node.is_type<TrueNode>() || node.is_type<FalseNode>())
    {
        value.Kind = CMofValue::Boolean;
        value.Number = node.is_type<TrueNode>();
    }
    else if (node.is_type<RealNode>())
    {
        value.Kind = CMofValue::Real;
        value.Fraction = std::strtod(node.string().c_str(), nullptr);
    }
    else if (node.is_type<CharacterNode>())
    {
        value.Kind = CMofValue::Character;
        const std::wstring text = Unescape(node.string_view());
        if (text.size() != 1)
            throw CBadLiteral{value.Place, "a character of more than 16 bits"};
        value.Number = text.front();
    }
    else if (node.is_type<ListNode>())
    {
        value.Kind = CMofValue::List;
        for (const auto& item : node.children)
            value.Items.push_back(ValueOf(*item));
    }
    return value;
}

CMofQualifier QualifierOf(const CNode& node)
{
    CMofQualifier qualifier;
    for (const auto& child : node.children)
        if (child->is_type<NameNode>())
            qualifier.Name = NameOf(*child);
        else if (child->is_type<FlavorNode>())
            qualifier.Flavors.push_back(NameOf(*child));
        else
            qualifier.Value = ValueOf(*child);
    return qualifier;
}

// The parts of a property, a parameter or a method, which begin alike: qualifiers, type, name.
CMofElement ElementOf(const CNode& node)
{
    CMofElement element;
    for (const auto& child : node.children)
        if (child->is_type<QualifierNode>())
            element.Qualifiers.push_back(QualifierOf(*child));
        else if (child->is_type<NameNode>())
            (element.Type.Text.empty() ? element.Type : element.Name) = NameOf(*child);
        else if (child->is_type<RefNode>())
            element.Reference = true;
        else if (child->is_type<ArrayNode>())
            element.Array = true;
        else if (!child->is_type<ParametersNode>())
            element.Value = ValueOf(*child);
    return element;
}

const CNode* ParametersOf(const CNode& feature)
{
    for (const auto& child : feature.children)
        if (child->is_type<ParametersNode>())
            return child.get();
    return nullptr;
}

CMofMethod MethodOf(const CNode& node, const CNode& parameters)
{
    CMofElement head = ElementOf(node);
    CMofMethod method{std::move(head.Qualifiers), std::move(head.Type), std::move(head.Name), {}};
    for (const auto& parameter : parameters.children)
        method.Parameters.push_back(ElementOf(*parameter));
    return method;
}

CMofClass ClassOf(const CNode& node)
{
    CMofClass result;
    for (const auto& child : node.children)
        if (child->is_type<QualifierNode>())
            result.Qualifiers.push_back(QualifierOf(*child));
        else if (child->is_type<NameNode>())
            result.Name = NameOf(*child);
        else if (child->is_type<SuperclassNode>())
            result.Superclass = NameOf(*child);
        else if (const CNode* parameters = ParametersOf(*child))
            result.Methods.push_back(MethodOf(*child, *parameters));
        else
            result.Properties.push_back(ElementOf(*child));
    return result;
}

CMofInstance InstanceOf(const CNode& node)
{
    CMofInstance instance;
    for (const auto& child : node.children)
        if (child->is_type<NameNode>())
            instance.Class = NameOf(*child);
        else if (child->is_type<AliasNode>())
            instance.Alias = NameOf(*child);
        else if (child->is_type<AssignmentNode>())
        {
            // Qualifiers of an instance's property are read and have no effect.
            CMofAssignment assignment;
            for (const auto& part : child->children)
                if (part->is_type<NameNode>())
                    assignment.Name = NameOf(*part);
                else if (!part->is_type<QualifierNode>())
                    assignment.Value = ValueOf(*part);
            instance.Assignments.push_back(std::move(assignment));
        }
    return instance;
}

CMofPragma PragmaOf(const CNode& node)
{
    CMofPragma pragma;
    for (const auto& child : node.children)
        if (pragma.Name.Text.empty())
            pragma.Name = NameOf(*child);
        else
            pragma.Arguments.push_back(ValueOf(*child));
    return pragma;
}

CMofStatement StatementOf(const CNode& node)
{
    if (node.is_type<ClassNode>())
        return ClassOf(node);
    if (node.is_type<InstanceNode>())
        return InstanceOf(node);
    return PragmaOf(node);
}
} // namespace

std::vector<CMofStatement> ParseMof(std::string_view text, const std::string& sourceName)
{
    try
    {
        memory_input<> input(text.data(), text.size(), sourceName);
        const auto root = parse_tree::parse<Text, CNode, Selector, nothing, Control>(input);
        std::vector<CMofStatement> statements;
        for (const auto& node : root->children)
            statements.push_back(StatementOf(*node));
        return statements;
    }
    catch (const parse_error& error)
    {
        const position& place = error.positions().front();
        throw CMofError(sourceName, place.line, place.column, "expected " + std::string(error.message()));
    }
    catch (const CBadLiteral& bad)
    {
        throw CMofError(sourceName, bad.Place.Line, bad.Place.Column, bad.Reason);
    }
}
} // namespace standin
