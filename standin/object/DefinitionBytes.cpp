#include "standin/object/CimType.h"
#include "standin/object/ObjectBytes.h"

namespace standin
{
namespace
{
void Write(CByteWriter& out, const CQualifiers& qualifiers)
{
    out.Number(static_cast<uint32_t>(qualifiers.All().size()));
    for (const CQualifier& qualifier : qualifiers.All())
    {
        out.Text(qualifier.Name);
        out.Number(static_cast<int32_t>(qualifier.Flavor));
        out.Value(qualifier.Value);
    }
}

// How many elements follow. More than a class can have would take for ever to look for doubles.
uint32_t ReadCount(CByteReader& in)
{
    const uint32_t count = in.Count();
    if (count > CClassDefinition::kMaxProperties)
        throw CBadBytes();
    return count;
}

CQualifiers ReadQualifiers(CByteReader& in)
{
    CQualifiers qualifiers;
    for (uint32_t left = ReadCount(in); left > 0; --left)
    {
        CQualifier qualifier;
        qualifier.Name = in.Text();
        qualifier.Flavor = in.Number<int32_t>();
        qualifier.Value = in.Value();
        qualifiers.Set(std::move(qualifier));
    }
    return qualifiers;
}

void Write(CByteWriter& out, const CPropertyDefinition& property)
{
    out.Text(property.Name);
    out.Number(static_cast<int32_t>(property.Type));
    out.Value(property.Default);
    Write(out, property.Qualifiers);
    out.Text(property.Origin);
    out.Number(static_cast<uint8_t>(property.Local));
}

CPropertyDefinition ReadProperty(CByteReader& in)
{
    CPropertyDefinition property;
    property.Name = in.Text();
    property.Type = in.Number<int32_t>();
    property.Default = in.Value();
    property.Qualifiers = ReadQualifiers(in);
    property.Origin = in.Text();
    property.Local = in.Number<uint8_t>() != 0;
    const VARTYPE stored = VariantTypeOf(property.Type);
    if (stored == VT_EMPTY || (property.Default.vt != VT_NULL && property.Default.vt != stored))
        throw CBadBytes();
    return property;
}

void Write(CByteWriter& out, const ClassDefinition& signature)
{
    if (!signature)
        return out.Number(uint32_t{0});
    const auto bytes = signature->Bytes();
    out.Number(static_cast<uint32_t>(bytes->size()));
    out.Raw(bytes->data(), bytes->size());
}

ClassDefinition ReadSignature(CByteReader& in)
{
    const uint32_t size = in.Count();
    return size == 0 ? nullptr : DecodeDefinition(in.Raw(size), in.Nested());
}

void Write(CByteWriter& out, const CMethodDefinition& method)
{
    out.Text(method.Name);
    Write(out, method.In);
    Write(out, method.Out);
    Write(out, method.Qualifiers);
    out.Text(method.Origin);
    out.Number(static_cast<uint8_t>(method.Local));
}

CMethodDefinition ReadMethod(CByteReader& in)
{
    CMethodDefinition method;
    method.Name = in.Text();
    method.In = ReadSignature(in);
    method.Out = ReadSignature(in);
    method.Qualifiers = ReadQualifiers(in);
    method.Origin = in.Text();
    method.Local = in.Number<uint8_t>() != 0;
    return method;
}
} // namespace

std::vector<BYTE> EncodeDefinition(const CClassDefinition& definition)
{
    std::vector<BYTE> bytes;
    CByteWriter out(bytes);
    out.Text(definition.Name);
    out.Number(static_cast<uint32_t>(definition.Derivation.size()));
    for (const std::wstring& name : definition.Derivation)
        out.Text(name);
    Write(out, definition.Qualifiers);
    out.Number(static_cast<uint32_t>(definition.Properties().size()));
    for (const CPropertyDefinition& property : definition.Properties())
        Write(out, property);
    out.Number(static_cast<uint32_t>(definition.Methods().size()));
    for (const CMethodDefinition& method : definition.Methods())
        Write(out, method);
    return bytes;
}

ClassDefinition DecodeDefinition(std::span<const BYTE> bytes, int nesting)
{
    CByteReader in(bytes, nesting);
    auto definition = std::make_shared<CClassDefinition>(in.Text());
    for (uint32_t left = in.Count(); left > 0; --left)
        definition->Derivation.push_back(in.Text());
    definition->Qualifiers = ReadQualifiers(in);
    const uint32_t properties = ReadCount(in);
    for (uint32_t i = 0; i < properties; ++i)
    {
        definition->SetProperty(ReadProperty(in));
        if (definition->Properties().size() != i + 1) // a name that was there before
            throw CBadBytes();
    }
    for (uint32_t left = ReadCount(in); left > 0; --left)
        definition->SetMethod(ReadMethod(in));
    if (!in.AtEnd())
        throw CBadBytes();
    return definition;
}
} // namespace standin
