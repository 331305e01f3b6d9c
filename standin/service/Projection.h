// What "SELECT a, b" leaves of an object.
#pragma once

#include "standin/service/InstanceSource.h"

#include <map>

namespace standin
{
class CProjection
{
  public:
    // An empty list leaves objects as they are.
    CProjection(const CInstanceSource& source, std::vector<std::wstring> properties)
        : m_source(source), m_properties(std::move(properties))
    {
    }

    // An instance of the object's class that has the selected properties only and, where the client wants its
    // objects locatable, the keys.
    HRESULT Apply(IWbemClassObject* object, ComPtr<IWbemClassObject>& projected);

  private:
    ClassDefinition Reduced(const std::wstring& className);

    const CInstanceSource& m_source;
    const std::vector<std::wstring> m_properties;
    std::map<std::wstring, ClassDefinition> m_reduced; // by class
};
} // namespace standin
