#pragma once

#include <QWidget>

class QLineEdit;
class QVBoxLayout;

namespace shop {

// What the app knows of its pushes: where they are to be sent, what it was opened with, what was tapped last.
class ShopWindow final : public QWidget {
 public:
  ShopWindow();

  void showEndpoint(const QString& endpoint);
  // Comes to the front with what the user chose; both are empty for a plain start.
  void showOpened(const QString& action, const QString& subject);

 private:
  QLineEdit* addRow(const QString& name, const QString& value);

  QVBoxLayout* column_;
  QLineEdit* endpoint_;
  QLineEdit* opened_;
  QLineEdit* click_;
};

}  // namespace shop
