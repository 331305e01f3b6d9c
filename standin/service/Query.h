// The subset of WQL that the stand-in understands, read and run.
#pragma once

#include "standin/service/InstanceSource.h"

namespace standin
{
class CQuery;

// Null where the text is no query of the subset.
std::shared_ptr<const CQuery> ParseQuery(std::wstring_view text);

COutcome RunQuery(const CQuery& query, CInstanceSource& source, const ObjectConsumer& consume);
} // namespace standin
