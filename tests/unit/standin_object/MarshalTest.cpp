// Objects and contexts that travel by value, and bytes that are not what they should be.
#include "Common/src/com/WmiStatus.h"
#include "standin/object/ByValue.h"
#include "standin/object/DefinitionBytes.h"
#include "standin/object/ObjectBytes.h"
#include "standin/object/StandinIds.h"
#include "tests/unit/standin_object/SampleClass.h"

#include <objbase.h>
#include <random>
#include <thread>

using namespace standin;
using sample::PutText;
using sample::Text;

namespace
{
ComPtr<IStream> NewStream()
{
    ComPtr<IStream> stream;
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    return stream;
}

void Rewind(IStream& stream)
{
    stream.Seek({}, STREAM_SEEK_SET, nullptr);
}

template <class Interface>
ComPtr<Interface> Travel(Interface& object)
{
    const auto stream = NewStream();
    EXPECT_EQ(CoMarshalInterface(stream.Get(), __uuidof(Interface), &object, MSHCTX_LOCAL, nullptr,
                                 MSHLFLAGS_NORMAL),
              S_OK);
    Rewind(*stream);
    ComPtr<Interface> arrived;
    EXPECT_EQ(CoUnmarshalInterface(stream.Get(), __uuidof(Interface), arrived.PutVoid()), S_OK);
    return arrived;
}

ComPtr<IWbemClassObject> FullLamp()
{
    const auto lamp = MakeInstance(sample::Lamp());
    PutText(*lamp, L"Name", L"desk");
    sample::PutLong(*lamp, L"Watts", 40);
    CVariant lit = CVariant::FromBool(true);
    lamp->Put(L"Lit", 0, &lit, 0);
    CVariant colours = CVariant::FromArray(SafeArrayCreateVector(VT_I4, 0, 3), VT_I4);
    CSafeArrayView<LONG>(colours.parray, VT_I4).Items()[1] = 7;
    lamp->Put(L"Colours", 0, &colours, 0);
    lamp->Put(L"Status", 0, nullptr, 0);
    const auto inner = MakeInstance(sample::Device());
    PutText(*inner, L"Name", L"bulb");
    CVariant embedded;
    embedded.vt = VT_UNKNOWN;
    embedded.punkVal = inner.Copy();
    lamp->Put(L"Inner", 0, &embedded, 0);
    return lamp;
}

std::vector<BYTE> MarshalledBytes(IUnknown& object)
{
    ComPtr<IMarshal> marshal;
    object.QueryInterface(IID_IMarshal, marshal.PutVoid());
    const auto stream = NewStream();
    marshal->MarshalInterface(stream.Get(), IID_IUnknown, nullptr, MSHCTX_LOCAL, nullptr, 0);
    Rewind(*stream);
    std::vector<BYTE> bytes;
    EXPECT_EQ(ReadCounted(stream.Get(), bytes), S_OK);
    return bytes;
}

// Unmarshals the way COM does, without COM around it.
HRESULT Unmarshal(REFCLSID clsid, const std::vector<BYTE>& raw, REFIID riid, void** out)
{
    ComPtr<IClassFactory> factory;
    ComPtr<IMarshal> marshal;
    EXPECT_EQ(GetUnmarshalClassObject(clsid, IID_IClassFactory, factory.PutVoid()), S_OK);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IMarshal, marshal.PutVoid()), S_OK);
    const auto stream = NewStream();
    stream->Write(raw.data(), static_cast<ULONG>(raw.size()), nullptr);
    Rewind(*stream);
    return marshal->UnmarshalInterface(stream.Get(), riid, out);
}

std::vector<BYTE> Counted(const std::vector<BYTE>& bytes)
{
    std::vector<BYTE> raw;
    CByteWriter out(raw);
    out.Number(static_cast<uint32_t>(bytes.size()));
    out.Raw(bytes.data(), bytes.size());
    return raw;
}

