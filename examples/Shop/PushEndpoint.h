#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <functional>

namespace shop {

// Where this app's pushes are to be sent, as the delivery agent has it: the bus starts the agent when it is
// asked. An app with a back end of its own would tell it of every change.
class PushEndpoint final : public QObject {
  Q_OBJECT

 public:
  // Empty as long as there is none; otherwise the URL.
  using Changed = std::function<void(const QString& endpoint)>;

  explicit PushEndpoint(Changed changed);

 private slots:
  void propertiesChanged(const QString& interface, const QVariantMap& changed,
                         const QStringList& invalidated);

 private:
  void ask();

  Changed changed_;
};

}  // namespace shop
