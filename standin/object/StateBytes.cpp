#include "standin/object/StateBytes.h"

#include "standin/object/ByValue.h"
#include "standin/object/CimType.h"
#include "standin/object/DefinitionBytes.h"

namespace standin
{
namespace
{
constexpr uint32_t kMark = 0x324F575A; // "ZWO2"

enum EContents : uint8_t
{
    Instance = 1,
    Decorated = 2
};

// The types of what was put; an embedded object is a block of its own.
CCimValue ReadPut(CByteReader& in, CIMTYPE type, DecodeEmbedded decodeEmbedded)
{
    if (type == CIM_OBJECT && in.Number<uint8_t>())
    {
        CVariant embedded;
        embedded.punkVal = decodeEmbedded(in.Block(), in.Nested()).Detach();
        embedded.vt = VT_UNKNOWN;
        return embedded;
    }
    CCimValue value = ReadValue(in);
    if (value.vt != VT_EMPTY && value.vt != VT_NULL &&
        (value.vt != VariantTypeOf(type) || type == CIM_OBJECT))
        throw CBadBytes();
    return value;
}

void WritePut(CByteWriter& out, CIMTYPE type, const VARIANT& value)
{
    if (type == CIM_OBJECT)
        out.Number(static_cast<uint8_t>(value.vt == VT_UNKNOWN));
    if (value.vt == VT_UNKNOWN)
        out.Block(TakeBytes(value.punkVal));
    else
        WriteValue(out, value);
}
} // namespace

std::vector<BYTE> EncodeState(const CObjectState& object)
{
    const auto definition = EncodeDefinition(*object.Definition);
    std::vector<BYTE> bytes;
    bytes.reserve(definition->size() + 512);
    CByteWriter out(bytes);
    out.Number(kMark);
    out.Number(static_cast<uint8_t>((object.IsClass ? 0 : Instance) | (object.Decoration ? Decorated : 0)));
    if (object.Decoration)
    {
        out.Text(object.Decoration->Server);
        out.Text(object.Decoration->Namespace);
    }
    out.Block(*definition);
    for (size_t i = 0; i < object.Values.size(); ++i)
        WritePut(out, object.Definition->Properties()[i].Type, object.Values[i]);
    return bytes;
}

CObjectState DecodeState(std::span<const BYTE> bytes, int nesting, DecodeEmbedded decodeEmbedded)
{
    CByteReader in(bytes, nesting);
    if (in.Number<uint32_t>() != kMark)
        throw CBadBytes();
    const auto contents = in.Number<uint8_t>();
    std::shared_ptr<const CDecoration> decoration;
    if (contents & Decorated)
    {
        std::wstring server = in.Text();
        decoration = std::make_shared<const CDecoration>(CDecoration{std::move(server), in.Text()});
    }
    const std::span<const BYTE> definition = in.Block();
    CObjectState object(DecodeDefinition(definition, in.Nested()), !(contents & Instance));
    object.Decoration = std::move(decoration);
    for (size_t i = 0; i < object.Values.size(); ++i)
        object.Values[i] = ReadPut(in, object.Definition->Properties()[i].Type, decodeEmbedded);
    if (!in.AtEnd())
        throw CBadBytes();
    return object;
}
} // namespace standin
