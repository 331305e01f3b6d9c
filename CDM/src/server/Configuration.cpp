#include "CDM/src/server/Configuration.h"

#include "CDM/src/ZebRegistry.h"
#include "Common/src/com/ComBoundary.h"

namespace
{
constexpr DWORD kTextSize = 4096;

std::string ReadText(const char* name, const char* otherwise)
{
    std::string buffer(kTextSize, '\0');
    if (!ReadRegistryString(kZebDiagKey, name, buffer.data(), kTextSize))
        return otherwise;
    buffer.resize(strnlen(buffer.data(), kTextSize));
    return buffer;
}
} // namespace

CTraceConfiguration ReadTraceConfiguration()
{
    CTraceConfiguration trace{ReadText("DebugFileName", "ZebDiagDbg.log"), 0};
    DWORD level = 0;
    if (ReadRegistryNumber(kZebDiagKey, "DebugLevel", level))
        trace.Level = level;
    return trace;
}

CHostPaths ReadHostPaths()
{
    CHostPaths paths;
    paths.InstallDir = ReadText("InstalledDir", "C:\\Program Files\\Veltrane\\ZEB\\");
    // Without a path there are no stored results; the server serves all the same.
    (void)FormResultStorePath(paths.InstallDir, paths.ResultStorePath);
    return paths;
}

HRESULT FormResultStorePath(const std::string& installDir, std::wstring& path) noexcept
{
    return AtComBoundary(
        [&]
        {
            const std::string narrow = installDir + "ZebDiag.bin";
            const int length = static_cast<int>(narrow.size());
            std::wstring wide(narrow.size(), L'\0');
            const int written = MultiByteToWideChar(CP_ACP, 0, narrow.data(), length, wide.data(), length);
            if (written == 0)
                return HRESULT_FROM_WIN32(GetLastError());
            wide.resize(static_cast<size_t>(written));
            path = std::move(wide);
            return S_OK;
        });
}
