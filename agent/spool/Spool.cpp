#include "agent/spool/Spool.h"

#include <algorithm>
#include <iterator>

#include "agent/spool/Attempt.h"

namespace QXAgent {

namespace {

constexpr const char* kSchema = R"(
  CREATE TABLE IF NOT EXISTS waiting (
    number INTEGER PRIMARY KEY AUTOINCREMENT, identifier TEXT NOT NULL, text BLOB NOT NULL,
    deaths INTEGER NOT NULL DEFAULT 0, answer TEXT);
  CREATE TABLE IF NOT EXISTS seen (number INTEGER PRIMARY KEY AUTOINCREMENT, key BLOB NOT NULL UNIQUE);
  CREATE TABLE IF NOT EXISTS aside (number INTEGER PRIMARY KEY AUTOINCREMENT, text BLOB NOT NULL, reason TEXT NOT NULL);
  CREATE TABLE IF NOT EXISTS shown (
    identifier TEXT PRIMARY KEY, server TEXT NOT NULL, id INTEGER NOT NULL, content TEXT NOT NULL, files TEXT NOT NULL);
  CREATE TABLE IF NOT EXISTS account (
    received INTEGER NOT NULL, shown INTEGER NOT NULL, refused INTEGER NOT NULL, aside INTEGER NOT NULL, error TEXT);
  INSERT INTO account SELECT 0, 0, 0, 0, NULL WHERE NOT EXISTS (SELECT 1 FROM account);
)";

// How far back a repetition is recognised, and how much of what is no push is kept.
constexpr std::int64_t kKeysKept = 4'096;
constexpr std::int64_t kAsideKept = 100;
// A server that never tells of a closed notification must not fill the disk.
constexpr std::int64_t kShownKept = 500;
// In bytes. What is shown or put aside leaves room for what is to come.
constexpr std::int64_t kMostHeld = 64 << 20;
constexpr std::int64_t kMostShown = 32 << 20;
constexpr std::int64_t kMostAside = 8 << 20;

std::string joinPaths(const std::vector<std::filesystem::path>& files) {
  std::string text;
  for (const auto& file : files) text.append(file.native()).push_back('\0');
  return text;
}

std::vector<std::filesystem::path> splitPaths(std::string_view text) {
  std::vector<std::filesystem::path> files;
  for (std::size_t end = 0; (end = text.find('\0')) != std::string_view::npos; text.remove_prefix(end + 1)) {
    files.emplace_back(text.substr(0, end));
  }
  return files;
}

}  // namespace

Spool::Spool(const Database& database) : database_(database) {
  database_.execute(kSchema);
}

Spool::Reception Spool::take(std::string_view key, std::string_view identifier, std::string_view text) {
  return attempt("a push cannot be kept", Reception::failed, [&] {
    // The answer to its source lets the push be forgotten there.
    database_.write(Database::Outlives::powerCut);
    Transaction transaction(database_);
    if (!isNew(key)) return Reception::repeated;
    if (heldBytes() > kMostHeld) throw DatabaseError{"too much waits already"};
    Statement(database_, "INSERT INTO waiting (identifier, text) VALUES (?, ?)")
        .bind(identifier)
        .bindBytes(text)
        .run();
    count("received");
    transaction.commit();
    return Reception::taken;
  });
}

Spool::Reception Spool::putAside(std::string_view key, std::string_view text, std::string_view reason) {
  return attempt("what is no push cannot be kept", Reception::failed, [&] {
    database_.write(Database::Outlives::crash);
    Transaction transaction(database_);
    if (!isNew(key)) return Reception::repeated;
    insertAside(text, reason);
    transaction.commit();
    return Reception::taken;
  });
}

void Spool::putAsideWaiting(std::int64_t number, std::string_view reason) {
  attempt("a push cannot be put aside", [&] {
    database_.write(Database::Outlives::crash);
    Transaction transaction(database_);
    Statement removed(database_, "DELETE FROM waiting WHERE number = ? RETURNING text");
    if (!removed.bind(number).step()) return;
    insertAside(removed.text(0), reason);
    removed.step();
    transaction.commit();
  });
}

