#include "standin/mof/MofCompiler.h"

#include "Common/src/com/Text.h"
#include "standin/mof/MofClass.h"
#include "standin/mof/MofValue.h"
#include "standin/object/Objects.h"

namespace standin
{
namespace
{
class CCompilation
{
  public:
    CCompilation(std::string_view text, CRepositoryState& state, std::wstring_view nameSpace)
        : m_state(state), m_reader(text), m_current(state.Find(nameSpace))
    {
    }

    bool Run()
    {
        while (m_reader.Kind() != CMofReader::End)
            if (m_reader.Take('#'))
                RunDirective();
            else
                RunDeclaration();
        return m_removed;
    }

  private:
    void RunDirective()
    {
        m_reader.ExpectWord("pragma");
        const CMofName name = m_reader.TakeName();
        if (EqualNoCaseAscii(name.Text, L"autorecover"))
            return; // about another computer's repository
        if (EqualNoCaseAscii(name.Text, L"deleteclass"))
            return RunRemoval(m_current->Classes);
        if (EqualNoCaseAscii(name.Text, L"deleteinstance"))
            return RunRemoval(m_current->Instances);
        if (EqualNoCaseAscii(name.Text, L"classflags"))
            return RunClassFlags();
        if (!EqualNoCaseAscii(name.Text, L"namespace"))
            throw CMofProblem{name.Place, "unknown directive #pragma " + Utf8Text(name.Text)};
        m_reader.Expect('(');
        const CMofPlace place = m_reader.Place();
        const std::wstring nameSpace = m_reader.TakeTexts();
        m_current = m_state.Find(nameSpace);
        if (!m_current)
            throw CMofProblem{place, "there is no namespace " + Quoted(nameSpace)};
        m_reader.Expect(')');
    }

    void RunClassFlags()
    {
        m_reader.Expect('(');
        const CMofPlace place = m_reader.Place();
        const std::wstring flags = m_reader.TakeTexts();
        if (!EqualNoCaseAscii(flags, L"createonly"))
            throw CMofProblem{place, "unknown class flags " + Quoted(flags)};
        m_reader.Expect(')');
        m_createOnly = true;
    }

    template <class Map>
    void RunRemoval(Map& from)
    {
        m_reader.Expect('(');
        const CMofPlace place = m_reader.Place();
        const std::wstring name = m_reader.TakeTexts();
        m_reader.Expect(',');
        const bool needed = m_reader.TakeWord("fail");
        if (!needed)
            m_reader.ExpectWord("nofail");
        m_reader.Expect(')');
        const bool removed = from.erase(FoldName(name)) > 0;
        if (needed && !removed)
            throw CMofProblem{place, "there is no " + Quoted(name)};
        m_removed = m_removed || removed;
    }

    void RunDeclaration()
    {
        const CQualifiers qualifiers = ReadQualifiers(m_reader);
        if (m_reader.TakeWord("class"))
        {
            const CMofPlace place = m_reader.Place();
            ClassDefinition definition =
                ReadClass(m_reader, qualifiers, [this](const CMofName& name) { return ClassOf(name); });
            if (m_createOnly && m_state.FindClass(*m_current, definition->Name))
                throw CMofProblem{place, "the class " + Quoted(definition->Name) + " is there already"};
            m_current->Classes[FoldName(definition->Name)] = std::move(definition);
        }
        else if (m_reader.TakeWord("instance"))
            RunInstance();
        else
            m_reader.Fail("expected a class, an instance or a #pragma");
    }

    ClassDefinition ClassOf(const CMofName& name) const
    {
        ClassDefinition definition = m_state.FindClass(*m_current, name.Text);
        if (!definition)
            throw CMofProblem{name.Place, "the class " + Quoted(name.Text) + " is not in the namespace " +
                                              Quoted(m_current->Name)};
        return definition;
    }

    void RunInstance()
    {
        m_reader.ExpectWord("of");
        const CMofName className = m_reader.TakeName();
        const ClassDefinition definition = ClassOf(className);
        if (definition->Qualifiers.IsTrue(L"abstract"))
            throw CMofProblem{className.Place, "the class " + Quoted(className.Text) + " is abstract"};
        std::wstring alias;
        if (m_reader.TakeWord("as"))
        {
            m_reader.Expect('$');
            alias = m_reader.TakeName().Text;
        }
        const ComPtr<IWbemClassObject> object = MakeInstance(definition);
        m_reader.Expect('{');
        while (!m_reader.Take('}'))
            RunAssignment(*definition, *object);
        m_reader.Expect(';');
        CVariant path;
        if (FAILED(object->Get(L"__RELPATH", 0, &path, nullptr, nullptr)) || path.vt != VT_BSTR)
            throw CMofProblem{className.Place, "a key of the instance has no value"};
        if (!alias.empty())
            m_aliases[FoldName(alias)] = path.bstrVal;
        m_current->Instances[FoldName(path.bstrVal)] = {definition, object};
    }

    void RunAssignment(const CClassDefinition& definition, IWbemClassObject& object)
    {
        const CMofName name = m_reader.TakeName();
        m_reader.Expect('=');
        const CMofValue value = ReadMofValue(m_reader, m_aliases);
        m_reader.Expect(';');
        const CPropertyDefinition* property = definition.FindProperty(name.Text);
        if (!property)
            throw CMofProblem{name.Place,
                              "class " + Quoted(definition.Name) + " has no property " + Quoted(name.Text)};
        CCimValue stored = ToCimValue(value, property->Type);
        if (FAILED(object.Put(property->Name.c_str(), 0, &stored, CIM_EMPTY)))
            throw std::bad_alloc();
    }

    CRepositoryState& m_state;
    CMofReader m_reader;
    CNamespace* m_current;
    CMofAliases m_aliases;
    bool m_removed = false;
    bool m_createOnly = false;
};
} // namespace

bool CompileMof(std::string_view text, CRepositoryState& state, std::wstring_view nameSpace)
{
    return CCompilation(text, state, nameSpace).Run();
}
} // namespace standin
