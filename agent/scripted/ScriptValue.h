// A value of a script together with the place where it stands, so that every complaint names the place.
#pragma once

#include <functional>
#include <initializer_list>
#include <nlohmann/json_fwd.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <windows.h>

// A script that cannot be used: the code that the agent's Initialize fails with, and what exactly is wrong.
class CScriptError : public std::runtime_error
{
  public:
    CScriptError(HRESULT code, const std::string& details) : std::runtime_error(details), m_code(code) {}
    HRESULT Code() const noexcept { return m_code; }

  private:
    HRESULT m_code;
};

// Throws CScriptError if the text is not JSON.
nlohmann::json ParseScriptText(std::string_view text);

// A view; the document outlives it. Every member throws CScriptError if the value is not what is asked for.
class CScriptValue
{
  public:
    CScriptValue(const nlohmann::json& value, std::string where) : m_value(value), m_where(std::move(where))
    {
    }

    ULONG Number(ULONG largest = 0xFFFFFFFF) const;
    bool Flag() const;
    std::wstring Text() const;
    bool IsText(std::string_view text) const;
    // A status: "passed", a number, or a number as text such as "0x80040311".
    HRESULT Code() const;

    // A member that has to be there.
    CScriptValue Member(const char* name) const;

    using Visit = std::function<void(const CScriptValue&)>;
    struct CMember
    {
        const char* Name;
        Visit Read;
    };
    // Hands every member to the row of its name; a member without a row is an error.
    void ReadMembers(std::initializer_list<CMember> rows) const;
    void ForEachMember(const std::function<void(const std::string&, const CScriptValue&)>& visit) const;
    void ForEachItem(const Visit& visit) const;
    // The items of a list, or the value itself if it is not a list.
    void ForEachItemOrSelf(const Visit& visit) const;

    [[noreturn]] void Fail(const std::string& complaint) const;

  private:
    void RequireObject() const;

    const nlohmann::json& m_value;
    std::string m_where;
};
