#include "standin/object/DefinitionBytes.h"

#include "Common/src/com/CriticalSection.h"
#include "standin/object/CimType.h"

#include <algorithm>

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
        WriteValue(out, qualifier.Value);
    }
}

// No class has more properties, methods or qualifiers of one element.
constexpr uint32_t kMaxElements = 1024;

// How many elements follow. More than a class can have would take for ever to look for doubles.
uint32_t ReadCount(CByteReader& in)
{
    const uint32_t count = in.Count();
    if (count > kMaxElements)
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
        qualifier.Value = ReadValue(in);
        qualifiers.Set(std::move(qualifier));
    }
    return qualifiers;
}

void Write(CByteWriter& out, const CPropertyDefinition& property)
{
    out.Text(property.Name);
    out.Number(static_cast<int32_t>(property.Type));
    WriteValue(out, property.Default);
    Write(out, property.Qualifiers);
    out.Number(static_cast<uint8_t>(property.Local));
}

CPropertyDefinition ReadProperty(CByteReader& in)
{
    CPropertyDefinition property;
    property.Name = in.Text();
    property.Type = in.Number<int32_t>();
    property.Default = ReadValue(in);
    property.Qualifiers = ReadQualifiers(in);
    property.Local = in.Number<uint8_t>() != 0;
    const VARTYPE stored = VariantTypeOf(property.Type);
    if (stored == VT_EMPTY || (property.Default.vt != VT_NULL && property.Default.vt != stored))
        throw CBadBytes();
    return property;
}

void Write(CByteWriter& out, const ClassDefinition& signature)
{
    if (signature)
        out.Block(*EncodeDefinition(*signature));
    else
        out.Block({});
}

ClassDefinition ReadSignature(CByteReader& in)
{
    const auto bytes = in.Block();
    return bytes.empty() ? nullptr : DecodeDefinition(bytes, in.Nested());
}

void Write(CByteWriter& out, const CMethodDefinition& method)
{
    out.Text(method.Name);
    Write(out, method.In);
    Write(out, method.Out);
    Write(out, method.Qualifiers);
    out.Number(static_cast<uint8_t>(method.Local));
}

CMethodDefinition ReadMethod(CByteReader& in)
{
    CMethodDefinition method;
    method.Name = in.Text();
    method.In = ReadSignature(in);
    method.Out = ReadSignature(in);
    method.Qualifiers = ReadQualifiers(in);
    method.Local = in.Number<uint8_t>() != 0;
    return method;
}

std::vector<BYTE> Encode(const CClassDefinition& definition)
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

ClassDefinition Decode(std::span<const BYTE> bytes, int nesting)
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

// The definitions that came in last.
class CRecentDefinitions
{
  public:
    ClassDefinition Find(std::span<const BYTE> bytes)
    {
        const CLockScope lock(m_lock);
        const auto same = [&](const CEntry& entry) { return std::ranges::equal(entry.Bytes, bytes); };
        const auto found = std::ranges::find_if(m_entries, same);
        return found == std::end(m_entries) ? nullptr : found->Definition;
    }
    void Add(std::span<const BYTE> bytes, ClassDefinition definition)
    {
        CEntry entry{{bytes.begin(), bytes.end()}, std::move(definition)};
        const CLockScope lock(m_lock);
        std::swap(m_entries[m_next++ % std::size(m_entries)], entry);
    }

  private:
    struct CEntry
    {
        std::vector<BYTE> Bytes;
        ClassDefinition Definition;
    };

    CCriticalSection m_lock;
    CEntry m_entries[16];
    size_t m_next = 0;
};

CRecentDefinitions& RecentDefinitions()
{
    // Never destroyed: objects may still come in while other statics go.
    static CRecentDefinitions& recent = *new CRecentDefinitions;
    return recent;
}
} // namespace

std::shared_ptr<const std::vector<BYTE>> EncodeDefinition(const CClassDefinition& definition)
{
    return definition.Encoded().Get(
        [&] { return std::make_shared<const std::vector<BYTE>>(Encode(definition)); });
}

ClassDefinition DecodeDefinition(std::span<const BYTE> bytes, int nesting)
{
    if (ClassDefinition known = RecentDefinitions().Find(bytes))
        return known;
    ClassDefinition definition = Decode(bytes, nesting);
    RecentDefinitions().Add(bytes, definition);
    return definition;
}
} // namespace standin
