#pragma once

#include <QTimer>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "QXExtensionSDK/content/CarouselButton.h"
#include "QXExtensionSDK/content/CarouselContentView.h"
#include "QXExtensionSDK/content/CarouselImageViewDelegate.h"
#include "QXExtensionSDK/content/CarouselPanelView.h"
#include "QXExtensionSDK/content/CarouselScreen.h"
#include "QXExtensionSDK/content/CarouselTimerRules.h"
#include "QXExtensionSDK/content/CarouselViewControllerDelegate.h"
#include "QXExtensionSDK/runtime/logging/Logger.h"
#include "QXPlatform/network/URLSession.h"
#include "QXPlatform/ui/UIPageControl.h"
#include "QXPlatform/ui/UIViewController.h"

namespace QXExtensionSDK {

// The carousel screen: one panel at a time, the arrows and the page indicator under it. All panels take the
// same height. Main thread.
class CarouselViewController final : public QXPlatform::UIViewController,
                                     public CarouselScreen,
                                     private CarouselImageViewDelegate {
 public:
  explicit CarouselViewController(const Logger& logger);
  ~CarouselViewController() override;

  void setDelegate(std::weak_ptr<CarouselViewControllerDelegate> delegate) override;
  void apply(const CarouselViewModel& viewModel) override;
  const CarouselViewModel& viewModel() const override { return viewModel_; }
  void collapse() override;
  QXPlatform::NSExtensionContext* extensionContext() const override {
    return UIViewController::extensionContext();
  }
  QXPlatform::UIViewController& viewController() override { return *this; }

  bool isCollapsed() const { return isCollapsed_; }
  TimerState timerState() const { return timerRules_.state(); }
  // Null for a panel that has not been shown yet, or does not exist.
  const CarouselPanelView* panelView(std::size_t index) const;
  bool isAnyImageDownloading() const;

  CarouselContentView& contentView() { return *contentView_; }
  CarouselButton& backButton() { return *backButton_; }
  CarouselButton& nextButton() { return *nextButton_; }
  // What a tap on the panel and a tick of the timer do.
  void tapGesturePerformed();
  void timerFired();
  // Told of each "next", "back" and "tick" that has moved the carousel.
  void setStepHandler(std::function<void(std::string_view)> handler) { stepHandler_ = std::move(handler); }

 protected:
  void viewDidLoad() override;
  void viewDidLayoutSubviews() override;
  void traitCollectionDidChange() override;
  bool pressesBegan(QXPlatform::UIKey key) override;

 private:
  void imageDownloadCompleted(std::int64_t panelIndex) override;

  // Null while the screen is collapsed, when nothing is reported.
  std::shared_ptr<CarouselViewControllerDelegate> listeningDelegate() const;
  void backButtonTapped();
  void nextButtonTapped();
  // Lets the delegate move the carousel, and tells of it when it did.
  void move(void (CarouselViewControllerDelegate::*request)(), std::string_view step);
  void takePanels(const std::shared_ptr<const PanelItemComponents>& panels);
  bool isCurrentPanelThere() const;
  std::size_t panelCount() const;
  void applyNavigationState(const ViewTemplateNavigationState& state);
  void applyPageIndicator();
  void showPanel();
  void runTimerRules();
  void layoutSubviews();
  void measurePanels(int width);
  QXPlatform::Size neededSize();

  const Logger& logger_;
  std::weak_ptr<CarouselViewControllerDelegate> delegate_;
  std::function<void(std::string_view)> stepHandler_;
  CarouselViewModel viewModel_;
  bool isCollapsed_ = false;
  CarouselTimerRules timerRules_;
  QTimer timer_;
  const std::shared_ptr<QXPlatform::URLSession> session_;
  // One a panel that there was last, made when the panel is first shown.
  std::vector<std::shared_ptr<CarouselPanelView>> panelViews_;
  // The panels that the screen is laid out for: the view model's, except while its index leads to none of
  // them and one of the panels before is still shown.
  std::shared_ptr<const PanelItemComponents> laidOutPanels_;
  PanelTextLayout textLayout_;
  int panelsHeight_ = 0;
  int panelsWidth_ = -1;  // that these were measured for

  // Owned by the view.
  CarouselContentView* contentView_ = nullptr;
  QWidget* buttonContentView_ = nullptr;
  QXPlatform::UIPageControl* pageControl_ = nullptr;
  CarouselButton* backButton_ = nullptr;
  CarouselButton* nextButton_ = nullptr;
};

}  // namespace QXExtensionSDK
