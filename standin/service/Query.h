// The subset of WQL that the stand-in understands:
//   SELECT *|property, ... FROM class [WHERE property operator literal [AND ...]]
//   ASSOCIATORS OF {path} [WHERE AssocClass = c ResultClass = c Role = p ResultRole = p]
//   REFERENCES OF {path} [WHERE ResultClass = c Role = p]
#pragma once

#include "standin/service/ObjectPath.h"

#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>
#include <wbemcli.h>

namespace standin
{
struct CComparison
{
    std::wstring Property;
    std::wstring Operator; // as written: = <> != < <= > >=
    std::wstring Literal;  // a text without quotes; a number or a boolean as written
};

struct CSelectQuery
{
    std::vector<std::wstring> Properties; // empty for "*"
    std::wstring ClassName;
    std::vector<CComparison> Where; // all of them are to be met

    // A property without a value meets no comparison, and neither does one that cannot be compared with the
    // literal. Texts are compared without regard to case.
    bool Selects(IWbemClassObject* object) const;
};

struct CAssociationQuery
{
    bool References = false; // the associations themselves, not what stands at their other end
    CObjectPath Object;
    // Each is empty where the query does not limit it.
    std::wstring AssocClass;
    std::wstring ResultClass;
    std::wstring Role;
    std::wstring ResultRole;
};

using CQuery = std::variant<CSelectQuery, CAssociationQuery>;

// Null where the text is no query of the subset.
std::shared_ptr<const CQuery> ParseQuery(std::wstring_view text);
} // namespace standin
