#include "CDM/src/engine/naming/DiagKeys.h"

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebHelpers.h"
#include "Common/src/com/Text.h"

#include <algorithm>
#include <cwchar>
#include <initializer_list>
#include <new>
#include <optional>
#include <string_view>

namespace
{
constexpr wchar_t kSeparator = L'@';
constexpr wchar_t kTestClass[] = L"Tolva_DiagTest";
constexpr wchar_t kSettingClass[] = L"Tolva_DiagSetting";
constexpr wchar_t kResultClass[] = L"Tolva_DiagResult";
constexpr wchar_t kAdapterClass[] = L"Tolva_EthernetAdapter";
constexpr wchar_t kSystemClass[] = L"Win32_ComputerSystem";

constexpr std::wstring_view kSingleKey = L"%s.%s=\"%s\"";
constexpr std::wstring_view kTestKeys = L"%s.%s=\"%s\",%s=\"%s\",%s=\"%s\",%s=\"%s\"";
constexpr std::wstring_view kResultKeys = L"%s.%s=\"%s\",%s=\"%s\",%s=\"%s\",%s=\"%s\",%s=\"%s\"";
constexpr std::wstring_view kSystemKeys = L",%s=\"%s\",%s=\"%s\",%s=\"%s\"";

using Values = std::initializer_list<std::wstring_view>;

// Every "%s" of a format in turn becomes the next value. The C runtime's own formatter costs many times as
// much, and these run twice per association instance.
wchar_t* Fill(wchar_t* to, std::wstring_view format, Values values)
{
    const std::wstring_view* value = values.begin();
    for (size_t i = 0; i < format.size(); ++i)
    {
        if (format[i] != L'%')
        {
            *to++ = format[i];
            continue;
        }
        to = std::copy(value->begin(), value->end(), to);
        ++value;
        ++i; // past the "s"
    }
    return to;
}

size_t Size(std::wstring_view format, Values values)
{
    size_t size = format.size() - 2 * values.size();
    for (const std::wstring_view value : values)
        size += value.size();
    return size;
}

CBstr Allocate(size_t size)
{
    CBstr text = CBstr::Attach(SysAllocStringLen(nullptr, static_cast<UINT>(size)));
    if (!text)
        throw std::bad_alloc();
    return text;
}

CBstr Format(std::wstring_view format, Values values)
{
    CBstr text = Allocate(Size(format, values));
    Fill(text.Get(), format, values);
    return text;
}

std::wstring_view KeyText(std::wstring_view key)
{
    return key.substr(0, key.find(L'\0'));
}

std::optional<std::wstring_view> AdapterKeyIn(std::wstring_view key)
{
    const std::wstring_view text = KeyText(key);
    const size_t at = text.find(kSeparator);
    return at == text.npos ? std::nullopt : std::optional(text.substr(at + 1));
}

CBstr NumberText(const wchar_t* format, ULONG number)
{
    wchar_t text[16];
    _snwprintf(text, std::size(text), format, number);
    return CBstr(text);
}
} // namespace

CBstr TestNumberText(ULONG testId)
{
    return NumberText(L"%lX", testId);
}

CBstr AdapterIndexText(ULONG index)
{
    return NumberText(L"%lu", index);
}

std::wstring FoldKey(BSTR key)
{
    return key ? UpperCaseAnsi(std::wstring_view(key)) : std::wstring();
}

CBstr FoldedKey(BSTR key)
{
    return CBstr(std::wstring_view(FoldKey(key)));
}

CBstr MakeTestKey(ULONG testId, BSTR adapterKey)
{
    return JoinKey(TestNumberText(testId).View(), FoldKey(adapterKey));
}

CBstr JoinKey(std::wstring_view first, std::wstring_view second)
{
    return Format(L"%s@%s", {KeyText(first), KeyText(second)});
}

CBstr ParseForTestName(std::wstring_view key)
{
    const std::wstring_view text = KeyText(key);
    const size_t at = text.find(kSeparator);
    return at == text.npos ? CBstr() : CBstr(text.substr(0, at));
}

CBstr ParseForAdapterKey(std::wstring_view key)
{
    const auto adapterKey = AdapterKeyIn(key);
    return adapterKey ? CBstr(*adapterKey) : CBstr();
}

CBstr CreateTestReference(std::wstring_view testKey, bool cimKeyMode)
{
    if (cimKeyMode)
        return Format(kSingleKey, {kTestClass, L"Name", KeyText(testKey)});
    return Format(kTestKeys, {kTestClass, L"Name", KeyText(testKey), L"CreationClassName", kTestClass,
                              L"SystemCreationClassName", kSystemClass, L"SystemName", ComputerName()});
}

CBstr CreateSettingReference(std::wstring_view settingKey)
{
    return Format(kSingleKey, {kSettingClass, L"SettingID", KeyText(settingKey)});
}

CBstr CreateResultReference(std::wstring_view key)
{
    const auto adapterKey = AdapterKeyIn(key);
    if (!adapterKey)
    {
        ZebDebug().Write("CreateResultReference: Cannot extract AdapterKey from DiagObject key");
        return CBstr();
    }
    return Format(kResultKeys, {kResultClass, L"DiagnosticCreationClassName", kTestClass, L"DiagnosticName",
                                KeyText(key), L"ExecutionID", *adapterKey, L"DiagSystemCreationClassName",
                                kSystemClass, L"DiagSystemName", ComputerName()});
}

CBstr CreateSysElemReference(std::wstring_view deviceId, bool cimKeyMode)
{
    const Values device = {kAdapterClass, L"DeviceID", KeyText(deviceId)};
    if (cimKeyMode)
        return Format(kSingleKey, device);
    const Values system = {L"CreationClassName", kAdapterClass, L"SystemCreationClassName",
                           kSystemClass,         L"SystemName", ComputerName()};
    CBstr text = Allocate(Size(kSingleKey, device) + Size(kSystemKeys, system));
    Fill(Fill(text.Get(), kSingleKey, device), kSystemKeys, system);
    return text;
}