HRESULT UnmarshalObject(const std::vector<BYTE>& bytes)
{
    ComPtr<IWbemClassObject> object;
    return Unmarshal(kObjectUnmarshaler, Counted(bytes), IID_IWbemClassObject, object.PutVoid());
}

const HRESULT kBad = static_cast<HRESULT>(WBEM_E_INVALID_STREAM);

class Marshal : public testing::Test
{
  protected:
    CUnmarshalRegistration m_registration;
};
} // namespace

TEST_F(Marshal, AnInstanceArrivesAsItWas)
{
    const auto lamp = FullLamp();
    Decorate(lamp.Get(), L"PC", L"root\\cimv2");
    const auto arrived = Travel(*lamp.Get());
    EXPECT_NE(arrived.Get(), lamp.Get());
    EXPECT_EQ(lamp->CompareTo(0, arrived.Get()), WBEM_S_SAME);
    EXPECT_EQ(Text(*arrived, L"__PATH"), L"\\\\PC\\root\\cimv2:Lamp.Name=\"desk\"");
    EXPECT_EQ(Text(*arrived, L"Status"), L"<null>");
    PutText(*arrived, L"Name", L"other");
    EXPECT_EQ(Text(*lamp, L"Name"), L"desk");
    EXPECT_EQ(sample::PutLong(*arrived, L"Watts", 70000), wmi::TypeMismatch);
}

TEST_F(Marshal, AClassArrivesWithMethodsAndQualifiers)
{
    const auto lamp = MakeClassObject(sample::Lamp());
    const auto arrived = Travel(*lamp.Get());
    EXPECT_EQ(lamp->CompareTo(0, arrived.Get()), WBEM_S_SAME);
    ComPtr<IWbemClassObject> in;
    ComPtr<IWbemClassObject> out;
    ASSERT_EQ(arrived->GetMethod(L"Reset", 0, in.Put(), out.Put()), S_OK);
    EXPECT_EQ(sample::PutLong(*in, L"Mode", 1), S_OK);
    EXPECT_EQ(Text(*arrived, L"__SUPERCLASS"), L"Device");
    ComPtr<IWbemQualifierSet> qualifiers;
    ASSERT_EQ(arrived->GetPropertyQualifierSet(L"Name", qualifiers.Put()), S_OK);
    EXPECT_EQ(qualifiers->Get(L"down", 0, nullptr, nullptr), S_OK);
}

TEST_F(Marshal, AContextArrivesWithItsValues)
{
    const auto context = MakeContext();
    CVariant value = CVariant::FromText(L"ms_407");
    context->SetValue(L"LocaleID", 0, &value);
    const auto arrived = Travel(*context.Get());
    CVariant read;
    ASSERT_EQ(arrived->GetValue(L"LocaleID", 0, &read), S_OK);
    EXPECT_STREQ(read.bstrVal, L"ms_407");
}

TEST_F(Marshal, ReleasingMarshalledDataConsumesIt)
{
    const auto stream = NewStream();
    const auto lamp = FullLamp();
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(
            CoMarshalInterface(stream.Get(), IID_IWbemClassObject, lamp.Get(), MSHCTX_LOCAL, nullptr, 0),
            S_OK);
    Rewind(*stream);
    EXPECT_EQ(CoReleaseMarshalData(stream.Get()), S_OK);
    ComPtr<IWbemClassObject> second;
    EXPECT_EQ(CoUnmarshalInterface(stream.Get(), IID_IWbemClassObject, second.PutVoid()), S_OK);
}

TEST_F(Marshal, TheSizeThatIsAskedForIsEnough)
{
    const auto lamp = FullLamp();
    ComPtr<IMarshal> marshal;
    ASSERT_EQ(lamp.As(marshal), S_OK);
    DWORD size = 0;
    EXPECT_EQ(marshal->GetMarshalSizeMax(IID_IWbemClassObject, lamp.Get(), MSHCTX_LOCAL, nullptr, 0, &size),
              S_OK);
    EXPECT_EQ(size, MarshalledBytes(*lamp).size() + sizeof(uint32_t));
}

