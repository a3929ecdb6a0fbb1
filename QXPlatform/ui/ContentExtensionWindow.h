#pragma once

#include <functional>
#include <string>
#include <vector>

#include "QXPlatform/ui/ContentExtensionHost.h"

class QLabel;
class QScrollArea;
class QWidget;

namespace QXPlatform {

// A line under an extension's view that is not the extension's own.
struct WindowNote {
  enum class Kind { error, warning, remark };

  Kind kind;
  std::string text;
};

// A window of the size that the extension's view takes, in front where the activation token that the
// environment holds allows it. Main thread.
class ContentExtensionWindow {
 public:
  // The host must outlive this object, and its view is in no other window.
  ContentExtensionWindow(ContentExtensionHost& host, const std::string& title);
  ~ContentExtensionWindow();
  ContentExtensionWindow(const ContentExtensionWindow&) = delete;
  ContentExtensionWindow& operator=(const ContentExtensionWindow&) = delete;

  // In place of the notes before.
  void setNotes(const std::vector<WindowNote>& notes);
  // Shows it; the application ends when it is closed, which Escape does as well. `performed` is called when
  // the extension performs its default action.
  void open(std::function<void()> performed);
  void close();

 private:
  ContentExtensionHost& host_;
  const std::unique_ptr<QWidget> window_;
  // Owned by the window.
  QScrollArea* notes_ = nullptr;
  QLabel* notesText_ = nullptr;
};

}  // namespace QXPlatform
