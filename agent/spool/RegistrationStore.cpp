#include "agent/spool/RegistrationStore.h"

#include "agent/spool/Attempt.h"

namespace QXAgent {

namespace {

constexpr const char* kSchema = R"(
  CREATE TABLE IF NOT EXISTS registration (
    row INTEGER PRIMARY KEY CHECK (row = 1), distributor TEXT NOT NULL, token TEXT NOT NULL, endpoint TEXT NOT NULL,
    private BLOB NOT NULL, public BLOB NOT NULL, auth BLOB NOT NULL);
  CREATE TABLE IF NOT EXISTS next_registration (
    row INTEGER PRIMARY KEY CHECK (row = 1), distributor TEXT NOT NULL, token TEXT NOT NULL, endpoint TEXT NOT NULL,
    private BLOB NOT NULL, public BLOB NOT NULL, auth BLOB NOT NULL);
  CREATE TABLE IF NOT EXISTS wanted_registration (row INTEGER PRIMARY KEY CHECK (row = 1));
)";
constexpr const char* kCurrent = "registration";
constexpr const char* kNext = "next_registration";

std::optional<Registration> read(const Database& database, const std::string& table) {
  Statement statement(database, "SELECT distributor, token, endpoint, private, public, auth FROM " + table);
  if (!statement.step()) return std::nullopt;
  return Registration{statement.text(0),
                      statement.text(1),
                      statement.text(2),
                      {QXPlatform::Data(statement.text(3)), QXPlatform::Data(statement.text(4)),
                       QXPlatform::Data(statement.text(5))}};
}

void write(const Database& database, const std::string& table,
           const std::optional<Registration>& registration) {
  Statement(database, "DELETE FROM " + table).run();
  if (!registration) return;
  Statement(database, "INSERT INTO " + table + " VALUES (1, ?, ?, ?, ?, ?, ?)")
      .bind(std::string_view(registration->distributor))
      .bind(std::string_view(registration->token))
      .bind(std::string_view(registration->endpoint))
      .bindBytes(registration->keys.privateKey.view())
      .bindBytes(registration->keys.publicKey.view())
      .bindBytes(registration->keys.auth.view())
      .run();
}

}  // namespace

RegistrationStore::RegistrationStore(const Database& database) : database_(database) {
  database_.execute(kSchema);
}

Registrations RegistrationStore::load() const {
  return {read(database_, kCurrent), read(database_, kNext),
          Statement(database_, "SELECT 1 FROM wanted_registration").step()};
}

bool RegistrationStore::save(const Registrations& registrations) const {
  return attempt("the registration cannot be kept", false, [&] {
    // What it is sealed for must not be lost while the distributor remembers it.
    database_.write(Database::Outlives::powerCut);
    Transaction transaction(database_);
    write(database_, kCurrent, registrations.current);
    write(database_, kNext, registrations.next);
    database_.execute(registrations.isWanted ? "INSERT OR IGNORE INTO wanted_registration VALUES (1)"
                                             : "DELETE FROM wanted_registration");
    transaction.commit();
    return true;
  });
}

}  // namespace QXAgent
