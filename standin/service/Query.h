// The subset of WQL that the stand-in understands:
//   SELECT *|property, ... FROM class [WHERE condition]
//   ASSOCIATORS OF {path} [WHERE AssocClass = c ResultClass = c Role = p ResultRole = p ClassDefsOnly]
//   REFERENCES OF {path} [WHERE ResultClass = c Role = p ClassDefsOnly]
#pragma once

#include "standin/service/Condition.h"
#include "standin/service/ObjectPath.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace standin
{
struct CSelectQuery
{
    std::vector<std::wstring> Properties; // empty for "*"
    std::wstring ClassName;
    std::optional<CCondition> Where;
};

struct CAssociationQuery
{
    bool References = false; // the associations themselves, not what stands at their other end
    std::wstring ObjectText;
    CObjectPath Object;
    // Each is empty where the query does not limit it.
    std::wstring AssocClass;
    std::wstring ResultClass;
    std::wstring Role;
    std::wstring ResultRole;
    bool ClassDefsOnly = false;
};

struct CQuery
{
    std::variant<CSelectQuery, CAssociationQuery> Kind;
};

// Null where the text is no query of the subset.
std::shared_ptr<const CQuery> ParseQuery(std::wstring_view text);
} // namespace standin
