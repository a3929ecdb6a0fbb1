#include "DesktopApplication.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <utility>

namespace shop {

namespace {

constexpr const char* kName = "com.example.Shop";
constexpr const char* kPath = "/com/example/Shop";

// What lets the window come to the front: the desktop's word that the user has asked for it.
void useActivationToken(const QVariantMap& platformData) {
  const QByteArray token = platformData.value("activation-token").toString().toUtf8();
  if (!token.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", token);
}

}  // namespace

DesktopApplication::DesktopApplication(QObject* parent, Opened opened)
    : QDBusAbstractAdaptor(parent), opened_(std::move(opened)) {}

bool DesktopApplication::claim() {
  auto bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return true;
  bus.registerObject(kPath, parent());
  if (bus.registerService(kName)) return true;
  auto call = QDBusMessage::createMethodCall(kName, kPath, "org.freedesktop.Application", "Activate");
  call << QVariantMap();
  bus.call(call);
  return false;
}

void DesktopApplication::Activate(const QVariantMap& platformData) {
  useActivationToken(platformData);
  opened_({}, {});
}

void DesktopApplication::Open(const QStringList& uris, const QVariantMap& platformData) {
  useActivationToken(platformData);
  opened_("open", uris.join(' '));
}

void DesktopApplication::ActivateAction(const QString& action, const QVariantList& parameters,
                                        const QVariantMap& platformData) {
  useActivationToken(platformData);
  opened_(action, parameters.value(0).toString());
}

}  // namespace shop
