// Queries at work.
#pragma once

#include "standin/service/InstanceSource.h"
#include "standin/service/Query.h"

namespace standin
{
// Hands each object that the query selects to `consume`. WBEM_E_INVALID_CLASS, and WBEM_E_INVALID_QUERY where
// the class lacks a property that the query names.
COutcome RunQuery(const CQuery& query, CInstanceSource& source, const ObjectConsumer& consume);
} // namespace standin
