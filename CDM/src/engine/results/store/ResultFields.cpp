#include "CDM/src/engine/results/store/ResultFields.h"

#include "CDM/src/engine/EngineStatus.h"
#include "CDM/src/engine/results/CimDateTime.h"

#include <cerrno>
#include <cwchar>
#include <limits>
#include <type_traits>

namespace
{
template <auto Member>
std::wstring FlagText(const CResultData& result)
{
    return result.*Member ? L"TRUE" : L"FALSE";
}

template <auto Member>
bool TakeFlag(const std::wstring& text, CResultData& result)
{
    result.*Member = text == L"TRUE" ? 1 : 0;
    return text == L"TRUE" || text == L"FALSE";
}

template <auto Member>
std::wstring NumberTextOf(const CResultData& result)
{
    return NumberText(result.*Member);
}

// `Max`: the largest number that the value can have where that is less than its type holds.
template <auto Member, ULONG Max = std::numeric_limits<ULONG>::max()>
bool TakeNumberOf(const std::wstring& text, CResultData& result)
{
    ULONG number = 0;
    if (!TakeNumber(text, number) || number > Max)
        return false;
    result.*Member = static_cast<std::remove_reference_t<decltype(result.*Member)>>(number);
    return true;
}

template <auto Member>
std::wstring TextOf(const CResultData& result)
{
    return (result.*Member).Text();
}

template <auto Member>
bool TakeText(const std::wstring& text, CResultData& result)
{
    result.*Member = CBstr(std::wstring_view(text));
    return true;
}

// A time that is absent has an empty text.
template <auto Member>
std::wstring TimeText(const CResultData& result)
{
    CCoTaskMem<wchar_t> text;
    const auto& time = result.*Member;
    return ConvertSystemTimeToString(time ? &*time : nullptr, text) ? text.Get() : L"";
}

template <auto Member>
bool TakeTime(const std::wstring& text, CResultData& result)
{
    auto& time = result.*Member;
    time.reset();
    return text.empty() || ConvertStringToSystemTime(text.c_str(), time.emplace());
}

template <auto Member>
constexpr CResultField Flag(const wchar_t* prefix)
{
    return {prefix, &FlagText<Member>, &TakeFlag<Member>};
}

template <auto Member, ULONG Max = std::numeric_limits<ULONG>::max()>
constexpr CResultField Number(const wchar_t* prefix)
{
    return {prefix, &NumberTextOf<Member>, &TakeNumberOf<Member, Max>};
}

template <auto Member>
constexpr CResultField Text(const wchar_t* prefix)
{
    return {prefix, &TextOf<Member>, &TakeText<Member>};
}

template <auto Member>
constexpr CResultField Time(const wchar_t* prefix)
{
    return {prefix, &TimeText<Member>, &TakeTime<Member>};
}

constexpr ULONG kMaxByte = std::numeric_limits<BYTE>::max();
constexpr ULONG kMaxWord = std::numeric_limits<USHORT>::max();

constexpr CResultField kFields[] = {
    Flag<&CResultData::ReportSoftErrors>(L"rse"),
    Flag<&CResultData::ReportStatusMessages>(L"rsm"),
    Flag<&CResultData::QuickMode>(L"qm"),
    Flag<&CResultData::HaltOnError>(L"hoe"),
    Number<&CResultData::TestWarningLevel, kMaxWord>(L"twl"),
    Number<&CResultData::PercentOfTestCoverage, kMaxByte>(L"ptc"),
    Text<&CResultData::ResultID>(L"k"),
    Text<&CResultData::DiagnosticCreationClassName>(L"dccn"),
    Text<&CResultData::ExecutionID>(L"eid"),
    Number<&CResultData::EstimatedTimeOfPerforming>(L"etop"),
    Flag<&CResultData::IsPackage>(L"ip"),
    Number<&CResultData::OtherStateDescriptionResourceId>(L"osdrid"),
    Time<&CResultData::TestCompletionTime>(L"tct"),
    Time<&CResultData::TestStartTime>(L"tst"),
    Time<&CResultData::TimeStamp>(L"ts"),
    Number<&CResultData::PercentComplete, kMaxByte>(L"pc"),
    Number<&CResultData::TestState, TestStateStopped>(L"tstate"),
    Number<&CResultData::DiagnosticNameStringID>(L"nrid"),
};
} // namespace

std::span<const CResultField> ResultFields() noexcept
{
    return kFields;
}

std::wstring NumberText(ULONG number)
{
    wchar_t text[16];
    _snwprintf(text, std::size(text), L"%d", static_cast<int>(number));
    return text;
}

bool TakeNumber(const std::wstring& text, ULONG& number)
{
    wchar_t* end = nullptr;
    errno = 0;
    number = static_cast<ULONG>(wcstol(text.c_str(), &end, 10));
    return !text.empty() && *end == L'\0' && errno == 0;
}
