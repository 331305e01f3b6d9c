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

// Both are null where there can be no pipe. The server has announced a frame of `announced` bytes, unless
// that is 0, and has sent nothing of it.
inline CPipeEnds MakePipe(uint32_t announced = 0)
{
    static unsigned count = 0;
    const std::wstring name = L"\\\\.\\pipe\\WMI stand-in test " + std::to_wstring(GetCurrentProcessId()) +
                              L"-" + std::to_wstring(++count);
    CFileHandle server(CreateNamedPipeW(name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                        PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr));
    CFileHandle client(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                   FILE_FLAG_OVERLAPPED, nullptr));
    if (!server || !client)
        return {};
    if (announced != 0)
    {
        OVERLAPPED writing = {};
        DWORD written = 0;
        WriteFile(server.Get(), &announced, sizeof announced, nullptr, &writing);
        if (!GetOverlappedResult(server.Get(), &writing, &written, TRUE))
            return {};
    }
    return {std::make_unique<standin::CPipe>(std::move(server)),
            std::make_unique<standin::CPipe>(std::move(client))};
}
