#include "standin/service/Service.h"

#include "standin/service/ProviderNamespace.h"

namespace standin
{
namespace
{
std::wstring ThisComputer()
{
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    return GetComputerNameW(name, &size) ? std::wstring(name, size) : std::wstring(L".");
}

std::wstring NewId()
{
    LARGE_INTEGER now = {};
    QueryPerformanceCounter(&now);
    return std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(now.QuadPart);
}
} // namespace

CService::CService()
    : m_server(ThisComputer()), m_id(NewId()), m_repository(m_server),
      m_providers(
          [this](const CProviderRegistration& registration, const std::wstring& nameSpace,
                 CProvider& provider)
          {
              return LoadProvider(registration, nameSpace,
                                  MakeProviderNamespace(m_repository, nameSpace).Get(), provider);
          })
{
}
} // namespace standin
