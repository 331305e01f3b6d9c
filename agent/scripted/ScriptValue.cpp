#include "agent/scripted/ScriptValue.h"

#include "Common/src/com/Text.h"
#include "agent/AgentCodes.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>

nlohmann::json ParseScriptText(std::string_view text)
{
    try
    {
        return nlohmann::json::parse(text, nullptr, true, true);
    }
    catch (const nlohmann::json::exception& error)
    {
        throw CScriptError(vorl::script::NotJson, error.what());
    }
}

void CScriptValue::Fail(const std::string& complaint) const
{
    throw CScriptError(vorl::script::BadContent, m_where + ": " + complaint);
}

ULONG CScriptValue::Number(ULONG largest) const
{
    if (!m_value.is_number_unsigned() || m_value.get<std::uint64_t>() > largest)
        Fail("expected a whole number from 0 to " + std::to_string(largest));
    return m_value.get<ULONG>();
}

bool CScriptValue::Flag() const
{
    if (!m_value.is_boolean())
        Fail("expected true or false");
    return m_value.get<bool>();
}

std::wstring CScriptValue::Text() const
{
    if (!m_value.is_string() || m_value.get_ref<const std::string&>().empty())
        Fail("expected a text that is not empty");
    return WidenUtf8(m_value.get_ref<const std::string&>());
}

bool CScriptValue::IsText(std::string_view text) const
{
    return m_value.is_string() && m_value.get_ref<const std::string&>() == text;
}

HRESULT CScriptValue::Code() const
{
    if (IsText("passed"))
        return S_OK;
    if (m_value.is_string())
    {
        const std::string& text = m_value.get_ref<const std::string&>();
        const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
        if (hexadecimal && text.size() > 2 && text.size() <= 10 &&
            text.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string::npos)
            return static_cast<HRESULT>(std::stoul(text.substr(2), nullptr, 16));
    }
    // Codes are written unsigned, or negative as a debugger shows them.
    if (m_value.is_number_integer())
    {
        const auto number = m_value.get<std::int64_t>();
        if (number >= INT32_MIN && number <= static_cast<std::int64_t>(UINT32_MAX))
            return static_cast<HRESULT>(number);
    }
    Fail("expected \"passed\" or a code such as \"0x80040311\"");
}

void CScriptValue::RequireObject() const
{
    if (!m_value.is_object())
        Fail("expected an object in braces");
}

CScriptValue CScriptValue::Member(const char* name) const
{
    RequireObject();
    const auto member = m_value.find(name);
    if (member == m_value.end())
        Fail(std::string(name) + " is missing");
    return {*member, m_where + "." + name};
}

void CScriptValue::ReadMembers(std::initializer_list<CMember> rows) const
{
    ForEachMember(
        [&](const std::string& name, const CScriptValue& member)
        {
            const auto* row =
                std::find_if(rows.begin(), rows.end(), [&](const CMember& r) { return r.Name == name; });
            if (row == rows.end())
                member.Fail("there is no member of this name here");
            row->Read(member);
        });
}

void CScriptValue::ForEachMember(
    const std::function<void(const std::string&, const CScriptValue&)>& visit) const
{
    RequireObject();
    for (const auto& [name, value] : m_value.items())
        visit(name, CScriptValue(value, m_where + "." + name));
}

void CScriptValue::ForEachItem(const Visit& visit) const
{
    if (!m_value.is_array())
        Fail("expected a list in brackets");
    for (size_t i = 0; i < m_value.size(); ++i)
        visit(CScriptValue(m_value[i], m_where + "[" + std::to_string(i) + "]"));
}

void CScriptValue::ForEachItemOrSelf(const Visit& visit) const
{
    if (m_value.is_array())
        ForEachItem(visit);
    else
        visit(*this);
}
