// The service process at work.
#pragma once

namespace standin
{
// Serves until no client is left and nothing has happened for the idle time. One process serves at a time: a
// second one ends at once. Returns the exit code.
int Serve();
} // namespace standin
