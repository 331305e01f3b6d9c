// What the association classes have in common. An instance holds two references, made from one identifier: a
// result's or a test's key. A path that a client gives is taken at its first reference; the second one has
// only to be there.
#pragma once

#include "CDM/src/classes/WomClassHandler.h"
#include "CDM/src/engine/naming/InstancePath.h"
#include "Common/src/VormArray.h"

class CInstanceSender;

// What one reference property is made from: the identifier, or the adapter key in it.
enum class MadeFrom
{
    Identifier,
    AdapterKey
};

struct CReferenceRow
{
    const wchar_t* property;
    MadeFrom madeFrom;
    CBstr (*create)(std::wstring_view key, bool cimKeyMode);
    const char* createFailed;
};

// How a reference in a client's path is checked.
struct CReferenceCheck
{
    const wchar_t* property;
    const char* parseFailed;
    const wchar_t* key; // the referenced object's, which must be there
    KeyForm keyForm = KeyForm::NamedOrSingle;
    const char* keyMissing = nullptr;             // null: no line of its own
    BOOL (CDiagMgr::*exists)(BSTR key) = nullptr; // null: not asked
    const char* adapterKeyFailed = nullptr;       // null: the reference is not compared with the first one
    const char* otherAdapter = nullptr;
};

// One association class. Differences in spelling between the trace lines are part of them.
struct CAssociationRow
{
    const wchar_t* name;
    CReferenceRow references[2];
    const char* adapterKeyFailed = nullptr;                    // null: no reference is made from it
    HRESULT (*putOthers)(CWomClassObject& instance) = nullptr; // null: there are no other properties
    HRESULT (CDiagMgr::*enumerate)(CVormArray<BSTR>& identifiers);
    const char* createInstanceEnum;
    const char* enumFailed;

    const char* getObject;
    CReferenceCheck identifying; // its key is the identifier
    CReferenceCheck other;
    const char* getObjectSendFailed;
};

class CReferenceAssociation : public CWomClassHandler
{
  public:
    const wchar_t* GetClassName() const noexcept override { return m_row.name; }
    HRESULT GetObjectAsync(const CParsedObjectPath& path, CWomContext& context,
                           ComPtr<IWbemObjectSink> sink) override;
    HRESULT CreateInstanceEnumAsync(CWomContext& context, ComPtr<IWbemObjectSink> sink) override;

  protected:
    explicit CReferenceAssociation(const CAssociationRow& row) noexcept : m_row(row) {}

  private:
    HRESULT SendInstance(CInstanceSender& sender, std::wstring_view identifier) const;
    HRESULT CheckReference(const CReferenceCheck& check, const CParsedObjectPath& path, CBstr& key) const;

    const CAssociationRow& m_row;
};
