#pragma once

#include <QWidget>

namespace QXPlatform {

// A row of dots, one a page, that says which page is shown. When there are more than fit, those around the
// current one are shown and get smaller towards where more follow. Main thread.
class UIPageControl final : public QWidget {
 public:
  explicit UIPageControl(QWidget* parent);

  void setNumberOfPages(int pages);
  // From 0.
  void setCurrentPage(int page);
  int numberOfPages() const { return pages_; }
  int currentPage() const { return current_; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  int pages_ = 0;
  int current_ = 0;
};

}  // namespace QXPlatform
