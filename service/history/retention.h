#pragma once

#include <optional>

#include "polling/site/service_settings.h"
#include "service/history/database.h"
#include "service/history/unix_time.h"

namespace fieldline::service {

// Removes readings older than `keep`, and five-minute values, failures and changes of lines older than ten times that.
// The file keeps its pages for what comes next. Throws DatabaseError.
void RemoveOld(Database& database, UnixTime now, std::chrono::milliseconds keep);

// Removes the oldest readings an hour at a time, and the oldest five-minute values when there are no more readings,
// until no more than `most` bytes are in use. The time before which readings are gone, if any had to go.
std::optional<UnixTime> Shrink(Database& database, std::uint64_t most);

// Bytes in use, without the pages that are free.
std::uint64_t UsedBytes(Database& database);

}  // namespace fieldline::service
