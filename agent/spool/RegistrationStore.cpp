#include "agent/spool/RegistrationStore.h"

#include "agent/spool/Attempt.h"

namespace QXAgent {

namespace {

constexpr const char* kSchema = R"(
  CREATE TABLE IF NOT EXISTS registration (
    row INTEGER PRIMARY KEY CHECK (row = 1), distributor TEXT NOT NULL, token TEXT NOT NULL, endpoint TEXT NOT NULL,
    private BLOB NOT NULL, public BLOB NOT NULL, auth BLOB NOT NULL);
)";

}  // namespace

RegistrationStore::RegistrationStore(const Database& database) : database_(database) {
  database_.execute(kSchema);
}

std::optional<Registration> RegistrationStore::load() const {
  return attempt("the registration cannot be read", std::optional<Registration>(), [&] {
    Statement statement(
        database_,
        "SELECT distributor, token, endpoint, private, public, auth FROM registration WHERE row = 1");
    std::optional<Registration> registration;
    if (statement.step()) {
      registration = Registration{statement.text(0),
                                  statement.text(1),
                                  statement.text(2),
                                  {QXPlatform::Data(statement.text(3)), QXPlatform::Data(statement.text(4)),
                                   QXPlatform::Data(statement.text(5))}};
    }
    return registration;
  });
}

bool RegistrationStore::save(const Registration& registration) const {
  return attempt("the registration cannot be kept", false, [&] {
    // What it is sealed for must not be lost while the distributor remembers it.
    database_.write(Database::Outlives::powerCut);
    Statement(database_, "INSERT OR REPLACE INTO registration VALUES (1, ?, ?, ?, ?, ?, ?)")
        .bind(std::string_view(registration.distributor))
        .bind(std::string_view(registration.token))
        .bind(std::string_view(registration.endpoint))
        .bindBytes(registration.keys.privateKey.view())
        .bindBytes(registration.keys.publicKey.view())
        .bindBytes(registration.keys.auth.view())
        .run();
    return true;
  });
}

void RegistrationStore::remove() const {
  attempt("the registration cannot be removed", [&] { database_.execute("DELETE FROM registration"); });
}

}  // namespace QXAgent
