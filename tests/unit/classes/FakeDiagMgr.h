// A diagnostics manager with contents and failures of a test's own.
#pragma once

#include "CDM/src/engine/DiagMgr.h"
#include "CDM/src/engine/EngineStatus.h"
#include "Common/src/VormArray.h"
#include "Common/src/WomClassObject.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

class CFakeDiagMgr final : public CDiagMgr
{
  public:
    CFakeDiagMgr() : CDiagMgr(CHostPaths{}) {}

    std::map<std::wstring, CTestData> Tests;
    std::map<std::wstring, CSettingData> Settings;
    std::map<std::wstring, CResultData> Results;

    // What operations answer instead of doing their work, by name; "GetTestData 1@A" names one key's call.
    std::map<std::wstring, HRESULT> Answers;
    // What became of the state, in order: "LockTest 1@A" and the like.
    std::vector<std::wstring> Calls;
    // Called with each of them.
    std::function<void(const std::wstring&)> OnCall;
    // What RunTest gives as the key of the result; the test's own key where it is empty.
    std::wstring ResultKey;
    // Called in the middle of UpdateSetting.
    std::function<HRESULT(CWomClassObject&)> OnUpdate;

    HRESULT EnumTests(CVormArray<BSTR>& keys) override { return Enumerate(L"EnumTests", Tests, keys); }
    HRESULT EnumSettings(CVormArray<BSTR>& keys) override
    {
        return Enumerate(L"EnumSettings", Settings, keys);
    }
    HRESULT EnumResults(CVormArray<BSTR>& keys) override { return Enumerate(L"EnumResults", Results, keys); }

    HRESULT GetTestData(BSTR key, CTestData* data) override { return Get(L"GetTestData", Tests, key, data); }
    HRESULT GetSettingData(BSTR key, CSettingData* data) override
    {
        return Get(L"GetSettingData", Settings, key, data);
    }
    HRESULT GetResultData(BSTR key, CResultData* data) override
    {
        return Get(L"GetResultData", Results, key, data);
    }

    BOOL SettingExists(BSTR key) override { return Settings.contains(Text(key)); }
    BOOL ResultExists(BSTR key) override { return Results.contains(Text(key)); }

    HRESULT LockTest(BSTR key) override { return Do(L"LockTest", key); }
    HRESULT UnlockTest(BSTR key) override { return Do(L"UnlockTest", key); }
    HRESULT RunTest(BSTR key, CBstr& resultKey, ULONG mode) override
    {
        if (!ResultKey.empty())
            resultKey = CBstr(ResultKey.c_str());
        return Do(mode == 1 ? L"RunTest with setting" : L"RunTest", key);
    }
    HRESULT StopTest(BSTR key) override { return Do(L"StopTest", key); }
    HRESULT SignalStop(BSTR key) override
    {
        const CTestData& test = Tests.at(Text(key));
        if (!test.Locked)
            return engine::Stopped;
        return SetEvent(test.Event) ? S_OK : E_FAIL;
    }
    HRESULT ClearResults(BSTR key) override { return Do(L"ClearResults", key); }
    HRESULT UpdateSetting(BSTR key, CWomClassObject& instance) override
    {
        const HRESULT hr = OnUpdate ? OnUpdate(instance) : S_OK;
        return FAILED(hr) ? hr : Do(L"UpdateSetting", key);
    }

  private:
    static std::wstring Text(BSTR key) { return key ? std::wstring(key, SysStringLen(key)) : std::wstring(); }

    HRESULT Answer(const std::wstring& operation, BSTR key) const
    {
        for (const std::wstring& name : {operation + L" " + Text(key), operation})
            if (const auto found = Answers.find(name); found != Answers.end())
                return found->second;
        return S_OK;
    }
    HRESULT Do(const std::wstring& operation, BSTR key)
    {
        Calls.push_back(operation + L" " + Text(key));
        if (OnCall)
            OnCall(Calls.back());
        return Answer(operation, key);
    }
    template <class Map>
    HRESULT Enumerate(const wchar_t* operation, const Map& map, CVormArray<BSTR>& keys) const
    {
        if (const HRESULT hr = Answer(operation, nullptr); hr != S_OK)
            return hr;
        if (const HRESULT hr = keys.Allocate(static_cast<ULONG>(map.size())); FAILED(hr))
            return hr;
        BSTR* item = keys.Items();
        for (const auto& [key, data] : map)
            *item++ = SysAllocString(key.c_str());
        return S_OK;
    }
    template <class Map, class Data>
    HRESULT Get(const wchar_t* operation, const Map& map, BSTR key, Data* data) const
    {
        if (const HRESULT hr = Answer(operation, key); hr != S_OK)
            return hr;
        const auto found = map.find(Text(key));
        if (found == map.end())
            return engine::NotFound;
        *data = found->second;
        return S_OK;
    }
};
