// A pipe whose both ends are in this process.
#pragma once

#include "standin/pipe/Pipe.h"

#include <memory>
#include <string>

struct CPipeEnds
{
    std::unique_ptr<standin::CPipe> Server;
    std::unique_ptr<standin::CPipe> Client;
};

// Both are null where there can be no pipe.
inline CPipeEnds MakePipe()
{
    const std::wstring name = L"\\\\.\\pipe\\WMI stand-in test " + std::to_wstring(GetCurrentProcessId());
    CFileHandle server(CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                        PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr));
    CFileHandle client(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                   FILE_FLAG_OVERLAPPED, nullptr));
    if (!server || !client)
        return {};
    return {std::make_unique<standin::CPipe>(std::move(server)),
            std::make_unique<standin::CPipe>(std::move(client))};
}
