#include "QXPlatform/ui/Accessibility.h"

#include <QAccessibleWidget>
#include <QVariant>
#include <memory>
#include <utility>

namespace QXPlatform {

namespace {

constexpr const char* kProperty = "platform_accessibility";

using Shared = std::shared_ptr<const Accessibility>;

class AccessibleView final : public QAccessibleWidget {
 public:
  AccessibleView(QWidget* view, Shared accessibility)
      : QAccessibleWidget(view, accessibility->role), accessibility_(std::move(accessibility)) {}

  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    if (!accessibility_->isElement) state.invisible = true;
    return state;
  }

  QStringList actionNames() const override {
    QStringList names = QAccessibleWidget::actionNames();
    if (accessibility_->press) names.prepend(pressAction());
    return names;
  }

  void doAction(const QString& name) override {
    if (name == pressAction() && accessibility_->press) return accessibility_->press();
    QAccessibleWidget::doAction(name);
  }

 private:
  const Shared accessibility_;
};

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
  auto* view = qobject_cast<QWidget*>(object);
  if (view == nullptr) return nullptr;
  const auto accessibility = view->property(kProperty).value<Shared>();
  return accessibility == nullptr ? nullptr : new AccessibleView(view, accessibility);
}

}  // namespace

void setAccessibility(QWidget& view, Accessibility accessibility) {
  static const bool installed = [] {
    QAccessible::installFactory(makeInterface);
    return true;
  }();
  static_cast<void>(installed);
  view.setProperty(kProperty,
                   QVariant::fromValue(Shared(std::make_shared<Accessibility>(std::move(accessibility)))));
}

}  // namespace QXPlatform
