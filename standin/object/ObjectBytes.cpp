#include "standin/object/ObjectBytes.h"

#include "standin/object/CimType.h"
#include "standin/object/ClassObject.h"
#include "standin/object/Context.h"
#include "standin/object/Instance.h"

#include <algorithm>

namespace standin
{
namespace
{
constexpr uint32_t kMark = 0x314F575A; // "ZWO1"

enum EContents : uint8_t
{
    Instance = 1,
    Decorated = 2
};

// The definitions that came in last. Whoever enumerates gets a thousand instances with the same one, which
// takes far longer to decode than to compare.
class CRecentDefinitions
{
  public:
    ClassDefinition Find(std::span<const BYTE> bytes)
    {
        const CShared lock(m_lock);
        const auto same = [&](const CEntry& entry) { return std::ranges::equal(entry.Bytes, bytes); };
        const auto found = std::ranges::find_if(m_entries, same);
        return found == std::end(m_entries) ? nullptr : found->Definition;
    }
    void Add(std::span<const BYTE> bytes, ClassDefinition definition)
    {
        CEntry entry{{bytes.begin(), bytes.end()}, std::move(definition)};
        const CExclusive lock(m_lock);
        m_entries[m_next++ % std::size(m_entries)] = std::move(entry);
    }

  private:
    struct CEntry
    {
        std::vector<BYTE> Bytes;
        ClassDefinition Definition;
    };

    SRWLOCK m_lock = SRWLOCK_INIT;
    CEntry m_entries[16];
    size_t m_next = 0;
};

CRecentDefinitions& RecentDefinitions()
{
    // Never destroyed: objects may still come in while other statics go.
    static CRecentDefinitions& recent = *new CRecentDefinitions;
    return recent;
}

ClassDefinition SharedDefinition(std::span<const BYTE> bytes, int nesting)
{
    if (ClassDefinition known = RecentDefinitions().Find(bytes))
        return known;
    ClassDefinition definition = DecodeDefinition(bytes, nesting);
    RecentDefinitions().Add(bytes, definition);
    return definition;
}

std::vector<CCimValue> ReadValues(CByteReader& in, const CClassDefinition& definition)
{
    std::vector<CCimValue> values;
    values.reserve(definition.Properties().size() + 1);
    for (const CPropertyDefinition& property : definition.Properties())
    {
        values.push_back(in.Value());
        const VARTYPE type = values.back().vt;
        if (type != VT_EMPTY && type != VT_NULL && type != VariantTypeOf(property.Type))
            throw CBadBytes();
    }
    return values;
}
} // namespace

std::vector<BYTE> EncodeObject(const CObjectView& object, const std::vector<BYTE>& definitionBytes)
{
    std::vector<BYTE> bytes;
    bytes.reserve(definitionBytes.size() + 512);
    CByteWriter out(bytes);
    out.Number(kMark);
    out.Number(static_cast<uint8_t>((object.IsClass() ? 0 : Instance) | (object.Decoration ? Decorated : 0)));
    if (object.Decoration)
    {
        out.Text(object.Decoration->Server);
        out.Text(object.Decoration->Namespace);
    }
    out.Number(static_cast<uint32_t>(definitionBytes.size()));
    out.Raw(definitionBytes.data(), definitionBytes.size());
    if (!object.IsClass())
        for (size_t i = 0; i < object.Definition.Properties().size(); ++i)
            out.Value(object.Values[i]);
    return bytes;
}

ComPtr<IWbemClassObject> DecodeObject(std::span<const BYTE> bytes, int nesting)
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
    const uint32_t size = in.Count();
    const std::span<const BYTE> definitionBytes = in.Raw(size);
    ClassDefinition definition = SharedDefinition(definitionBytes, in.Nested());
    ComPtr<IWbemClassObject> object;
    if (contents & Instance)
    {
        std::vector<CCimValue> values = ReadValues(in, *definition);
        object = MakeCom<CInstance>(std::move(definition), std::move(values), std::move(decoration));
    }
    else
        object = MakeCom<CClassObject>(std::move(definition), std::move(decoration));
    if (!in.AtEnd())
        throw CBadBytes();
    return object;
}

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
    return bytes.empty() ? nullptr : DecodeObject(bytes, kMaxNesting);
}

ComPtr<IWbemContext> ContextFrom(std::span<const BYTE> bytes)
{
    return bytes.empty() ? nullptr : CContext::Decode(bytes);
}
} // namespace standin
