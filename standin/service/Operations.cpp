#include "standin/service/Operations.h"

#include "Common/src/com/Text.h"
#include "Common/src/com/WmiStatus.h"
#include "standin/locator/Names.h"
#include "standin/service/InstanceSource.h"
#include "standin/service/QueryRun.h"
#include "standin/service/Service.h"

namespace standin
{
namespace
{
// Flags that every operation takes.
constexpr long kAnyCall =
    WBEM_FLAG_RETURN_IMMEDIATELY | WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_USE_AMENDED_QUALIFIERS;
constexpr long kRead = kAnyCall | WBEM_FLAG_DIRECT_READ;
constexpr long kEnumerate = kRead | WBEM_FLAG_SHALLOW | WBEM_FLAG_ENSURE_LOCATABLE;
constexpr long kQuery = kRead | WBEM_FLAG_ENSURE_LOCATABLE;
constexpr long kCreateOrUpdate = WBEM_FLAG_UPDATE_ONLY | WBEM_FLAG_CREATE_ONLY;
constexpr long kPut = kAnyCall | kCreateOrUpdate;

// A path to something in this computer.
std::optional<CObjectPath> ParseLocalPath(const std::wstring& text)
{
    std::optional<CObjectPath> path = ParseObjectPath(text);
    if (path && !path->Server.empty() && !IsThisComputer(path->Server))
        return std::nullopt;
    return path;
}

// Where the call goes on once its path is known: in the path's own namespace, if it names one.
template <class Work>
COutcome AtPath(CService& service, const CCallMessage& call, CRequest& request, Work work)
{
    const std::optional<CObjectPath> path = ParseLocalPath(call.Subject);
    if (!path)
        return wmi::InvalidObjectPath;
    const std::wstring& nameSpace = path->NameSpace.empty() ? call.NameSpace : path->NameSpace;
    if (!service.Repository().HasNamespace(nameSpace))
        return wmi::InvalidNamespace;
    CInstanceSource source(service, nameSpace, request);
    return work(source, *path);
}

COutcome GetOne(CService& service, const CCallMessage& call, CRequest& request)
{
    return AtPath(service, call, request,
                  [](CInstanceSource& source, const CObjectPath& path)
                  {
                      if (path.IsInstance)
                          return source.Get(path);
                      COutcome outcome;
                      outcome.Object = source.Class(path.ClassName);
                      return outcome.Object ? outcome : COutcome(wmi::NotFound);
                  });
}

COutcome EnumerateInstances(CService& service, const CCallMessage& call, CRequest& request)
{
    CInstanceSource source(service, call.NameSpace, request);
    return source.Enumerate(call.Subject, (call.Flags & WBEM_FLAG_SHALLOW) == 0,
                            [&](IWbemClassObject* object) { return request.Indicate(object); });
}

COutcome Query(CService& service, const CCallMessage& call, CRequest& request)
{
    if (!EqualNoCaseAscii(call.Detail, L"WQL"))
        return wmi::InvalidQueryType;
    const std::shared_ptr<const CQuery> query = ParseQuery(call.Subject);
    if (!query)
        return wmi::InvalidQuery;
    CInstanceSource source(service, call.NameSpace, request);
    return RunQuery(*query, source, [&](IWbemClassObject* object) { return request.Indicate(object); });
}

COutcome PutOne(CService& service, const CCallMessage& call, CRequest& request)
{
    if (!call.Object || (call.Flags & kCreateOrUpdate) == kCreateOrUpdate)
        return wmi::InvalidParameter;
    CInstanceSource source(service, call.NameSpace, request);
    return source.Put(call.Object.Get());
}

COutcome Execute(CService& service, const CCallMessage& call, CRequest& request)
{
    if (call.Detail.empty())
        return wmi::InvalidParameter;
    return AtPath(service, call, request,
                  [&](CInstanceSource& source, const CObjectPath& path)
                  { return source.Execute(path, call.Detail, call.Object.Get()); });
}

struct OperationRow
{
    Operation What;
    long AllowedFlags;
    COutcome (*Run)(CService& service, const CCallMessage& call, CRequest& request);
};

constexpr OperationRow kOperations[] = {
    {Operation::GetObject, kRead, GetOne},
    {Operation::EnumerateInstances, kEnumerate, EnumerateInstances},
    {Operation::Query, kQuery, Query},
    {Operation::PutInstance, kPut, PutOne},
    {Operation::ExecuteMethod, kAnyCall, Execute},
};
} // namespace

COutcome CarryOut(CService& service, const CCallMessage& call, CRequest& request)
{
    for (const OperationRow& row : kOperations)
        if (row.What == call.What)
            return (call.Flags & ~row.AllowedFlags) != 0 ? COutcome(wmi::InvalidParameter)
                                                         : row.Run(service, call, request);
    return wmi::NotSupported;
}
} // namespace standin
