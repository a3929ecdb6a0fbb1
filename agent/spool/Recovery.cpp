#include "agent/spool/Recovery.h"

#include <string>
#include <system_error>
#include <utility>

#include "agent/spool/Attempt.h"

namespace QXAgent {

namespace {

void setAside(const std::filesystem::path& file) {
  // What has not yet found its way from the log into the file belongs to it.
  for (const std::string suffix : {"", "-wal", "-shm"}) {
    std::error_code ignored;
    const auto aside = file.native() + ".damaged" + suffix;
    std::filesystem::remove(aside, ignored);
    std::filesystem::rename(file.native() + suffix, aside, ignored);
  }
}

}  // namespace

OpenedDatabase openOrBeginAnew(const std::filesystem::path& file) {
  try {
    Database database(file);
    database.check();
    return {std::move(database), false};
  } catch (const DatabaseError& error) {
    if (!error.isDamage) throw;
    logDatabaseFailure("the database is damaged, and begun anew", error);
  }
  setAside(file);
  return {Database(file), true};
}

}  // namespace QXAgent
