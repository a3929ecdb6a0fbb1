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
};

// Keeps an app's registrations. As the spool: what fails is logged, and what was to be read is absent.
class RegistrationStore {
 public:
  // The database must outlive the store. Throws DatabaseError.
  explicit RegistrationStore(const Database& database);

  Registrations load() const;
  // False when they could not be kept: both are as before.
  bool save(const Registrations& registrations) const;

 private:
  const Database& database_;
};

}  // namespace QXAgent
