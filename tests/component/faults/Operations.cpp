// Everything that a client can have the provider do, once each.
#include "tests/component/faults/FaultFixture.h"

namespace
{
using Answer = FaultFixture::Answer;
using Operation = FaultFixture::COperation;

std::wstring AssociationPath(const wchar_t* className, const wchar_t* first, const std::wstring& a,
                             const wchar_t* second, const std::wstring& b)
{
    return std::wstring(className) + L"." + first + L"=" + FaultFixture::Quoted(a) + L"," + second + L"=" +
           FaultFixture::Quoted(b);
}

Operation Enumeration(const char* name, const wchar_t* className)
{
    Operation operation{name, [className](FaultFixture& f) { return f.Enumerate(className); }};
    operation.operationName = L"CreateInstanceEnumAsync";
    return operation;
}

Operation Fetch(const char* name, const std::wstring& path)
{
    Operation operation{name, [path](FaultFixture& f) { return f.Get(path); }};
    operation.operationName = L"GetObjectAsync";
    return operation;
}

Answer CallMethod(FaultFixture& f, const wchar_t* test, const wchar_t* method)
{
    return f.Invoke(FaultFixture::TestPath(test), method,
                    {{L"SystemElement", FaultFixture::AdapterPath(wcschr(test, L'@') + 1)}});
}

Operation Method(const char* name, const wchar_t* test, const wchar_t* method)
{
    Operation operation{name, [=](FaultFixture& f) { return CallMethod(f, test, method); }};
    operation.operationName = L"ExecMethodAsync";
    return operation;
}

// Of a test that is running.
Operation Stop(const char* name, const wchar_t* test)
{
    Operation operation = Method(name, test, L"DiscontinueTest");
    operation.prepare = [test](FaultFixture& f) { f.BeginRun(test); };
    operation.finish = [](FaultFixture& f) { f.EndRun(); };
    return operation;
}

Operation SenderRun()
{
    Operation operation{"RunSender", [](FaultFixture& f)
                        {
                            return f.Invoke(FaultFixture::TestPath(L"9@B"), L"RunTest",
                                            {{L"SystemElement", FaultFixture::AdapterPath(L"B")},
                                             {L"Setting", FaultFixture::SettingPath(L"9@B")}});
                        }};
    operation.prepare = [](FaultFixture& f) { f.m_host.Agent->BlockRuns(); };
    operation.finish = [](FaultFixture& f) { f.m_host.Agent->BlockRuns(false); };
    operation.operationName = L"ExecMethodAsync";
    return operation;
}

Operation Clear()
{
    Operation operation = Method("Clear", L"2@A", L"ClearResults");
    operation.prepare = [](FaultFixture& f) { EXPECT_EQ(f.RunTest(L"2@A").Status, S_OK); };
    return operation;
}

Operation PutSetting()
{
    Operation operation{
        "PutSetting", [](FaultFixture& f)
        {
            const Instance setting =
                standin::MakeInstance(ServedSchema().GetDefinition(kServedNamespace, L"Tolva_DiagSetting"));
            const auto put = [&](const wchar_t* name, CVariant value) { setting->Put(name, 0, &value, 0); };
            put(L"SettingID", CVariant::FromText(L"1@B"));
            for (const wchar_t* name :
                 {L"HaltOnError", L"ReportSoftErrors", L"ReportStatusMessages", L"QuickMode"})
                put(name, CVariant::FromBool(true));
            put(L"TestWarningLevel", CVariant::FromLong(0));
            put(L"PercentOfTestCoverage", CVariant::FromByte(100));
            return f.Put(MakeCom<CFailingClassObject>(setting, f.m_host.Plan));
        }};
    operation.operationName = L"PutInstanceAsync";
    return operation;
}

Operation Query()
{
    return {
        "Query", [](FaultFixture& f)
        {
            const CBstr language(L"WQL");
            const CBstr query(L"SELECT * FROM Tolva_DiagTest");
            return f.Ask(
                [&](IWbemObjectSink* sink)
                { return f.m_host.Provider->ExecQueryAsync(language.Get(), query.Get(), 0, nullptr, sink); });
        }};
}

std::vector<Operation> MakeOperations()
{
    const std::wstring test = FaultFixture::TestPath(L"1@A");
    const std::wstring result = FaultFixture::ResultPath(L"1@A");
    const std::wstring setting = FaultFixture::SettingPath(L"1@A");
    const std::wstring adapter = FaultFixture::AdapterPath(L"A");
    return {
        Enumeration("EnumerateTests", L"Tolva_DiagTest"),
        Enumeration("EnumerateSettings", L"Tolva_DiagSetting"),
        Enumeration("EnumerateResults", L"Tolva_DiagResult"),
        Enumeration("EnumerateTestForMSE", L"Tolva_DiagTestForMSE"),
        Enumeration("EnumerateResultForMSE", L"Tolva_DiagResultForMSE"),
        Enumeration("EnumerateResultForTest", L"Tolva_DiagResultForTest"),
        Enumeration("EnumerateSettingForTest", L"Tolva_DiagSettingForTest"),
        Fetch("GetTest", test),
        Fetch("GetSetting", setting),
        Fetch("GetResult", result),
        Fetch("GetTestForMSE",
              AssociationPath(L"Tolva_DiagTestForMSE", L"Antecedent", test, L"Dependent", adapter)),
        Fetch("GetResultForMSE",
              AssociationPath(L"Tolva_DiagResultForMSE", L"Result", result, L"SystemElement", adapter)),
        Fetch("GetResultForTest", AssociationPath(L"Tolva_DiagResultForTest", L"DiagnosticResult", result,
                                                  L"DiagnosticTest", test)),
        Fetch("GetSettingForTest",
              AssociationPath(L"Tolva_DiagSettingForTest", L"Element", test, L"Setting", setting)),
        Method("RunOrdinary", L"1@A", L"RunTest"),
        // Keys have no letter case, but the test and its adapter must agree.
        Method("RunByOtherCase", L"2@a", L"RunTest"),
        SenderRun(),
        Stop("StopOrdinary", L"1@A"),
        Stop("StopSender", L"9@B"),
        Method("StopIdleOrdinary", L"1@A", L"DiscontinueTest"),
        Method("StopIdleSender", L"9@B", L"DiscontinueTest"),
        Clear(),
        PutSetting(),
        Query(),
    };
}
} // namespace

const std::vector<FaultFixture::COperation>& FaultFixture::Operations()
{
    static const std::vector<COperation> operations = MakeOperations();
    return operations;
}
