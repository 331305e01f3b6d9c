#include "standin/mof/MofCompiler.h"

#include "Common/src/com/Text.h"
#include "standin/mof/ClassBuilder.h"
#include "standin/object/Objects.h"

#include <algorithm>

namespace standin
{
namespace
{
std::string Quoted(const std::wstring& name)
{
    return '"' + Utf8Text(name) + '"';
}

// The namespace of a language holds only what is amended: classes need no superclass there.
bool IsLanguage(const std::wstring& nameSpace)
{
    return FoldName(nameSpace.substr(nameSpace.rfind(L'\\') + 1)).starts_with(L"ms_");
}

const CMofValue& ArgumentOf(const CMofPragma& pragma)
{
    if (pragma.Arguments.empty())
        throw CMofProblem{pragma.Name.Place, "#pragma " + Utf8Text(pragma.Name.Text) + " needs an argument"};
    return pragma.Arguments.front();
}

// Deletion of what is not there is an error unless "nofail" says otherwise.
bool MayFail(const CMofPragma& pragma)
{
    return pragma.Arguments.size() > 1 && EqualNoCaseAscii(pragma.Arguments[1].Characters, L"nofail");
}
} // namespace

void CMofCompiler::Run(const std::vector<CMofStatement>& statements)
{
    for (const CMofStatement& statement : statements)
        std::visit([this](const auto& s) { Carry(s); }, statement);
}

CNamespace& CMofCompiler::Current()
{
    return *m_state.Find(m_namespace);
}

ClassDefinition CMofCompiler::BaseOf(const CMofClass& declaration)
{
    if (!declaration.Superclass)
        return nullptr;
    const CMofName& name = *declaration.Superclass;
    ClassDefinition base = m_state.FindClass(Current(), name.Text);
    if (!base && !IsLanguage(m_namespace))
        throw CMofProblem{name.Place, "the superclass " + Quoted(name.Text) + " is not in the namespace " +
                                          Quoted(m_namespace)};
    if (base && base->InheritsFrom(declaration.Name.Text))
        throw CMofProblem{name.Place, "class " + Quoted(declaration.Name.Text) + " would derive from itself"};
    return base;
}

void CMofCompiler::Carry(const CMofClass& declaration)
{
    const ClassDefinition base = BaseOf(declaration);
    Current().Classes[FoldName(declaration.Name.Text)] = {std::make_shared<const CMofClass>(declaration),
                                                          BuildClass(declaration, base.get())};
    RebuildDerived(declaration.Name);
}

void CMofCompiler::RebuildDerived(const CMofName& name)
{
    std::vector<CStoredClass*> derived;
    for (auto& [key, stored] : Current().Classes)
        if (stored.Definition->InheritsFrom(name.Text) &&
            !EqualNoCaseAscii(stored.Definition->Name, name.Text))
            derived.push_back(&stored);
    std::ranges::sort(derived, {}, [](const CStoredClass* c) { return c->Definition->Derivation.size(); });
    for (CStoredClass* stored : derived)
        try
        {
            const ClassDefinition base = BaseOf(*stored->Declaration);
            stored->Definition = BuildClass(*stored->Declaration, base.get());
        }
        catch (const CMofProblem& problem)
        {
            // Its place is one in the text that declared the derived class.
            throw CMofProblem{name.Place, "class " + Quoted(stored->Declaration->Name.Text) +
                                              " would no longer fit: " + problem.Reason};
        }
}

void CMofCompiler::Carry(const CMofInstance& instance)
{
    const ClassDefinition definition = m_state.FindClass(Current(), instance.Class.Text);
    if (!definition)
        throw CMofProblem{instance.Class.Place, "the class " + Quoted(instance.Class.Text) +
                                                    " is not in the namespace " + Quoted(m_namespace)};
    if (definition->Qualifiers.IsTrue(L"abstract"))
        throw CMofProblem{instance.Class.Place, "the class " + Quoted(instance.Class.Text) + " is abstract"};
    const ComPtr<IWbemClassObject> object = MakeInstance(definition);
    for (const CMofAssignment& assignment : instance.Assignments)
    {
        const CPropertyDefinition* property = definition->FindProperty(assignment.Name.Text);
        if (!property)
            throw CMofProblem{assignment.Name.Place, "class " + Quoted(definition->Name) +
                                                         " has no property " + Quoted(assignment.Name.Text)};
        CCimValue value = ToCimValue(assignment.Value, property->Type, m_aliases);
        if (FAILED(object->Put(property->Name.c_str(), 0, &value, CIM_EMPTY)))
            throw std::bad_alloc();
    }
    CVariant path;
    if (FAILED(object->Get(L"__RELPATH", 0, &path, nullptr, nullptr)) || path.vt != VT_BSTR)
        throw CMofProblem{instance.Class.Place, "a key of the instance has no value"};
    if (instance.Alias)
        m_aliases[FoldName(instance.Alias->Text)] = path.bstrVal;
    if (EqualNoCaseAscii(definition->Name, L"__NAMESPACE"))
    {
        CVariant name;
        object->Get(L"Name", 0, &name, nullptr, nullptr);
        m_state.CreateNamespace(m_namespace + L'\\' + name.bstrVal);
    }
    else
        Current().Instances[FoldName(path.bstrVal)] = {definition, object};
}

void CMofCompiler::Carry(const CMofPragma& pragma)
{
    struct CRow
    {
        const wchar_t* Name;
        void (CMofCompiler::*Carry)(const CMofPragma&); // null: of no consequence here
    };
    static constexpr CRow kDirectives[] = {
        {L"namespace", &CMofCompiler::ChangeNamespace},
        {L"deleteclass", &CMofCompiler::DeleteClass},
        {L"deleteinstance", &CMofCompiler::DeleteInstance},
        {L"autorecover", nullptr},
        {L"classflags", nullptr},
        {L"instanceflags", nullptr},
        {L"amendment", nullptr},
        {L"locale", nullptr},
        {L"instancelocale", nullptr},
    };
    for (const CRow& row : kDirectives)
        if (EqualNoCaseAscii(row.Name, pragma.Name.Text))
        {
            if (row.Carry)
                (this->*row.Carry)(pragma);
            return;
        }
    throw CMofProblem{pragma.Name.Place, "unknown directive #pragma " + Utf8Text(pragma.Name.Text)};
}

void CMofCompiler::ChangeNamespace(const CMofPragma& pragma)
{
    const CMofValue& name = ArgumentOf(pragma);
    const CNamespace* found = m_state.Find(name.Characters);
    if (!found)
        throw CMofProblem{name.Place, "there is no namespace " + Quoted(PlainNamespace(name.Characters))};
    m_namespace = found->Name;
}

void CMofCompiler::DeleteClass(const CMofPragma& pragma)
{
    const CMofValue& name = ArgumentOf(pragma);
    CNamespace& current = Current();
    if (!current.Classes.contains(FoldName(name.Characters)))
    {
        if (MayFail(pragma))
            return;
        throw CMofProblem{name.Place, "there is no class " + Quoted(name.Characters)};
    }
    std::erase_if(current.Instances,
                  [&](const auto& item) { return item.second.Class->InheritsFrom(name.Characters); });
    std::erase_if(current.Classes,
                  [&](const auto& item) { return item.second.Definition->InheritsFrom(name.Characters); });
}

void CMofCompiler::DeleteInstance(const CMofPragma& pragma)
{
    const CMofValue& path = ArgumentOf(pragma);
    if (Current().Instances.erase(FoldName(path.Characters)) == 0 && !MayFail(pragma))
        throw CMofProblem{path.Place, "there is no instance " + Quoted(path.Characters)};
}
} // namespace standin
