// The diagnostics manager of a provider object: knows every test, setting and result of every adapter, runs
// and stops tests, and keeps results across restarts. A process can have several; they share the result file.
// Any thread may call any operation at any time between Initialize and destruction; no request waits for
// another, except that one test runs once at a time. No operation throws. Keys are matched without regard to
// case; the caller keeps what it passes and owns what it gets.
#pragma once

#include "CDM/src/ZebHelpers.h"
#include "CDM/src/engine/DiagRecords.h"
#include "Common/src/com/Bstr.h"

#include <memory>
#include <windows.h>

class CVormAgentMgr;
class CWomClassObject;
class IRunEnvironment;
class IStoreFiles;
template <class T>
class CVormArray;

// What tests replace. A null member means the real thing; what is given must outlive the manager.
struct CEngineSeams
{
    IRunEnvironment* run = nullptr;
    IStoreFiles* store = nullptr;
};

class CDiagMgr
{
  public:
    explicit CDiagMgr(const CHostPaths& paths, const CEngineSeams& seams = {});
    // Ends runs that are still going on, then writes every result to the result store.
    virtual ~CDiagMgr();
    CDiagMgr(const CDiagMgr&) = delete;
    CDiagMgr& operator=(const CDiagMgr&) = delete;

    // Start-up: adapters and tests from the agent, stored results, the log's configuration. Once.
    virtual HRESULT Initialize(const CVormAgentMgr* agents);

    // All keys, in the order of their upper-cased text.
    virtual HRESULT EnumTests(CVormArray<BSTR>& keys);
    virtual HRESULT EnumSettings(CVormArray<BSTR>& keys);
    virtual HRESULT EnumResults(CVormArray<BSTR>& keys);

    // engine::NotFound for an unknown key. A test has a result once it has been run, or if one was stored.
    virtual HRESULT GetTestData(BSTR testKey, CTestData* data);
    virtual HRESULT GetSettingData(BSTR testKey, CSettingData* data);
    virtual HRESULT GetResultData(BSTR testKey, CResultData* data);
    virtual BOOL SettingExists(BSTR settingKey);
    virtual BOOL ResultExists(BSTR resultKey);

    // engine::AlreadyLocked / engine::NotLocked. One of two concurrent lockers wins.
    virtual HRESULT LockTest(BSTR testKey);
    virtual HRESULT UnlockTest(BSTR testKey);
    // Runs a test that the caller has locked, to its end. S_OK for a run that passed or was stopped, else the
    // failure. Both keys are upper-cased; `resultKey` comes back as the key under which the result is filed.
    // `mode` 1: a sender/responder test takes its parameters from the setting.
    virtual HRESULT RunTest(BSTR testKey, CBstr& resultKey, ULONG mode);
    // Asks the agent to stop a locked test; engine::Stopped for one that is not locked.
    virtual HRESULT StopTest(BSTR testKey);
    // Signals the stop event for the run that a test with an event is locked for; engine::Stopped for one
    // that is not locked. Needs no memory for a key as the manager gives it.
    virtual HRESULT SignalStop(BSTR testKey);

    // Copies the writable properties of `instance`, whose exceptions must be switched off, one by one; those
    // before the first that fails stay updated.
    virtual HRESULT UpdateSetting(BSTR settingKey, CWomClassObject& instance);
    // Removes a result from memory and from the result store.
    virtual HRESULT ClearResults(BSTR resultKey);
    // Appends one record to the result log.
    virtual HRESULT LogResults(BSTR resultKey);

  private:
    struct CState;
    std::shared_ptr<CState> m_state;
};
