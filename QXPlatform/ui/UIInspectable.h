#pragma once

#include <functional>
#include <string_view>

#include "QXPlatform/foundation/Value.h"

namespace QXPlatform {

// What a view controller lets a simulator see and do beyond what the system sees of it and does to it. Main
// thread.
class UIInspectable {
 public:
  using StepHandler = std::function<void(std::string_view step)>;

  virtual ~UIInspectable() = default;

  // How it stands; `isShown`: whether it takes any room.
  virtual Dictionary inspect(bool isShown) const = 0;
  // Does what a user, or time, does by a step of that name, with all that comes of it; nothing for a step
  // that it does not know.
  virtual void take(std::string_view step) = 0;
  // Whether something is on its way that will change its looks.
  virtual bool isLoading() const = 0;
  // Called after each step that a user or time has taken by itself and that moved something.
  virtual void setStepHandler(StepHandler handler) = 0;
};

}  // namespace QXPlatform
