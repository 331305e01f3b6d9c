// The service process's own COM registration.
#pragma once

namespace standin
{
bool RegisterService();
bool UnregisterService();
} // namespace standin
