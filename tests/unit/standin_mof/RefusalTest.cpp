// Statements that the grammar takes and the repository refuses.
#include "tests/support/CaseName.h"
#include "tests/unit/standin_mof/RepositoryFixture.h"

using namespace standin;

namespace
{
struct RefusalCase
{
    const char* name;
    const char* text;
    const char* refusal;
};

class Refused : public Repository, public testing::WithParamInterface<RefusalCase>
{
};
} // namespace

TEST_P(Refused, TellsWhereAndWhy)
{
    Compile(kLamps);
    EXPECT_EQ(Refusal(GetParam().text), GetParam().refusal);
}

INSTANTIATE_TEST_SUITE_P(
    Statements, Refused,
    testing::Values(
        RefusalCase{"NoSuperclass", "class A : B {};",
                    "(1,11): the class \"B\" is not in the namespace \"root\\cimv2\""},
        RefusalCase{"Cycle", "class Device : Lamp {};", "(1,16): class \"Device\" would derive from itself"},
        RefusalCase{"OtherType", "class A : Lamp { string Watts; };",
                    "(1,25): the property \"Watts\" has another type in class \"Lamp\""},
        RefusalCase{"PropertyTwice", "class A { uint8 P; string p; };", "(1,27): \"p\" is there twice"},
        RefusalCase{"MethodTwice", "class A { void M(); void m(); };", "(1,26): \"m\" is there twice"},
        RefusalCase{"QualifierTwice", "[Foo, foo(2)] class A {};",
                    "(1,7): the qualifier \"foo\" is there twice"},
        RefusalCase{"SecondKey", "class A : Lamp { [Key] uint8 Id; };",
                    "(1,30): the key \"Id\" cannot be added: class \"Lamp\" has keys"},
        RefusalCase{"KeyTakenAway", "class A : Lamp { [Key(FALSE)] string Name; };",
                    "(1,38): the inherited qualifier \"Key\" cannot be changed"},
        RefusalCase{"OtherParameters", "class A : Lamp { uint32 Dim([In] uint8 Level); };",
                    "(1,25): the method \"Dim\" has other parameters in class \"Lamp\""},
        RefusalCase{"ParameterWithoutDirection", "class A { void M(uint8 P); };",
                    "(1,24): the parameter \"P\" is neither \"in\" nor \"out\""},
        RefusalCase{"DefaultOfOtherType", "class A { uint8 P = 300; };",
                    "(1,21): the value does not fit the type uint8"},
        RefusalCase{"DefaultThatIsNoDateTime", "class A { datetime D = \"20240101000000.000000-0\"; };",
                    "(1,24): the value does not fit the type datetime"},
        RefusalCase{"ValueThatIsNoDateTime",
                    "class A { [Key] datetime D; }; instance of A { D = \"20240101\"; };",
                    "(1,52): the value does not fit the type datetime"},
        RefusalCase{"TextForNumber", "class A { uint8 P[] = {1, \"x\"}; };",
                    "(1,23): the value does not fit the type uint8[]"},
        RefusalCase{"ReferenceToNumber", "class A { uint8 ref P; };",
                    "(1,11): a reference needs the name of a class"},
        RefusalCase{"UnknownFlavor", "[Foo: Sideways] class A {};", "(1,7): unknown flavor \"Sideways\""},
        RefusalCase{"QualifierOfNothing", "[Foo(NULL)] class A {};",
                    "(1,6): a qualifier cannot have this value"},
        RefusalCase{"ClassThatIsThere", "#pragma classflags(\"createonly\") class New {}; class Lamp {};",
                    "(1,54): the class \"Lamp\" is there already"},
        RefusalCase{"UnknownClassFlags", "#pragma classflags(\"updateonly\")",
                    "(1,20): unknown class flags \"updateonly\""},
        RefusalCase{"InstanceOfUnknown", "instance of B {};",
                    "(1,13): the class \"B\" is not in the namespace \"root\\cimv2\""},
        RefusalCase{"InstanceOfAbstract", "instance of Device { Name = \"x\"; };",
                    "(1,13): the class \"Device\" is abstract"},
        RefusalCase{"UnknownProperty", "instance of Lamp { Name = \"x\"; Size = 1; };",
                    "(1,32): class \"Lamp\" has no property \"Size\""},
        RefusalCase{"NoKey", "instance of Lamp { Watts = 1; };",
                    "(1,13): a key of the instance has no value"},
        RefusalCase{"NoSuchAlias", "instance of Lamp { Name = $N; };",
                    "(1,28): no instance has the alias $N"},
        RefusalCase{"NoNamespace", "#pragma namespace(\"root\\\\no\")",
                    "(1,19): there is no namespace \"root\\no\""},
        RefusalCase{"UnknownDirective", "#pragma once", "(1,9): unknown directive #pragma once"}),
    NameOf<RefusalCase>);
