// What a repository holds at one moment. A compilation works on a copy, which replaces the repository's state
// when all of the text is in; classes and instances themselves are shared by the copies and never changed.
#pragma once

#include "standin/mof/MofSyntax.h"
#include "standin/object/ClassDefinition.h"

#include <map>

namespace standin
{
// The form in which names are looked up.
std::wstring FoldName(std::wstring_view name);
// The form root\cimv2 of a namespace as clients and MOF write it: "\\.\root\cimv2", or the same with slashes.
std::wstring PlainNamespace(std::wstring_view name);

struct CStoredClass
{
    std::shared_ptr<const CMofClass> Declaration; // from which it is made anew when an ancestor changes
    ClassDefinition Definition;
};

struct CStoredInstance
{
    ClassDefinition Class;
    ComPtr<IWbemClassObject> Object; // handed out as clones
};

struct CNamespace
{
    std::wstring Name; // as it was created, such as root\CIMV2
    std::map<std::wstring, CStoredClass> Classes;
    std::map<std::wstring, CStoredInstance> Instances; // by their relative path
};

class CRepositoryState
{
  public:
    // Null where there is none.
    const CNamespace* Find(std::wstring_view nameSpace) const;
    CNamespace* Find(std::wstring_view nameSpace);
    void CreateNamespace(const std::wstring& name);
    std::vector<std::wstring> ChildNamespaces(std::wstring_view nameSpace) const;

    // A class of the namespace, or a system class: those stand in root and are seen from everywhere.
    ClassDefinition FindClass(const CNamespace& nameSpace, std::wstring_view name) const;
    // The same with the qualifiers of one language, or with `locale` 0 without any amended ones.
    ClassDefinition FindClass(const CNamespace& nameSpace, std::wstring_view name, LCID locale) const;

  private:
    std::map<std::wstring, CNamespace> m_namespaces;
};
} // namespace standin