TEST_F(Marshal, TheSameDefinitionIsDecodedOnce)
{
    const auto bytes = EncodeDefinition(*sample::Lamp());
    const ClassDefinition first = DecodeDefinition(*bytes, kMaxNesting);
    EXPECT_EQ(first, DecodeDefinition(*bytes, kMaxNesting));
    EXPECT_EQ(*EncodeDefinition(*first), *bytes);
}

TEST_F(Marshal, BytesGoWithoutAStream)
{
    const auto lamp = FullLamp();
    EXPECT_EQ(Text(*ObjectFrom(BytesOf(lamp.Get())), L"__RELPATH"), L"Lamp.Name=\"desk\"");
    const auto context = MakeContext();
    CVariant value = CVariant::FromText(L"ms_407");
    context->SetValue(L"LocaleID", 0, &value);
    CVariant read;
    ASSERT_EQ(ContextFrom(BytesOf(context.Get()))->GetValue(L"LocaleID", 0, &read), S_OK);
    EXPECT_STREQ(read.bstrVal, L"ms_407");
    EXPECT_FALSE(ObjectFrom(BytesOf(static_cast<IWbemClassObject*>(nullptr))));
    EXPECT_FALSE(ContextFrom(BytesOf(static_cast<IWbemContext*>(nullptr))));
    EXPECT_THROW(ObjectFrom(BytesOf(context.Get())), CBadBytes);
    EXPECT_THROW(ContextFrom(BytesOf(lamp.Get())), CBadBytes);
}

// Bytes that are not what they should be

TEST_F(Marshal, EveryTruncationIsRefused)
{
    const std::vector<BYTE> bytes = MarshalledBytes(*FullLamp());
    const long before = g_liveComObjects;
    for (size_t length = 0; length < bytes.size(); ++length)
        ASSERT_EQ(UnmarshalObject({bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(length)}), kBad)
            << length;
    EXPECT_EQ(UnmarshalObject(bytes), S_OK);
    EXPECT_EQ(g_liveComObjects, before);
}

TEST_F(Marshal, TrailingBytesAreRefused)
{
    std::vector<BYTE> bytes = MarshalledBytes(*FullLamp());
    bytes.push_back(0);
    EXPECT_EQ(UnmarshalObject(bytes), kBad);
}

TEST_F(Marshal, AStreamShorterThanItsSizeIsRefused)
{
    std::vector<BYTE> raw = Counted(MarshalledBytes(*FullLamp()));
    raw.pop_back();
    ComPtr<IWbemClassObject> object;
    EXPECT_EQ(Unmarshal(kObjectUnmarshaler, raw, IID_IWbemClassObject, object.PutVoid()), kBad);
    const std::vector<BYTE> huge{0xFF, 0xFF, 0xFF, 0xFF, 1};
    EXPECT_EQ(Unmarshal(kObjectUnmarshaler, huge, IID_IWbemClassObject, object.PutVoid()), kBad);
    EXPECT_EQ(Unmarshal(kObjectUnmarshaler, {}, IID_IWbemClassObject, object.PutVoid()), kBad);
}

// Any byte may be anything: the object arrives changed or not at all, and everything that can be read of it
// can be read.
TEST_F(Marshal, CorruptedBytesDoNoHarm)
{
    const std::vector<BYTE> bytes = MarshalledBytes(*FullLamp());
    std::mt19937 random(20240229);
    size_t refused = 0;
    for (size_t at = 0; at < bytes.size(); ++at)
        for (const BYTE value : {BYTE{0}, BYTE{1}, BYTE{0x7F}, BYTE{0xFF}, static_cast<BYTE>(random())})
        {
            std::vector<BYTE> bad = bytes;
            bad[at] = value;
            ComPtr<IWbemClassObject> object;
            const HRESULT hr =
                Unmarshal(kObjectUnmarshaler, Counted(bad), IID_IWbemClassObject, object.PutVoid());
            ASSERT_TRUE(hr == S_OK || hr == kBad) << at << " " << hr;
            if (hr != S_OK)
            {
                ++refused;
                continue;
            }
            object->BeginEnumeration(0);
            CBstr name;
            CVariant read;
            while (object->Next(0, name.Put(), read.Put(), nullptr, nullptr) == S_OK)
                ;
            object->BeginMethodEnumeration(0);
            while (object->NextMethod(0, name.Put(), nullptr, nullptr) == S_OK)
                ;
        }
    EXPECT_GT(refused, bytes.size());
}

