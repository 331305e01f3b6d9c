// The single values of a stored result: the prefix of each value's stream, and its text. The rows stand in
// the order in which the streams are written and read.
#pragma once

#include "CDM/src/engine/DiagRecords.h"

#include <span>
#include <string>

struct CResultField
{
    const wchar_t* Prefix;
    std::wstring (*Text)(const CResultData& result);
    // False for a text that no such value can have; the record is then of no use.
    bool (*Take)(const std::wstring& text, CResultData& result);
};

std::span<const CResultField> ResultFields() noexcept;

// Signed decimal, as every number is stored.
std::wstring NumberText(ULONG number);
bool TakeNumber(const std::wstring& text, ULONG& number);
