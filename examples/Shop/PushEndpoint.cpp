#include "PushEndpoint.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <utility>

namespace shop {

namespace {

constexpr const char* kAgent = "com.example.Shop.Push";
constexpr const char* kPath = "/push";
constexpr const char* kInterface = "com.veltro.quorix.Push1";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

}  // namespace

PushEndpoint::PushEndpoint(Changed changed) : changed_(std::move(changed)) {
  QDBusConnection::sessionBus().connect(kAgent, kPath, kProperties, "PropertiesChanged", this,
                                        SLOT(propertiesChanged(QString, QVariantMap, QStringList)));
  ask();
}

void PushEndpoint::propertiesChanged(const QString& interface, const QVariantMap& changed,
                                     const QStringList& invalidated) {
  if (interface != kInterface) return;
  if (changed.contains("Endpoint")) changed_(changed.value("Endpoint").toString());
  if (invalidated.contains("Endpoint")) ask();
}

void PushEndpoint::ask() {
  auto question = QDBusMessage::createMethodCall(kAgent, kPath, kProperties, "Get");
  question << kInterface << "Endpoint";
  const auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* ended) {
    const QDBusPendingReply<QDBusVariant> answer = *ended;
    ended->deleteLater();
    if (answer.isError()) return;
    const QString endpoint = answer.value().variant().toString();
    changed_(endpoint);
    // The first start of the app is the time to ask for one; the answer comes as a change.
    if (endpoint.isEmpty()) {
      QDBusConnection::sessionBus().asyncCall(
          QDBusMessage::createMethodCall(kAgent, kPath, kInterface, "Register"));
    }
  });
}

}  // namespace shop
