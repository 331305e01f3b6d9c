// "ASSOCIATORS OF" and "REFERENCES OF": every association class that can refer to the object is enumerated,
// and its instances that do are followed.
#pragma once

#include "standin/service/InstanceSource.h"
#include "standin/service/Query.h"

namespace standin
{
// An end that an association names but nobody can deliver is left out.
COutcome FollowAssociations(const CAssociationQuery& query, CInstanceSource& source,
                            const ObjectConsumer& consume);
} // namespace standin
