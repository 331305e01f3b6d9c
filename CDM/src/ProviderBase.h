// What the provider object stands on: its lock on the server, and its two interfaces with every operation
// refused.
#pragma once

#include "Common/src/com/ComObject.h"
#include "Common/src/com/WmiStatus.h"

#include <utility>
#include <wbemprov.h>

// What keeps the provider's process alive. The server counts the locks; when the last one goes, it ends some
// seconds later. Any thread may lock and unlock.
class IServerLock
{
  public:
    virtual LONG Lock() noexcept = 0;
    virtual LONG Unlock() noexcept = 0;

  protected:
    ~IServerLock() = default;
};

// One lock, held from construction until Release or destruction, whichever comes first.
class CServerLockHold
{
  public:
    explicit CServerLockHold(IServerLock& server) noexcept : m_server(&server) { server.Lock(); }
    CServerLockHold(const CServerLockHold&) = delete;
    CServerLockHold& operator=(const CServerLockHold&) = delete;
    ~CServerLockHold() { Release(); }

    void Release() noexcept
    {
        if (IServerLock* server = std::exchange(m_server, nullptr))
            server->Unlock();
    }

  private:
    IServerLock* m_server;
};

// Refuses every operation of IWbemServices in one way and without a trace. The provider overrides those that
// it serves.
class CUnsupportedServices : public CComObject<IWbemProviderInit, IWbemServices>
{
  public:
    // clang-format off
    STDMETHODIMP OpenNamespace(const BSTR, long, IWbemContext*, IWbemServices**, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP CancelAsyncCall(IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP QueryObjectSink(long, IWbemObjectSink**) override { return NotSupported(); }
    STDMETHODIMP GetObject(const BSTR, long, IWbemContext*, IWbemClassObject**, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP PutClass(IWbemClassObject*, long, IWbemContext*, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP PutClassAsync(IWbemClassObject*, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP DeleteClass(const BSTR, long, IWbemContext*, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP DeleteClassAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP CreateClassEnum(const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return NotSupported(); }
    STDMETHODIMP CreateClassEnumAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP PutInstance(IWbemClassObject*, long, IWbemContext*, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP DeleteInstance(const BSTR, long, IWbemContext*, IWbemCallResult**) override { return NotSupported(); }
    STDMETHODIMP DeleteInstanceAsync(const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP CreateInstanceEnum(const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return NotSupported(); }
    STDMETHODIMP ExecQuery(const BSTR, const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return NotSupported(); }
    STDMETHODIMP ExecQueryAsync(const BSTR, const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP ExecNotificationQuery(const BSTR, const BSTR, long, IWbemContext*, IEnumWbemClassObject**) override { return NotSupported(); }
    STDMETHODIMP ExecNotificationQueryAsync(const BSTR, const BSTR, long, IWbemContext*, IWbemObjectSink*) override { return NotSupported(); }
    STDMETHODIMP ExecMethod(const BSTR, const BSTR, long, IWbemContext*, IWbemClassObject*, IWbemClassObject**, IWbemCallResult**) override { return NotSupported(); }
    // clang-format on

  private:
    static HRESULT NotSupported() noexcept { return wmi::NotSupported; }
};
