#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "agent/presentation/Banner.h"

namespace QXAgent {

// What may befall a notification that is shown.
struct PresenterEvents {
  // `action`: "default", the notification itself, or "expand"; `activationToken` may be empty.
  std::function<void(std::uint32_t id, const std::string& action, const std::string& activationToken)>
      invoked;
  std::function<void(std::uint32_t id)> closed;
  // Whoever shows notifications has come or gone: those of another session than this are no more.
  std::function<void()> sessionChanged;
};

// Shows notifications. A number for a notification is good within one session.
class Presenter {
 public:
  enum class End {
    shown,
    refused,  // whoever shows notifications does not want this one
    failed,   // nobody shows it now
  };
  struct Outcome {
    End end;
    std::uint32_t id;     // its number, when it is shown
    std::string problem;  // when it is not
  };
  using Completion = std::function<void(const Outcome&)>;

  virtual ~Presenter() = default;

  // Names this run of whoever shows notifications; empty while there is none.
  virtual const std::string& session() const = 0;
  // Whether it is known who that is; a change to that is a change of the session.
  virtual bool knowsSession() const = 0;
  // Calls back once, as late as the other side answers. `replaces`: the number of the one whose place it
  // takes, or 0.
  virtual void show(const Banner& banner, std::uint32_t replaces, Completion completion) = 0;
  virtual void close(std::uint32_t id) = 0;
};

}  // namespace QXAgent
