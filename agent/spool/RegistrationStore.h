#pragma once

#include <optional>
#include <string>

#include "agent/spool/Database.h"
#include "agent/webpush/WebPush.h"

namespace QXAgent {

// The app's place at a distributor.
struct Registration {
  std::string distributor;  // bus name
  std::string token;        // ours, made once
  std::string endpoint;     // empty until the distributor has given one
  SubscriptionKeys keys;
};

// The registration that holds, and the one that takes its place as soon as it has an endpoint.
struct Registrations {
  std::optional<Registration> current;
  std::optional<Registration> next;
  bool isWanted = false;  // whether there is to be one, even while there is none
};

// Keeps an app's registrations.
class RegistrationStore {
 public:
  // The database must outlive the store. Throws DatabaseError.
  explicit RegistrationStore(const Database& database);

  // Throws DatabaseError: one that cannot be read now is not one that never was.
  Registrations load() const;
  // False, which is logged, when they could not be kept: all is as before.
  bool save(const Registrations& registrations) const;

 private:
  const Database& database_;
};

}  // namespace QXAgent
