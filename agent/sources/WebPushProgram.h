#pragma once

#include <string>
#include <string_view>

#include "QXPlatform/foundation/Result.h"
#include "agent/webpush/WebPush.h"

namespace QXAgent {

// Keys and messages by way of the program that knows about cryptography. Both wait for it, which takes some
// milliseconds.
QXPlatform::Result<SubscriptionKeys> makeKeysApart();

// Why a message has not been opened.
struct OpeningFailure {
  std::string reason;
  bool isFinal;  // it is the message; else the program cannot be run or comes to no end
};
QXPlatform::Result<std::string, OpeningFailure> openApart(const SubscriptionKeys& keys,
                                                          std::string_view sealed);

}  // namespace QXAgent
