#pragma once

#include <QDBusAbstractAdaptor>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <functional>

namespace shop {

// The app on the session bus, as desktop entries with DBusActivatable=true promise it: the desktop starts the
// app by calling one of these, and a notification's action comes as `ActivateAction("notification",
// [identifier])`.
class DesktopApplication final : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  // The action's name and what it is about; both empty for a plain start.
  using Opened = std::function<void(const QString& action, const QString& subject)>;

  DesktopApplication(QObject* parent, Opened opened);

  // Takes the app's name on the bus. False when another instance has it, which is then brought to the front.
  bool claim();

 public slots:
  void Activate(const QVariantMap& platformData);
  void Open(const QStringList& uris, const QVariantMap& platformData);
  void ActivateAction(const QString& action, const QVariantList& parameters, const QVariantMap& platformData);

 private:
  Opened opened_;
};

}  // namespace shop
