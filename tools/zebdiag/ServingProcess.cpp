#include "tools/zebdiag/ServingProcess.h"

#include "Common/src/com/Owned.h"
#include "tools/zebdiag/WmiValue.h"

#include <tlhelp32.h>

namespace zebdiag
{
std::vector<unsigned long> ServingProcessesOfService(const CWmiSession& session)
{
    std::vector<unsigned long> ids;
    for (const WmiObject& process : session.Query(L"SELECT ProcessId FROM Win32_Process WHERE Name = '" +
                                                      std::wstring(kProviderImage) + L"'",
                                                  L"Win32_Process"))
        if (const auto id = ReadNumber(process.Get(), L"ProcessId"))
            ids.push_back(static_cast<unsigned long>(*id));
    return ids;
}

std::vector<unsigned long> ProcessesOfImage(const std::wstring& image)
{
    std::vector<unsigned long> ids;
    const CFileHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W process = {};
    process.dwSize = sizeof process;
    if (snapshot && Process32FirstW(snapshot.Get(), &process))
        do
            if (_wcsicmp(process.szExeFile, image.c_str()) == 0)
                ids.push_back(process.th32ProcessID);
        while (Process32NextW(snapshot.Get(), &process));
    return ids;
}

std::vector<unsigned long> FindServingProcesses(const CWmiSession& session)
{
    std::vector<unsigned long> ids;
    try
    {
        ids = ServingProcessesOfService(session);
    }
    catch (const CFailure&)
    {
        // A service that lists no processes: where it is this computer's, the system can be asked.
        ids.clear();
    }
    if (ids.empty() && session.Target().IsLocal())
        ids = ProcessesOfImage(kProviderImage);
    return ids;
}
} // namespace zebdiag
