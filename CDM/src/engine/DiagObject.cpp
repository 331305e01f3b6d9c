#include "CDM/src/engine/DiagObject.h"

#include "CDM/src/ZebDebug.h"

CDiagObject::CDiagObject(BSTR key) : m_key(key)
{
    if (!key)
        ZebDebug().Write("CDiagObject::CDiagObject:Null Key Value!!");
}

CBstr CDiagObject::Key() const
{
    const CReadScope held(m_lock);
    return m_key;
}

void CDiagObject::SetKey(CBstr key)
{
    const CWriteScope held(m_lock);
    std::swap(m_key, key);
}
