// The schema and the stored instances of every namespace, filled from MOF texts. Any thread may read while
// another compiles; a text takes effect as a whole or, where it is refused, not at all.
//
// Namespaces are named in the form root\cimv2; a server part and slashes are understood. Names of
// namespaces, classes and providers are compared without regard to case. What is not there is a null pointer
// or an empty list.
#pragma once

#include "Common/src/com/CriticalSection.h"
#include "standin/object/Objects.h"

#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace standin
{
// Why a MOF text was refused, and where.
class CMofError : public std::runtime_error
{
  public:
    // `reason` is a sentence without the place; what() is "file(line,column): reason", both counted from 1.
    CMofError(const std::string& source, size_t line, size_t column, const std::string& reason)
        : std::runtime_error(source + "(" + std::to_string(line) + "," + std::to_string(column) +
                             "): " + reason)
    {
    }
};

// What MOF says about a provider.
struct CProviderRegistration
{
    std::wstring Name;
    std::wstring Clsid; // text of the form {...}
    std::wstring HostingModel;
    bool ServesInstances = false; // has an __InstanceProviderRegistration, which tells the next four
    bool SupportsGet = false;
    bool SupportsPut = false;
    bool SupportsDelete = false;
    bool SupportsEnumeration = false;
    bool ServesMethods = false; // has a __MethodProviderRegistration
};

class CRepositoryState;

class CRepository
{
  public:
    // `server` is the "__SERVER" of what comes out of here. There are the namespaces root,
    // root\default and root\cimv2, all empty at first.
    explicit CRepository(std::wstring server);
    CRepository(const CRepository&) = delete;
    CRepository& operator=(const CRepository&) = delete;
    ~CRepository();

    // Reads a MOF text in UTF-8; compiling one again changes nothing. Throws CMofError and, where memory
    // ends, std::bad_alloc. `sourceName` stands in errors. A file that cannot be read is an error at line 0.
    // What names no namespace goes where the management service's own compiler puts it. Both say whether the
    // text has removed something.
    bool Compile(std::string_view text, const std::string& sourceName,
                 std::wstring_view nameSpace = L"root\\default");
    bool CompileFile(const std::wstring& path);

    bool HasNamespace(std::wstring_view nameSpace) const;

    // The class as an object. The schema is in one language, whichever a client asks for.
    ComPtr<IWbemClassObject> GetClass(std::wstring_view nameSpace, std::wstring_view name) const;
    ClassDefinition GetDefinition(std::wstring_view nameSpace, std::wstring_view name) const;
    // Derived classes, direct ones and others; of "" all classes.
    std::vector<ClassDefinition> DerivedClasses(std::wstring_view nameSpace, std::wstring_view name) const;

    // Stored instances of the class and, if `deep`, of those derived from it.
    std::vector<ComPtr<IWbemClassObject>> Instances(std::wstring_view nameSpace, std::wstring_view className,
                                                    bool deep) const;
    // A stored instance by its "__RELPATH".
    ComPtr<IWbemClassObject> GetInstance(std::wstring_view nameSpace, std::wstring_view relativePath) const;

    // The registration of the provider that a class names in its qualifier "provider".
    std::optional<CProviderRegistration> FindProvider(std::wstring_view nameSpace,
                                                      std::wstring_view name) const;

  private:
    std::shared_ptr<const CRepositoryState> Current() const;
    ComPtr<IWbemClassObject> HandOut(IWbemClassObject& stored, const std::wstring& nameSpace) const;

    const std::wstring m_server;
    mutable CCriticalSection m_lock;
    CCriticalSection m_compiling; // one text at a time
    std::shared_ptr<const CRepositoryState> m_state;
};
} // namespace standin