void Spool::insertAside(std::string_view text, std::string_view reason) const {
  Statement(database_, "INSERT INTO aside (text, reason) VALUES (?, ?)").bindBytes(text).bind(reason).run();
  Statement(database_, "DELETE FROM aside WHERE number <= (SELECT max(number) FROM aside) - ?")
      .bind(kAsideKept)
      .run();
  Statement(
      database_,
      "DELETE FROM aside WHERE number <= (SELECT max(number) FROM ("
      "SELECT number, sum(length(text)) OVER (ORDER BY number DESC) AS held FROM aside) WHERE held > ?)")
      .bind(kMostAside)
      .run();
  Statement(database_, "UPDATE account SET aside = aside + 1, error = ?").bind(reason).run();
}

std::int64_t Spool::heldBytes() const {
  Statement pages(database_,
                  "SELECT (page_count - freelist_count) * page_size "
                  "FROM pragma_page_count(), pragma_freelist_count(), pragma_page_size()");
  return pages.step() ? pages.integer(0) : 0;
}

bool Spool::isNew(std::string_view key) const {
  if (key.empty()) return true;
  Statement known(database_, "SELECT 1 FROM seen WHERE key = ?");
  if (known.bindBytes(key).step()) return false;
  Statement(database_, "INSERT INTO seen (key) VALUES (?)").bindBytes(key).run();
  Statement(database_, "DELETE FROM seen WHERE number <= (SELECT max(number) FROM seen) - ?")
      .bind(kKeysKept)
      .run();
  return true;
}

void Spool::count(const char* column) const {
  const std::string name(column);
  Statement(database_, "UPDATE account SET " + name + " = " + name + " + 1").run();
}

void Spool::countRefusal(std::string_view reason) {
  attempt("a refusal cannot be counted", [&] {
    database_.write(Database::Outlives::crash);
    Statement(database_, "UPDATE account SET refused = refused + 1, error = ?").bind(reason).run();
  });
}

void Spool::noteError(std::string_view reason) {
  attempt("an error cannot be kept", [&] {
    database_.write(Database::Outlives::crash);
    Statement(database_, "UPDATE account SET error = ?").bind(reason).run();
  });
}

std::vector<WaitingPush> Spool::waitingAfter(std::int64_t number, std::size_t limit) {
  return attempt("the waiting pushes cannot be read", std::vector<WaitingPush>(), [&] {
    Statement statement(database_,
                        "SELECT number, identifier, text, deaths, answer FROM waiting WHERE number > ? "
                        "ORDER BY number LIMIT ?");
    statement.bind(number).bind(static_cast<std::int64_t>(limit));
    std::vector<WaitingPush> pushes;
    while (statement.step()) {
      pushes.push_back({statement.integer(0), statement.text(1), statement.text(2),
                        static_cast<int>(statement.integer(3)), statement.optionalText(4)});
    }
    return pushes;
  });
}

void Spool::recordAnswer(std::int64_t number, std::string_view content) {
  attempt("an answer cannot be kept", [&] {
    database_.write(Database::Outlives::crash);
    Statement(database_, "UPDATE waiting SET answer = ? WHERE number = ?").bind(content).bind(number).run();
  });
}

void Spool::recordDeath(std::int64_t number) {
  attempt("a death cannot be kept", [&] {
    database_.write(Database::Outlives::crash);
    Statement(database_, "UPDATE waiting SET deaths = deaths + 1 WHERE number = ?").bind(number).run();
  });
}

