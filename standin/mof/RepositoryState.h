// What a repository holds at one moment. A compilation works on a copy, which replaces the repository's state
// when all of the text is in; classes and instances themselves are shared by the copies and never changed.
#pragma once

#include "Common/src/com/ComPtr.h"
#include "standin/object/ClassDefinition.h"

#include <map>

namespace standin
{
struct CStoredInstance
{
    ClassDefinition Class;
    ComPtr<IWbemClassObject> Object; // handed out as clones
};

struct CNamespace
{
    std::wstring Name;                                 // such as root\cimv2
    std::map<std::wstring, ClassDefinition> Classes;   // by their names in folded form
    std::map<std::wstring, CStoredInstance> Instances; // by their relative paths in folded form
};

class CRepositoryState
{
  public:
    // The namespaces root, root\default and root\cimv2, all empty.
    CRepositoryState();

    // By a name as clients and MOF write it: "root\cimv2", "\\.\root\cimv2", or the same with slashes. Null
    // where there is none.
    const CNamespace* Find(std::wstring_view nameSpace) const;
    CNamespace* Find(std::wstring_view nameSpace);
    // A class of the namespace, or a system class: those stand in root and are seen from everywhere.
    ClassDefinition FindClass(const CNamespace& nameSpace, std::wstring_view name) const;

  private:
    std::map<std::wstring, CNamespace> m_namespaces;
};
} // namespace standin
