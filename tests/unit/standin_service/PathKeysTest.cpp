// Object paths and the keys of their class, for a strict service and for one that takes the contract's paths.
#include "standin/service/PathKeys.h"
#include "tests/support/CaseName.h"
#include "tests/support/RegistryScope.h"
#include "tests/unit/standin_object/SampleClass.h"

using namespace standin;

namespace
{
// Two keys, and a property that is none; the other class has one key.
ClassDefinition Run()
{
    return sample::Class(L"Run", {sample::Property(L"Test", CIM_STRING, true),
                                  sample::Property(L"Adapter", CIM_STRING, true),
                                  sample::Property(L"Computer", CIM_STRING)});
}
ClassDefinition Test()
{
    return sample::Class(L"Test", {sample::Property(L"Name", CIM_STRING, true)});
}

CObjectPath Parsed(const wchar_t* text)
{
    const std::optional<CObjectPath> path = ParseObjectPath(text);
    EXPECT_TRUE(path);
    return path.value_or(CObjectPath());
}

ClassDefinition ClassOf(const CObjectPath& path)
{
    return path.ClassName == L"Test" ? Test() : Run();
}

void BeStrict(CRegistryScope& registry, bool strict)
{
    registry.SetNumber("SOFTWARE\\WMI stand-in", "Strict", strict);
}

struct KeysCase
{
    const char* name;
    const wchar_t* path;
    bool strictly;
    bool otherwise;
};

class PathKeys : public testing::TestWithParam<KeysCase>
{
};

TEST_P(PathKeys, AreThoseOfTheClass)
{
    CRegistryScope registry;
    const CObjectPath path = Parsed(GetParam().path);
    EXPECT_EQ(HasKeysOf(*ClassOf(path), path), GetParam().otherwise) << "without the setting";
    BeStrict(registry, true);
    EXPECT_EQ(HasKeysOf(*ClassOf(path), path), GetParam().strictly);
    BeStrict(registry, false);
    EXPECT_EQ(HasKeysOf(*ClassOf(path), path), GetParam().otherwise);
}
INSTANTIATE_TEST_SUITE_P(
    Paths, PathKeys,
    testing::Values(KeysCase{"All", L"Run.Test='1',Adapter='A'", true, true},
                    KeysCase{"InAnyOrderAndCase", L"Run.ADAPTER='A',test='1'", true, true},
                    KeysCase{"OnlyKey", L"Test.Name='1'", true, true},
                    KeysCase{"OnlyKeyWithoutName", L"Test='1'", true, true},
                    KeysCase{"PropertyThatIsNoKey", L"Run.Test='1',Adapter='A',Computer='PC'", false, true},
                    KeysCase{"NoProperty", L"Run.Test='1',Adapter='A',Colour='red'", false, false},
                    KeysCase{"OneMissing", L"Run.Test='1'", false, false},
                    KeysCase{"PropertyInsteadOfKey", L"Run.Test='1',Computer='PC'", false, false},
                    KeysCase{"Twice", L"Run.Test='1',Test='1',Adapter='A'", false, false},
                    KeysCase{"OneOfTwoWithoutName", L"Run='1'", false, false},
                    KeysCase{"Singleton", L"Test=@", false, false}),
    NameOf<KeysCase>);

struct SameCase
{
    const char* name;
    const wchar_t* one;
    const wchar_t* other;
    bool strictly;
    bool otherwise;
};

class PathsOf : public testing::TestWithParam<SameCase>
{
};

TEST_P(PathsOf, TheSameInstanceAreEqual)
{
    CRegistryScope registry;
    const CObjectPath one = Parsed(GetParam().one);
    const CObjectPath other = Parsed(GetParam().other);
    for (const bool strict : {false, true})
    {
        BeStrict(registry, strict);
        EXPECT_EQ(PathIdentity(ClassOf(one).get(), one) == PathIdentity(ClassOf(other).get(), other),
                  strict ? GetParam().strictly : GetParam().otherwise)
            << strict;
    }
}
INSTANTIATE_TEST_SUITE_P(
    Paths, PathsOf,
    testing::Values(
        SameCase{"InAnyOrderAndCase", L"Run.Test='a',Adapter='B'", L"RUN.adapter='b',TEST='A'", true, true},
        SameCase{"WithAndWithoutPlace", L"\\\\PC\\root\\cimv2:Test.Name='1'", L"Test.Name='1'", true, true},
        SameCase{"WithAndWithoutName", L"Test.Name='1'", L"Test='1'", true, true},
        SameCase{"OtherValue", L"Test.Name='1'", L"Test.Name='2'", false, false},
        SameCase{"OtherClass", L"Test.Name='1'", L"Run.Name='1'", false, false},
        SameCase{"SecondKeyDiffers", L"Run.Test='1',Adapter='A'", L"Run.Test='1',Adapter='B'", false, false},
        SameCase{"SecondKeyMissing", L"Run.Test='1',Adapter='A'", L"Run.Test='1'", false, false},
        SameCase{"MoreThanTheKeys", L"Run.Test='1',Adapter='A',Computer='PC'", L"Run.Test='1',Adapter='A'",
                 false, true},
        SameCase{"MoreThanTheKeysTwice", L"Run.Test='1',Adapter='A',Computer='PC'",
                 L"Run.Computer='pc',Test='1',Adapter='A'", true, true}),
    NameOf<SameCase>);

TEST(PathIdentity, OfAClassThatIsNotThereCountsAllKeys)
{
    EXPECT_EQ(PathIdentity(nullptr, Parsed(L"C.b='2',A='1'")),
              PathIdentity(nullptr, Parsed(L"c.a='1',B='2'")));
    EXPECT_NE(PathIdentity(nullptr, Parsed(L"C.b='2',A='1'")), PathIdentity(nullptr, Parsed(L"C.A='1'")));
}
} // namespace
