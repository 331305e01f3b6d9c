// The one way in which the provider touches a management object: a class definition or an instance, with the
// context of the request that it belongs to. One wrapper is used by one thread at a time.
//
// Failures: as the wrapper's switch says, every operation either throws CWomProviderException, or traces the
// failure and returns its HRESULT. Success is S_OK. std::bad_alloc can leave any operation.
#pragma once

#include "Common/src/WomContext.h"
#include "Common/src/com/Bstr.h"
#include "Common/src/com/ComPtr.h"
#include "Common/src/com/CriticalSection.h"
#include "Common/src/com/Variant.h"

#include <atomic>
#include <string>
#include <vector>
#include <wbemcli.h>

class CWomClassObject
{
  public:
    // Born with one reference, which is the maker's. `context` must outlive the wrapper and is never null.
    explicit CWomClassObject(CWomContext* context) noexcept;
    CWomClassObject(const CWomClassObject&) = delete;
    CWomClassObject& operator=(const CWomClassObject&) = delete;
    virtual ~CWomClassObject() = default;

    ULONG AddRef() noexcept { return ++m_references; }
    ULONG Release() noexcept;

    // The switch, on at birth: throw, or trace and return.
    void SetThrowing(bool on) noexcept { m_throwing = on; }
    // Holds `object` (null empties the wrapper) with a reference of its own, in place of what was held.
    void Wrap(IWbemClassObject* object) noexcept { m_object = ComPtr<IWbemClassObject>(object); }
    // What is held; null when nothing is. The reference stays the wrapper's.
    IWbemClassObject* Object() const noexcept { return m_object.Get(); }

    // Holds the definition of a class of the context's name space, in the caller's locale.
    HRESULT CreateClass(const wchar_t* className);
    // Makes `target` hold a new instance of the class held here; on failure it keeps what it holds.
    HRESULT SpawnInstanceFromClass(CWomClassObject& target);
    // Holds a new instance of the named class.
    HRESULT CreateInstance(const wchar_t* className);
    // Makes `target` hold the out-parameters object of a method of the class held here (nothing, if the
    // method has none).
    HRESULT GetMethodOutput(const wchar_t* method, CWomClassObject& target);
    // Sends the object held here to the sink, then dumps it to the trace.
    HRESULT Indicate(const ComPtr<IWbemObjectSink>& sink);
    // Dumps every property to the trace; does nothing unless the debug level is exactly 2.
    void DebugOutput();

    HRESULT SetProperty(const wchar_t* name, const wchar_t* value);
    // Without a copy on the way.
    HRESULT SetProperty(const wchar_t* name, const CBstr& value);
    HRESULT SetProperty(const wchar_t* name, long value);
    HRESULT SetProperty(const wchar_t* name, const std::vector<CBstr>& values);
    HRESULT SetProperty(const wchar_t* name, const std::vector<long>& values);
    // The same in two steps, for an array that many instances get: made once, then set in each.
    HRESULT MakeArray(const wchar_t* name, const std::vector<long>& values, CVariant& array);
    HRESULT SetPropertyArray(const wchar_t* name, const CVariant& array);
    // Travels as a 32-bit integer, as 16-bit properties do.
    HRESULT SetProperty(const wchar_t* name, unsigned short value);
    HRESULT SetProperty(const wchar_t* name, unsigned char value);
    HRESULT SetPropertyBool(const wchar_t* name, BOOL value);
    HRESULT SetPropertyNull(const wchar_t* name);

    // A null value leaves `value` untouched and sets `*isNull`. A property of another type is a failure.
    HRESULT GetProperty(const wchar_t* name, CBstr& value, bool* isNull = nullptr, CIMTYPE* type = nullptr);
    HRESULT GetProperty(const wchar_t* name, DWORD& value, bool* isNull = nullptr, CIMTYPE* type = nullptr);
    HRESULT GetProperty(const wchar_t* name, BYTE& value, bool* isNull = nullptr, CIMTYPE* type = nullptr);
    // Gives the stored value, which is -1 for true.
    HRESULT GetPropertyBool(const wchar_t* name, BOOL& value, bool* isNull = nullptr,
                            CIMTYPE* type = nullptr);

  private:
    // The source lines by which support tells the failing operations apart: fixed numbers, so that they mean
    // the same in every version.
    struct Lines
    {
        long noObject;
        long call;
        long type = 0;
        long arrayCreate = 0;
        long arrayElement = 0;
    };
    static const Lines kLongArrayLines;

    HRESULT Raise(DWORD statusCode, const wchar_t* parameterInfo, HRESULT requestResult, long line,
                  const char* messageText) const;
    HRESULT RaiseMember(DWORD statusCode, const wchar_t* member, HRESULT requestResult, long line) const;
    HRESULT CheckObject(const wchar_t* member, long line) const;
    std::wstring Describe(const wchar_t* member) const;
    void Reimpersonate() const noexcept;

    HRESULT Put(const wchar_t* name, const VARIANT& value, const Lines& lines);
    template <class Item>
    HRESULT MakeArray(const wchar_t* name, const std::vector<Item>& values, VARTYPE element,
                      const Lines& lines, CVariant& array);
    HRESULT Get(const wchar_t* name, VARTYPE expected, CVariant& value, bool* isNull, CIMTYPE* type,
                const Lines& lines);

    HRESULT DumpProperties() const;
    HRESULT DumpProperty(const CBstr& name) const;
    void DumpEmbedded(IUnknown* object) const;
    HRESULT RaiseDump(const char* step, HRESULT hr, long line) const;

    std::atomic<ULONG> m_references{1};
    CWomSecurity m_security;
    ComPtr<IWbemClassObject> m_object;
    CWomContext* m_context;
    CCriticalSection m_section;
    bool m_throwing = true;
};
