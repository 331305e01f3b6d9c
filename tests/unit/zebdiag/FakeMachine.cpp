#include "FakeMachine.h"

#include "tools/zebdiag/doctor/Places.h"

namespace zebdiag
{
CFakeMachine::CFakeMachine()
{
    const std::wstring folder = kFakeFolder;
    Texts[Place(ClassKey(kProviderClass) + L"\\LocalServer32", L"")] = folder + L"Drevok.EXE";
    Texts[Place(ClassKey(kProviderClass), L"AppID")] = kAppId;
    Texts[Place(AppIdKey(kAppId), L"RunAs")] = L"NT AUTHORITY\\LocalService";
    Texts[Place(ClassKey(kAgentClass) + L"\\InprocServer32", L"")] = folder + L"Vorl.dll";
    Texts[Place(kZebDiagKey, L"InstalledDir")] = kFakeData;
    Texts[Place(kZebDiagKey, L"DebugFileName")] = std::wstring(kFakeData) + L"ZebDiagDbg.log";
    Numbers[Place(kZebDiagKey, L"StoreAfterRun")] = 1;
    for (const wchar_t* file : {L"Drevok.EXE", L"Vorl.dll", L"ENU_NWR.dll", L"ENU_8023.dll", L"ENUDiag.dll"})
        Files[folder + file] = kOwnVersion;
    Files[L"C:\\ProgramData\\ZEB"] = L"";
    Accounts = {L"NT AUTHORITY\\LocalService"};
    All = {{L"{AAAA}", L"Ethernet", L""},
           {L"{BBBB}", L"Ethernet 2", L""},
           {L"{CCCC}", L"Wi-Fi", L"wireless"},
           {L"{DDDD}", L"Loopback", L"loopback"}};
}
} // namespace zebdiag
