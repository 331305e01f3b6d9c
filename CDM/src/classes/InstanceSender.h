// Builds and indicates the instances that one request asks for. What is the same for all of them is fetched
// once: the class definition, the localised texts, the computer's name. Lives on the request's thread.
#pragma once

#include "Common/src/WomClassObject.h"
#include "Common/src/WomContext.h"

#include <map>
#include <utility>

class CInstanceSender
{
  public:
    // Obtains the class definition; throws CWomProviderException where it cannot be had.
    CInstanceSender(CWomContext& context, const wchar_t* className, ComPtr<IWbemObjectSink> sink);

    // A new instance, in place of the one before.
    HRESULT Spawn() { return m_class.SpawnInstanceFromClass(m_instance); }
    // Failures of the instance are returned, not thrown: each handler has its own texts for them.
    CWomClassObject& Instance() noexcept { return m_instance; }
    HRESULT Indicate() { return m_instance.Indicate(m_sink); }

    CWomContext& Context() const noexcept { return m_context; }
    const wchar_t* ComputerName();
    // A text in the caller's language; `text` is valid as long as the sender.
    HRESULT ResourceString(UINT id, const char* baseName, const wchar_t*& text);

  private:
    CWomContext& m_context;
    ComPtr<IWbemObjectSink> m_sink;
    CWomClassObject m_class;
    CWomClassObject m_instance;
    const wchar_t* m_computerName = nullptr;
    std::map<std::pair<UINT, const char*>, CBstr> m_texts; // base names are literals
};
