#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Handle.h"

namespace QXAgent {

// What a database operation failed with; never leaves the spool.
struct DatabaseError {
  std::string message;
  bool isDamage = false;  // the file is not what was written
};

class Database;

// A statement: its parameters are bound from the left, then its rows are stepped through.
class Statement {
 public:
  Statement(const Database& database, std::string_view sql);

  Statement& bind(std::int64_t value);
  Statement& bind(std::string_view text);
  Statement& bind(const std::optional<std::string>& text);
  Statement& bindBytes(std::string_view bytes);

  // Whether there is a row to read. Throws DatabaseError.
  bool step();
  // Runs one that has no rows. Throws DatabaseError.
  void run() { step(); }

  std::int64_t integer(int column) const;
  std::string text(int column) const;
  std::optional<std::string> optionalText(int column) const;

 private:
  void check(int status) const;

  QXPlatform::Handle<sqlite3_stmt, sqlite3_finalize> statement_;
  int bound_ = 0;
};

// One SQLite file in write-ahead mode, mode 0600. For one thread; other processes may read and write it too.
class Database {
 public:
  // Makes the file when it is not there. Throws DatabaseError.
  explicit Database(const std::filesystem::path& file);

  // Reads all of it. Throws DatabaseError when it is damaged.
  void check() const;
  void execute(const char* sql) const;
  // What what is written from now on outlives: a power cut costs a wait for the disk, a crash of this process
  // nothing.
  enum class Outlives { crash, powerCut };
  void write(Outlives event) const;
  sqlite3* connection() const { return connection_.get(); }

 private:
  QXPlatform::Handle<sqlite3, sqlite3_close_v2> connection_;
};

// Undone unless it is committed.
class Transaction {
 public:
  explicit Transaction(const Database& database) : database_(database) {
    database_.execute("BEGIN IMMEDIATE");
  }
  ~Transaction() {
    if (!committed_) sqlite3_exec(database_.connection(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void commit() {
    database_.execute("COMMIT");
    committed_ = true;
  }

 private:
  const Database& database_;
  bool committed_ = false;
};

}  // namespace QXAgent
