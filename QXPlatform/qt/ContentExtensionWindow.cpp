#include "QXPlatform/ui/ContentExtensionWindow.h"

#include <QApplication>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWidget>

namespace QXPlatform {

void runInWindow(ContentExtensionHost& host, const std::string& title,
                 const std::function<void()>& performed) {
  QWidget window;
  window.setWindowTitle(QString::fromStdString(title));
  QVBoxLayout layout(&window);
  layout.setContentsMargins({});
  layout.setSizeConstraint(QLayout::SetFixedSize);
  layout.addWidget(&host.view());
  const QShortcut close(QKeySequence(Qt::Key_Escape), &window, &window, &QWidget::close);
  host.setDefaultActionHandler([&] {
    performed();
    window.close();
  });
  window.show();
  // Hands the token to the system.
  window.activateWindow();
  QApplication::exec();
  host.setDefaultActionHandler({});
  layout.removeWidget(&host.view());
  host.view().setParent(nullptr);
}

}  // namespace QXPlatform
