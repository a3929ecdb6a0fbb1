#pragma once

#include <QAccessible>
#include <QWidget>
#include <functional>

namespace QXPlatform {

// What assistive technology is told about a view, beside its accessible name.
struct Accessibility {
  QAccessible::Role role = QAccessible::Client;
  // What "press" does; empty for a view that cannot be pressed.
  std::function<void()> press = {};
  // False for what is told already, such as by the name of a view around it.
  bool isElement = true;
};

// REQUIRES: called before anyone has asked for the view's accessible object.
void setAccessibility(QWidget& view, Accessibility accessibility);

}  // namespace QXPlatform
