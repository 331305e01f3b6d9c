#include "standin/object/ObjectBytes.h"

#include "standin/object/Context.h"
#include "standin/object/ManagementObject.h"

namespace standin
{
std::vector<BYTE> BytesOf(IWbemClassObject* object)
{
    return TakeBytes(object);
}

std::vector<BYTE> BytesOf(IWbemContext* context)
{
    return TakeBytes(context);
}

ComPtr<IWbemClassObject> ObjectFrom(std::span<const BYTE> bytes)
{
    return bytes.empty() ? nullptr : CManagementObject::Decode(bytes, kMaxNesting);
}

ComPtr<IWbemContext> ContextFrom(std::span<const BYTE> bytes)
{
    return bytes.empty() ? nullptr : CContext::Decode(bytes);
}
} // namespace standin
