// Builds and indicates the instances that one request asks for. The class definition is fetched once; texts
// and the computer's name are asked for by each instance, so that its trace shows where they come from. Lives
// on the request's thread.
#pragma once

#include "Common/src/WomClassObject.h"
#include "Common/src/WomContext.h"

#include <map>
#include <vector>

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
    // Sets a list of codes, as 32-bit integers. Lists repeat from instance to instance.
    HRESULT PutCodes(const wchar_t* property, const std::vector<USHORT>& codes);

  private:
    CWomContext& m_context;
    ComPtr<IWbemObjectSink> m_sink;
    CWomClassObject m_class;
    CWomClassObject m_instance;
    std::map<std::vector<USHORT>, CVariant> m_arrays;
};
