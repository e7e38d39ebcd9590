#pragma once

#include "service/history/database.h"
#include "service/history/unix_time.h"

namespace fieldline::service {

// Makes the five-minute values of all slots that ended at `until` or earlier and have none yet: the least and the
// greatest value of each numeric series, and its mean by time. In one transaction; throws DatabaseError.
void Summarise(Database& database, UnixTime until);

}  // namespace fieldline::service