TEST_F(Marshal, RandomBytesAreRefused)
{
    std::mt19937 random(7);
    for (int i = 0; i < 2000; ++i)
    {
        std::vector<BYTE> bytes(random() % 200);
        for (BYTE& byte : bytes)
            byte = static_cast<BYTE>(random());
        if (bytes.size() > 4)
            memcpy(bytes.data(), "ZWO2", 4);
        const HRESULT hr = UnmarshalObject(bytes);
        ASSERT_EQ(hr, kBad);
    }
}

TEST_F(Marshal, NestingHasAnEnd)
{
    ComPtr<IWbemClassObject> outer = MakeInstance(sample::Lamp());
    for (int i = 0; i < 2 * kMaxNesting; ++i)
    {
        CVariant embedded;
        embedded.vt = VT_UNKNOWN;
        embedded.punkVal = outer.Detach();
        outer = MakeInstance(sample::Lamp());
        ASSERT_EQ(outer->Put(L"Inner", 0, &embedded, 0), S_OK);
    }
    EXPECT_EQ(UnmarshalObject(MarshalledBytes(*outer)), kBad);
}

TEST_F(Marshal, ContextBytesAreCheckedToo)
{
    const auto context = MakeContext();
    CVariant value = CVariant::FromText(L"ms_407");
    context->SetValue(L"LocaleID", 0, &value);
    const std::vector<BYTE> bytes = MarshalledBytes(*context);
    for (size_t length = 0; length < bytes.size(); ++length)
    {
        ComPtr<IWbemContext> arrived;
        const std::vector<BYTE> cut(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(length));
        ASSERT_EQ(Unmarshal(kContextUnmarshaler, Counted(cut), IID_IWbemContext, arrived.PutVoid()), kBad);
    }
    EXPECT_EQ(UnmarshalObject(bytes), kBad); // a context is no object
}

TEST_F(Marshal, ClassObjectsAnswerForTheirClassesOnly)
{
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(GetUnmarshalClassObject(CLSID_WbemLocator, IID_IClassFactory, factory.PutVoid()),
              CLASS_E_CLASSNOTAVAILABLE);
    ASSERT_EQ(GetUnmarshalClassObject(CLSID_WbemContext, IID_IClassFactory, factory.PutVoid()), S_OK);
    ComPtr<IWbemContext> context;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IWbemContext, context.PutVoid()), S_OK);
    ComPtr<IUnknown> aggregated;
    EXPECT_EQ(factory->CreateInstance(context.Get(), IID_IUnknown, aggregated.PutVoid()),
              CLASS_E_NOAGGREGATION);
}

// One object under many threads: no value is ever half of one and half of another.
TEST_F(Marshal, ManyThreadsUseOneObject)
{
    const auto lamp = FullLamp();
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t)
        threads.emplace_back(
            [&, t]
            {
                CoInitializeEx(nullptr, COINIT_MULTITHREADED);
                const std::wstring own(static_cast<size_t>(10 + t), static_cast<wchar_t>(L'a' + t));
                for (int i = 0; i < 500; ++i)
                {
                    PutText(*lamp, L"Name", own.c_str());
                    const auto arrived = Travel(*lamp.Get());
                    const std::wstring name = Text(*arrived, L"Name");
                    if (name != L"desk" && name != std::wstring(name.size(), name.empty() ? L'?' : name[0]))
                        ++wrong;
                }
                CoUninitialize();
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}
