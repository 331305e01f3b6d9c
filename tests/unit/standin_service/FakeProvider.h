// A provider in this process, and a pool that loads it.
#pragma once

#include "standin/proxy/UnsupportedServices.h"
#include "standin/service/ProviderPool.h"

#include <string>
#include <vector>

// Notes what it is told. It takes calls on and does not answer.
class CFakeProvider : public standin::CUnsupportedServices<>
{
  public:
    CFakeProvider() : Told(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

    STDMETHODIMP GetObjectAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override
    {
        Note("called");
        return wmi::NoError;
    }
    STDMETHODIMP CancelAsyncCall(IWbemObjectSink*) override
    {
        Note("cancelled");
        SetEvent(Told.Get());
        return wmi::NoError;
    }

    std::vector<std::string> Notes()
    {
        const std::lock_guard lock(m_mutex);
        return m_notes;
    }

    const CHandle Told; // set when it has been told to stop

  private:
    void Note(const char* what)
    {
        const std::lock_guard lock(m_mutex);
        m_notes.emplace_back(what);
    }

    std::mutex m_mutex;
    std::vector<std::string> m_notes;
};

// Loads a provider whose process is this one.
inline standin::CProviderPool::Loader LoaderOf(const ComPtr<CFakeProvider>& fake, int& loads)
{
    return [&fake, &loads](const standin::CProviderRegistration&, const std::wstring&,
                           standin::CProvider& provider)
    {
        ++loads;
        provider.Services = fake.Get();
        provider.Process.Reset(OpenProcess(SYNCHRONIZE, FALSE, GetCurrentProcessId()));
        return S_OK;
    };
}
