#include "CDM/src/server/Server.h"

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, char*, int)
{
    return RunServer(instance);
}