std::vector<std::filesystem::path> Spool::recordShown(std::int64_t number,
                                                      const ShownNotification& notification) {
  return attempt("a notification cannot be kept", std::vector<std::filesystem::path>(), [&] {
    database_.write(Database::Outlives::crash);
    Transaction transaction(database_);
    Statement(database_, "DELETE FROM waiting WHERE number = ?").bind(number).run();
    Statement forgotten(
        database_,
        "DELETE FROM shown WHERE identifier = ? OR rowid <= (SELECT max(rowid) FROM shown) - ? "
        "OR (? AND rowid <= (SELECT max(rowid) FROM ("
        "SELECT rowid, sum(length(CAST(content AS BLOB))) OVER (ORDER BY rowid DESC) AS held FROM shown) "
        "WHERE held > ?)) RETURNING files");
    forgotten.bind(std::string_view(notification.identifier))
        .bind(kShownKept - 1)
        .bind(std::int64_t{heldBytes() > kMostShown})  // else it need not be added up
        .bind(kMostShown);
    std::vector<std::filesystem::path> files;
    while (forgotten.step()) std::ranges::move(splitPaths(forgotten.text(0)), std::back_inserter(files));
    Statement(database_, "INSERT INTO shown (identifier, server, id, content, files) VALUES (?, ?, ?, ?, ?)")
        .bind(std::string_view(notification.identifier))
        .bind(std::string_view(notification.server))
        .bind(std::int64_t{notification.id})
        .bind(std::string_view(notification.content))
        .bindBytes(joinPaths(notification.files))
        .run();
    count("shown");
    transaction.commit();
    return files;
  });
}

std::optional<ShownNotification> Spool::firstShown(Statement& statement) const {
  if (!statement.step()) return std::nullopt;
  return ShownNotification{statement.text(0), statement.text(1),
                           static_cast<std::uint32_t>(statement.integer(2)), statement.text(3),
                           splitPaths(statement.text(4))};
}

std::optional<ShownNotification> Spool::shown(std::string_view identifier) {
  return attempt("a notification cannot be read", std::optional<ShownNotification>(), [&] {
    Statement statement(database_,
                        "SELECT identifier, server, id, content, files FROM shown WHERE identifier = ?");
    return firstShown(statement.bind(identifier));
  });
}

std::optional<ShownNotification> Spool::shown(std::string_view server, std::uint32_t id) {
  return attempt("a notification cannot be read", std::optional<ShownNotification>(), [&] {
    Statement statement(
        database_, "SELECT identifier, server, id, content, files FROM shown WHERE server = ? AND id = ?");
    return firstShown(statement.bind(server).bind(std::int64_t{id}));
  });
}

std::vector<ShownNotification> Spool::allShown() {
  return attempt("the notifications cannot be read", std::vector<ShownNotification>(), [&] {
    Statement statement(database_, "SELECT identifier, server, id, content, files FROM shown ORDER BY rowid");
    std::vector<ShownNotification> all;
    while (auto notification = firstShown(statement)) all.push_back(*std::move(notification));
    return all;
  });
}

bool Spool::isInUse(std::int64_t number, const std::filesystem::path& file) {
  return attempt("the files in use cannot be read", true, [&] {
    Statement statement(
        database_,
        "SELECT 1 FROM waiting WHERE number = ? UNION ALL SELECT 1 FROM shown WHERE instr(files, ?)");
    return statement.bind(number).bindBytes(file.native()).step();
  });
}

bool Spool::hasShown() {
  return attempt("the notifications cannot be read", false,
                 [&] { return Statement(database_, "SELECT 1 FROM shown LIMIT 1").step(); });
}

void Spool::forgetShown(std::string_view identifier) {
  attempt("a notification cannot be forgotten", [&] {
    database_.write(Database::Outlives::crash);
    Statement(database_, "DELETE FROM shown WHERE identifier = ?").bind(identifier).run();
  });
}

Account Spool::account() {
  return attempt("the account cannot be read", Account(), [&] {
    Statement statement(
        database_,
        "SELECT received, shown, (SELECT count(*) FROM waiting), refused, aside, error FROM account");
    Account account;
    if (statement.step()) {
      account = {statement.integer(0), statement.integer(1), statement.integer(2),
                 statement.integer(3), statement.integer(4), statement.optionalText(5)};
    }
    return account;
  });
}

}  // namespace QXAgent
