// The service's end of a pipe that a client has opened.
#pragma once

#include "standin/pipe/Pipe.h"
#include "standin/service/ServiceLife.h"

#include <memory>

namespace standin
{
class CService;

// Reads what the client wants, does it on threads of its own, and sends the answers; returns at once. `use`
// keeps the service up meanwhile. Throws std::bad_alloc.
void ServePipe(CService& service, CServiceLife::CUse use, std::unique_ptr<CPipe> pipe);
} // namespace standin
