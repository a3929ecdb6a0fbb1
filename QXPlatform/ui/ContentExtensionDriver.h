#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "QXPlatform/foundation/Result.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/ui/ContentExtensionHost.h"
#include "QXPlatform/ui/ContentExtensionWindow.h"

namespace QXPlatform {

// Plays the user of a content extension, command by command. Main thread.
//
//   {"step": "load", "request": {...}}      shows the notification; the step may be called otherwise
//   {"step": "look", "dark": true, "rightToLeft": true, "textScale": 2}
//                                           how things look from now on, texts from the next load on
//   {"step": "wait", "milliseconds": 500}   lets time pass, then what is still loading end
//   {"step": "draw", "file": "/a/b.png"}    draws the view as it stands; a .webp takes less room
//   {"step": "open", "title": "...", "staysOpen": true}
//                                           opens a window, which stays or goes when its panel is tapped, and
//                                           whose end is the application's
//   {"step": "note", "notes": [{"kind": "error" | "warning" | "remark", "text": "..."}]}
//                                           writes into the window, in place of the notes before
//   {"step": "next"}                        any other step is the view controller's
//
// The answer says how the extension stands then:
//
//   {"step", "outcome": "carousel" | "collapsed", "preferredContentSize": [360, 412],
//    "defaultActionPerformed": false, "responseOption": "dismissAndForwardAction", ...}
//
// with what the view controller says of itself where it is UIInspectable.
class ContentExtensionDriver {
 public:
  // `stepTaken` hears how the extension stands after each step that is taken in the window. The host must
  // outlive this object.
  ContentExtensionDriver(ContentExtensionHost& host, std::function<void(const Dictionary&)> stepTaken);

  // An error says what was refused: a request that is none, or a file that cannot be written.
  Result<Dictionary> carryOut(const Dictionary& command);

 private:
  Dictionary state(std::string_view step);
  std::optional<Error> deliver(const Value& request);
  std::optional<Error> draw(const std::string& file);
  void wait(std::chrono::milliseconds time);
  void open(const Dictionary& command);
  void note(const Value& notes);

  ContentExtensionHost& host_;
  const std::function<void(const Dictionary&)> stepTaken_;
  std::unique_ptr<ContentExtensionWindow> window_;
};

}  // namespace QXPlatform
