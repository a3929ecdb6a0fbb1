#include "agent/spool/Database.h"

#include <sys/stat.h>

#include <system_error>

namespace QXAgent {

namespace {

// Another process that has the file open holds it for milliseconds.
constexpr int kLongestWaitForLock = 5'000;  // milliseconds

constexpr const char* kSetting =
    "PRAGMA journal_mode = WAL; PRAGMA journal_size_limit = 4194304; PRAGMA cache_size = -256;";

[[noreturn]] void fail(sqlite3* connection) {
  if (connection == nullptr) throw DatabaseError{"out of memory"};
  const int status = sqlite3_errcode(connection);
  throw DatabaseError{sqlite3_errmsg(connection), status == SQLITE_CORRUPT || status == SQLITE_NOTADB};
}

}  // namespace

Statement::Statement(const Database& database, std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database.connection(), sql.data(), static_cast<int>(sql.size()), &statement,
                         nullptr) != SQLITE_OK) {
    fail(database.connection());
  }
  statement_.reset(statement);
}

void Statement::check(int status) const {
  if (status != SQLITE_OK) fail(sqlite3_db_handle(statement_.get()));
}

Statement& Statement::bind(std::int64_t value) {
  check(sqlite3_bind_int64(statement_.get(), ++bound_, value));
  return *this;
}

Statement& Statement::bind(std::string_view text) {
  check(sqlite3_bind_text64(statement_.get(), ++bound_, text.data(), text.size(), SQLITE_TRANSIENT,
                            SQLITE_UTF8));
  return *this;
}

Statement& Statement::bind(const std::optional<std::string>& text) {
  if (text) return bind(std::string_view(*text));
  check(sqlite3_bind_null(statement_.get(), ++bound_));
  return *this;
}

Statement& Statement::bindBytes(std::string_view bytes) {
  check(sqlite3_bind_blob64(statement_.get(), ++bound_, bytes.data(), bytes.size(), SQLITE_TRANSIENT));
  return *this;
}

bool Statement::step() {
  const int status = sqlite3_step(statement_.get());
  if (status == SQLITE_ROW) return true;
  if (status == SQLITE_DONE) return false;
  fail(sqlite3_db_handle(statement_.get()));
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

std::string Statement::text(int column) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
  return bytes == nullptr
             ? std::string()
             : std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column)));
}

std::optional<std::string> Statement::optionalText(int column) const {
  if (sqlite3_column_type(statement_.get(), column) == SQLITE_NULL) return std::nullopt;
  return text(column);
}

Database::Database(const std::filesystem::path& file) {
  // To the library one that was cut to nothing is a new one.
  std::error_code absent;
  if (std::filesystem::file_size(file, absent) == 0) throw DatabaseError{"the file is empty", true};
  const mode_t previous = umask(077);
  sqlite3* connection = nullptr;
  const int status = sqlite3_open_v2(
      file.c_str(), &connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  connection_.reset(connection);
  const bool isOpen = status == SQLITE_OK &&
                      sqlite3_busy_timeout(connection, kLongestWaitForLock) == SQLITE_OK &&
                      sqlite3_exec(connection, kSetting, nullptr, nullptr, nullptr) == SQLITE_OK;
  umask(previous);
  if (!isOpen) fail(connection);
}

void Database::write(Outlives event) const {
  execute(event == Outlives::powerCut ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
}

void Database::check() const {
  Statement statement(*this, "PRAGMA quick_check(1)");
  if (!statement.step() || statement.text(0) != "ok") throw DatabaseError{statement.text(0), true};
}

void Database::execute(const char* sql) const {
  if (sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) fail(connection_.get());
}

}  // namespace QXAgent
