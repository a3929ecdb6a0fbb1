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

// Keeps the one registration of an app. As the spool: what fails is logged, and what was to be read is
// absent.
class RegistrationStore {
 public:
  // The database must outlive the store. Throws DatabaseError.
  explicit RegistrationStore(const Database& database);

  std::optional<Registration> load() const;
  // False when it could not be kept.
  bool save(const Registration& registration) const;
  void remove() const;

 private:
  const Database& database_;
};

}  // namespace QXAgent
