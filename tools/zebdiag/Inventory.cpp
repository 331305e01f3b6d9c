#include "tools/zebdiag/Inventory.h"

#include "Common/src/com/Variant.h"
#include "tools/zebdiag/ObjectPath.h"
#include "tools/zebdiag/WmiValue.h"

#include <algorithm>
#include <cwchar>

namespace zebdiag
{
namespace
{
std::wstring Text(const WmiObject& object, const wchar_t* name)
{
    return ReadText(object.Get(), name).value_or(L"");
}

CTest ReadTest(const WmiObject& object)
{
    CTest test;
    test.Key = Text(object, L"Name");
    const size_t at = test.Key.find(L'@');
    test.Number = std::wcstoul(test.Key.substr(0, at).c_str(), nullptr, 16);
    test.AdapterKey = at == std::wstring::npos ? L"" : test.Key.substr(at + 1);
    test.Caption = Text(object, L"Caption");
    test.Description = Text(object, L"Description");
    test.Path = Text(object, L"__RELPATH");
    if (test.Path.empty())
        test.Path = TestPath(test.Key);
    test.InUse = ReadFlag(object.Get(), L"IsInUse").value_or(false);
    test.Characteristics = ReadNumbers(object.Get(), L"Characteristics");
    return test;
}

CSettingValues ReadSettingValues(const WmiObject& object)
{
    return {ReadFlag(object.Get(), L"QuickMode"), ReadFlag(object.Get(), L"ReportStatusMessages"),
            ReadNumber(object.Get(), L"PercentOfTestCoverage")};
}

CResult ReadResult(const WmiObject& object)
{
    CResult result;
    result.TestKey = Text(object, L"DiagnosticName");
    result.State = static_cast<TestState>(ReadNumber(object.Get(), L"TestState").value_or(0));
    result.Percent = ReadNumber(object.Get(), L"PercentComplete");
    result.Started = Text(object, L"TestStartTime");
    result.Completed = Text(object, L"TestCompletionTime");
    result.Written = Text(object, L"TimeStamp");
    result.Lines = ReadTexts(object.Get(), L"TestResults");
    result.Setting = ReadSettingValues(object);
    return result;
}

CSetting ReadSetting(const WmiObject& object)
{
    CSetting setting;
    setting.TestKey = Text(object, L"SettingID");
    setting.Path = Text(object, L"__RELPATH");
    if (setting.Path.empty())
        setting.Path = SettingPath(setting.TestKey);
    setting.Values = ReadSettingValues(object);
    return setting;
}

CAdapter& AdapterOf(CInventory& inventory, const std::wstring& key, const AdapterNames& names)
{
    for (CAdapter& adapter : inventory.Adapters)
        if (adapter.Key == key)
            return adapter;
    CAdapter& adapter = inventory.Adapters.emplace_back();
    adapter.Key = key;
    const auto known = names.find(AdapterNameKey(key));
    adapter.Name = known != names.end() && !known->second.Name.empty() ? known->second.Name : key;
    adapter.Description = known != names.end() ? known->second.Description : L"";
    return adapter;
}

bool ByNumber(const CTest& a, const CTest& b)
{
    return a.Number != b.Number ? a.Number < b.Number : a.Key < b.Key;
}

bool ByName(const CAdapter& a, const CAdapter& b)
{
    const int order = _wcsicmp(a.Name.c_str(), b.Name.c_str());
    return order != 0 ? order < 0 : a.Key < b.Key;
}

void PutValue(const CWmiSession& session, const WmiObject& instance, const wchar_t* name, CVariant value)
{
    const HRESULT status = instance->Put(name, 0, &value, 0);
    if (FAILED(status))
        throw FailureOf(status, Step::Write, session.Target(), kSettingClass);
}
} // namespace

CInventory LoadInventory(const CWmiSession& session, const AdapterNames& names, LONG patienceMilliseconds)
{
    CInventory inventory;
    for (const WmiObject& object : session.InstancesOf(kTestClass, patienceMilliseconds))
    {
        if (inventory.Computer.empty())
            inventory.Computer = Text(object, L"SystemName");
        CTest test = ReadTest(object);
        CAdapter& adapter = AdapterOf(inventory, test.AdapterKey, names);
        adapter.Tests.push_back(std::move(test));
    }
    for (CAdapter& adapter : inventory.Adapters)
        std::sort(adapter.Tests.begin(), adapter.Tests.end(), ByNumber);
    std::sort(inventory.Adapters.begin(), inventory.Adapters.end(), ByName);
    return inventory;
}

std::optional<CTest> LoadTest(const CWmiSession& session, const CTest& test)
{
    const WmiObject object = session.TryGet(test.Path, kTestClass);
    return object ? std::optional<CTest>(ReadTest(object)) : std::nullopt;
}

std::map<std::wstring, CResult> LoadResults(const CWmiSession& session, LONG patienceMilliseconds)
{
    std::map<std::wstring, CResult> results;
    for (const WmiObject& object : session.InstancesOf(kResultClass, patienceMilliseconds))
    {
        CResult result = ReadResult(object);
        std::wstring key = result.TestKey;
        results.emplace(std::move(key), std::move(result));
    }
    return results;
}

std::map<std::wstring, CSetting> LoadSettings(const CWmiSession& session)
{
    std::map<std::wstring, CSetting> settings;
    for (const WmiObject& object : session.InstancesOf(kSettingClass))
    {
        CSetting setting = ReadSetting(object);
        std::wstring key = setting.TestKey;
        settings.emplace(std::move(key), std::move(setting));
    }
    return settings;
}

std::optional<CResult> LoadResult(const CWmiSession& session, const CTest& test)
{
    const WmiObject object = session.TryGet(ResultPath(test.Key, test.AdapterKey), kResultClass);
    return object ? std::optional<CResult>(ReadResult(object)) : std::nullopt;
}

std::optional<CSetting> LoadSetting(const CWmiSession& session, const CTest& test)
{
    const WmiObject object = session.TryGet(SettingPath(test.Key), kSettingClass);
    return object ? std::optional<CSetting>(ReadSetting(object)) : std::nullopt;
}

void StoreSetting(const CWmiSession& session, const CTest& test, const CSettingValues& values)
{
    const WmiObject instance = session.TryGet(SettingPath(test.Key), kSettingClass);
    if (!instance)
        throw FailureOf(WBEM_E_NOT_FOUND, Step::Write, session.Target(), kSettingClass);
    if (values.Quick)
        PutValue(session, instance, L"QuickMode", CVariant::FromBool(*values.Quick));
    if (values.Report)
        PutValue(session, instance, L"ReportStatusMessages", CVariant::FromBool(*values.Report));
    if (values.Coverage)
        PutValue(session, instance, L"PercentOfTestCoverage",
                 CVariant::FromByte(static_cast<BYTE>(*values.Coverage)));
    session.Update(instance.Get(), kSettingClass);
}
} // namespace zebdiag
