#include "standin/service/ObjectPath.h"

#include "Common/src/com/Text.h"
#include "standin/service/TokenRules.h"

#include <algorithm>

namespace standin
{
namespace
{
namespace pegtl = tao::pegtl;

namespace path
{
using namespace pegtl;

struct Separator : one<'\\', '/'>
{
};
struct Server : plus<not_one<'\\', '/', ':'>>
{
};
struct NameSpace : list<rules::Name, Separator>
{
};
struct ClassName : rules::Name
{
};
struct KeyName : rules::Name
{
};
struct Singleton : one<'@'>
{
};
struct KeyValue : sor<rules::Quoted, rules::Number, rules::Boolean>
{
};
struct UnnamedKey : seq<one<'='>, rules::Spaces, sor<Singleton, KeyValue>>
{
};
struct NamedKey : seq<rules::Spaces, KeyName, rules::Spaces, one<'='>, rules::Spaces, KeyValue, rules::Spaces>
{
};
struct Place : seq<opt<Separator, Separator, Server, Separator>, NameSpace, one<':'>>
{
};
struct Relative : seq<ClassName, opt<sor<UnnamedKey, seq<one<'.'>, list<NamedKey, one<','>>>>>>
{
};
// Looking ahead first, because a class looks like the beginning of a namespace.
struct Whole : seq<opt<at<Place>, Place>, Relative, rules::Spaces, eof>
{
};

template <class Rule>
struct Action : nothing<Rule>
{
};

#define ON_MATCH(Rule, ...)                                                                                  \
    template <>                                                                                              \
    struct Action<Rule>                                                                                      \
    {                                                                                                        \
        template <class Input>                                                                               \
        static void apply(const Input& in, CObjectPath& out)                                                 \
        {                                                                                                    \
            [[maybe_unused]] const std::wstring text = WidenUtf8(in.string());                               \
            __VA_ARGS__;                                                                                     \
        }                                                                                                    \
    }

ON_MATCH(Server, out.Server = text);
ON_MATCH(NameSpace, out.NameSpace = text;
         std::replace(out.NameSpace.begin(), out.NameSpace.end(), L'/', L'\\'));
ON_MATCH(ClassName, out.ClassName = text);
ON_MATCH(Singleton, out.IsInstance = true);
ON_MATCH(KeyName, out.Keys.push_back({text, {}}));
ON_MATCH(UnnamedKey, out.IsInstance = true);
ON_MATCH(KeyValue, if (out.Keys.empty()) out.Keys.emplace_back();
         out.Keys.back().Value = rules::LiteralText(in.string()); out.IsInstance = true);
ON_MATCH(Relative, out.Relative = text);

#undef ON_MATCH
} // namespace path
} // namespace

std::optional<CObjectPath> ParseObjectPath(std::wstring_view text)
{
    const std::string utf8 = Utf8Text(text);
    pegtl::memory_input<> input(utf8, "path");
    CObjectPath parsed;
    if (!pegtl::parse<path::Whole, path::Action>(input, parsed))
        return std::nullopt;
    return parsed;
}
} // namespace standin
