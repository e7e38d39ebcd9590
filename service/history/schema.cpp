#include "service/history/schema.h"

#include <string>

namespace fieldline::service {

void PrepareTables(Database& database) {
  const std::int64_t version = database.Query("PRAGMA user_version");
  if (version != 0 && version != kSchemaVersion) {
    throw DatabaseError(0, "the history is of another version of fieldlined");
  }
  database.Run(kSchema);
  database.Run(("PRAGMA user_version = " + std::to_string(kSchemaVersion)).c_str());
}

}  // namespace fieldline::service
