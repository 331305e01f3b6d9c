// How a handler fills an instance: a table of steps, taken in order up to the first that fails. Most steps
// put one property from the record that `Source` refers to; adding a property is adding a row.
#pragma once

#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebHelpers.h"
#include "CDM/src/classes/InstanceSender.h"
#include "Common/src/WomClassObject.h"

#include <span>

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
        if (FAILED(hr))
        {
            if (step.failure)
                ZebDebug().Write(step.failure, hr);
            return hr;
        }
    }
    return S_OK;
}

// Spawns an instance, takes the steps and indicates it. `spawnFailed` is a trace line.
template <class Source>
HRESULT SendInstance(Source source, const char* spawnFailed, std::span<const CInstanceStep<Source>> steps)
{
    HRESULT hr = source.sender.Spawn();
    if (FAILED(hr))
    {
        ZebDebug().Write(spawnFailed, hr);
        return hr;
    }
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
