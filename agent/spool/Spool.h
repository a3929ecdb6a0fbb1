#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/spool/Database.h"

namespace QXAgent {

// A push that has been taken and not yet been shown.
struct WaitingPush {
  std::int64_t number;  // in the order of arrival
  std::string identifier;
  std::string text;                   // as it came
  int deaths;                         // how often the extension died with it in hand
  std::optional<std::string> answer;  // what the extension made of it: a notification's content as JSON
};

// A notification that the desktop shows.
struct ShownNotification {
  std::string identifier;
  std::string server;                        // which run of which notification server
  std::uint32_t id;                          // that server's number for it
  std::string content;                       // as JSON
  std::vector<std::filesystem::path> files;  // to be removed with it
};

// How many pushes came to what.
struct Account {
  std::int64_t received = 0;
  std::int64_t shown = 0;
  std::int64_t waiting = 0;
  std::int64_t refused = 0;
  std::int64_t putAside = 0;
  std::optional<std::string> lastError;
};

// The file of the agent's database in the app's state directory.
inline constexpr const char* kDatabaseName = "spool.sqlite";

// What must outlive a crash of the agent: the pushes that wait, the notifications that are shown, and the
// count of all. Written by one agent at a time, read by anybody.
//
// What fails for want of room or a damaged file changes nothing; it is logged, and what was to be read is
// then absent. Nor is there room for another push once there are 64 MiB in all.
class Spool {
 public:
  enum class Reception { taken, repeated, failed };

  // The database must outlive the spool. Throws DatabaseError.
  explicit Spool(const Database& database);

  // Keeps a push; on disk, whatever happens, when this returns. `key` tells a repetition; empty: never one.
  Reception take(std::string_view key, std::string_view identifier, std::string_view text);
  // Keeps what is no push, with the reason; the oldest go.
  Reception putAside(std::string_view key, std::string_view text, std::string_view reason);
  // The same for a push that was taken.
  void putAsideWaiting(std::int64_t number, std::string_view reason);
  void countRefusal(std::string_view reason);
  void noteError(std::string_view reason);

  // The oldest of those after `number`, in order.
  std::vector<WaitingPush> waitingAfter(std::int64_t number, std::size_t limit);
  void recordAnswer(std::int64_t number, std::string_view content);
  void recordDeath(std::int64_t number);
  // The push has become a notification. One of the same identifier is forgotten, and the oldest when there
  // are too many: returns the files that are to be removed with them.
  std::vector<std::filesystem::path> recordShown(std::int64_t number, const ShownNotification& notification);

  std::optional<ShownNotification> shown(std::string_view identifier);
  std::optional<ShownNotification> shown(std::string_view server, std::uint32_t id);
  std::vector<ShownNotification> allShown();
  bool hasShown();
  // Whether a file that came with the push of that number is still wanted; also when that cannot be told.
  bool isInUse(std::int64_t number, const std::filesystem::path& file);
  void forgetShown(std::string_view identifier);

  Account account();

 private:
  // Keeps the key among the newest; false for one that is there.
  bool isNew(std::string_view key) const;
  std::int64_t heldBytes() const;
  void insertAside(std::string_view text, std::string_view reason) const;
  void count(const char* column) const;
  std::optional<ShownNotification> firstShown(Statement& statement) const;

  const Database& database_;
};

}  // namespace QXAgent
