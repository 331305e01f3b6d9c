#include "standin/object/ObjectBytes.h"

#include "standin/object/Context.h"
#include "standin/object/ManagementObject.h"
#include "standin/object/StateBytes.h"

namespace standin
{
namespace
{
ComPtr<IWbemClassObject> Decode(std::span<const BYTE> bytes, int nesting)
{
    return MakeCom<CManagementObject>(DecodeState(bytes, nesting, Decode));
}
} // namespace

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
    return bytes.empty() ? nullptr : Decode(bytes, kMaxNesting);
}

ComPtr<IWbemContext> ContextFrom(std::span<const BYTE> bytes)
{
    return bytes.empty() ? nullptr : CContext::Decode(bytes);
}
} // namespace standin
