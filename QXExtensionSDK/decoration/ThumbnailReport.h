#pragma once

#include <atomic>

#include "QXExtensionSDK/runtime/logging/Logger.h"

namespace QXExtensionSDK {

// Says why a push's thumbnail is missing, in the one line that a developer who logs errors gets to see; what
// went wrong on the way is logged as detail beside it. One a push. Any thread.
class ThumbnailReport {
 public:
  // The first reason counts.
  template <LogPiece... Pieces>
  void notAttached(Pieces&&... reason) {
    if (isGiven_.exchange(true)) return;
    Logger::service().error(LogCategory::serviceGeneral, "Thumbnail not attached: ", reason...);
  }

  void setDownloading(bool isDownloading) { isDownloading_ = isDownloading; }
  void timeHasExpired() {
    if (isDownloading_) notAttached("its download takes longer than the time limit");
  }

 private:
  std::atomic<bool> isGiven_ = false;
  std::atomic<bool> isDownloading_ = false;
};

}  // namespace QXExtensionSDK
