// How handlers make the instances that a request asks for: the sender spawns and indicates them, and a table
// of steps fills each, in order up to the first step that fails. Most steps put one property from the record
// that `Source` refers to; adding a property is adding a row.
#pragma once

#include "CDM/src/ZebHelpers.h"
#include "CDM/src/ZebTrace.h"
#include "Common/src/WomClassObject.h"
#include "Common/src/WomContext.h"

#include <map>
#include <span>
#include <vector>

// Lives on the request's thread. The class definition is fetched once; texts and the computer's name are
// asked for by each instance, so that its trace shows where they come from.
class CInstanceSender
{
  public:
    // Obtains the class definition; throws CWomProviderException if it cannot be had.
    CInstanceSender(CWomContext& context, const wchar_t* className, ComPtr<IWbemObjectSink> sink);

    // A new instance, in place of the one before.
    HRESULT Spawn() { return m_class.SpawnInstanceFromClass(m_instance); }
    // Failures of the instance are returned, not thrown: each handler has its own texts for them.
    CWomClassObject& Instance() noexcept { return m_instance; }
    HRESULT Indicate() { return m_instance.Indicate(m_sink); }

    CWomContext& Context() const noexcept { return m_context; }
    // Sets a list of codes, as 32-bit integers. Lists repeat from instance to instance.
    HRESULT PutCodes(const wchar_t* property, const std::vector<USHORT>& codes);

  private:
    CWomContext& m_context;
    ComPtr<IWbemObjectSink> m_sink;
    CWomClassObject m_class;
    CWomClassObject m_instance;
    std::map<std::vector<USHORT>, CVariant> m_arrays;
};

// A source has the members `record` and `sender`.
template <class Source>
struct CInstanceStep
{
    const wchar_t* property; // null for a step that only prepares the next ones
    HRESULT (*take)(CWomClassObject& instance, const wchar_t* property, Source& source);
    const char* failure; // the trace line; the HRESULT fills its "%x". Null for a step with lines of its own
};

template <class Source>
HRESULT TakeSteps(std::span<const CInstanceStep<Source>> steps, Source& source)
{
    for (const CInstanceStep<Source>& step : steps)
    {
        const HRESULT hr = step.take(source.sender.Instance(), step.property, source);
        if (step.failure ? Failed(hr, step.failure) : FAILED(hr))
            return hr;
    }
    return S_OK;
}

// Spawns an instance, takes the steps and indicates it. `spawnFailed` is a trace line.
template <class Source>
HRESULT SendInstance(Source source, const char* spawnFailed, std::span<const CInstanceStep<Source>> steps)
{
    HRESULT hr = source.sender.Spawn();
    if (Failed(hr, spawnFailed))
        return hr;
    hr = TakeSteps(steps, source);
    return FAILED(hr) ? hr : source.sender.Indicate();
}

// The kinds of steps that several handlers take.

template <auto Member, class Source>
HRESULT PutText(CWomClassObject& instance, const wchar_t* property, Source& source)
{
    return instance.SetProperty(property, source.record.*Member);
}

template <auto Member, class Source>
HRESULT PutFlag(CWomClassObject& instance, const wchar_t* property, Source& source)
{
    return instance.SetPropertyBool(property, source.record.*Member != 0);
}

template <auto Member, class Source>
HRESULT PutByte(CWomClassObject& instance, const wchar_t* property, Source& source)
{
    return instance.SetProperty(property, static_cast<unsigned char>(source.record.*Member));
}

template <const auto& Text, class Source>
HRESULT PutConstant(CWomClassObject& instance, const wchar_t* property, Source&)
{
    static const CBstr text(Text);
    return instance.SetProperty(property, text);
}

template <class Source>
HRESULT PutNull(CWomClassObject& instance, const wchar_t* property, Source&)
{
    return instance.SetPropertyNull(property);
}

template <class Source>
HRESULT PutComputerName(CWomClassObject& instance, const wchar_t* property, Source&)
{
    return instance.SetProperty(property, ComputerName());
}
