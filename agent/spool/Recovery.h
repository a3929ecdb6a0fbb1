#pragma once

#include <filesystem>

#include "agent/spool/Database.h"

namespace QXAgent {

struct OpenedDatabase {
  Database database;
  bool wasDamaged;
};

// Opens a database. One that is damaged is set aside, with ".damaged" to its name and in place of one that
// was before, and begun anew. REQUIRES: no other process writes it. Throws DatabaseError.
OpenedDatabase openOrBeginAnew(const std::filesystem::path& file);

}  // namespace QXAgent
