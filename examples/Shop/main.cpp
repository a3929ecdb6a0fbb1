// A whole host: an app whose pushes the delivery agent receives while it does not run, shows by way of the
// app's two extensions, and opens it with when the user has chosen one.

#include <QApplication>
#include <cstdio>

#include "DesktopApplication.h"
#include "PushEndpoint.h"
#include "SharedContainer.h"
#include "ShopWindow.h"

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setDesktopFileName("com.example.Shop");
  if (!shop::prepareContainer()) {
    std::fputs("shop: the container shared with the extensions cannot be made\n", stderr);
    return 1;
  }

  shop::ShopWindow window;
  shop::DesktopApplication desktop(&application, [&](const QString& action, const QString& subject) {
    window.showOpened(action, subject);
  });
  if (!desktop.claim()) return 0;
  const shop::PushEndpoint endpoint([&](const QString& url) { window.showEndpoint(url); });
  window.showOpened({}, {});
  return QApplication::exec();
}
