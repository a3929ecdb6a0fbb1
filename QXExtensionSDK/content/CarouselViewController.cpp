#include "QXExtensionSDK/content/CarouselViewController.h"

#include <QCoreApplication>
#include <QPointer>
#include <QStyle>
#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

#include "QXPlatform/ui/Accessibility.h"

namespace QXExtensionSDK {

namespace {

constexpr int kButtonSide = 32;
constexpr int kButtonMargin = 20;
constexpr int kBarHeight = 48;
constexpr int kPageControlGap = 12;

QString text(const char* source) {
  return QCoreApplication::translate("Carousel", source);
}

PanelChange panelChange(const ViewTemplateNavigationState& state) {
  if (!state.buttonClickState) return PanelChange::none;
  return *state.buttonClickState == NavigationButtonClickState::next ? PanelChange::forward
                                                                     : PanelChange::backward;
}

void addText(QStringList& parts, const std::optional<TextComponent>& component) {
  if (component && !component->text.empty()) parts << QString::fromStdString(component->text);
}

QString spokenPosition(std::int64_t index, std::size_t count) {
  return text("panel %1 of %2").arg(index + 1).arg(count);
}

// From an arrow that is about to be disabled to the other, before the toolkit takes the focus elsewhere.
void handFocusOn(CarouselButton& from, bool fromEnabled, CarouselButton& to, bool toEnabled) {
  if (fromEnabled || !toEnabled || from.window()->focusWidget() != &from) return;
  to.setEnabled(true);
  to.setFocus(Qt::TabFocusReason);
}

// Empty for a panel without any text.
QString spoken(const PanelItemComponent& panel) {
  QStringList parts;
  addText(parts, panel.title);
  addText(parts, panel.subTitle);
  if (parts.empty()) addText(parts, panel.media.altText);
  return parts.join(", ");
}

}  // namespace

CarouselViewController::CarouselViewController(const Logger& logger)
    : logger_(logger),
      session_(std::make_shared<QXPlatform::URLSession>(QXPlatform::URLSessionConfiguration())) {
  timer_.setTimerType(Qt::PreciseTimer);
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { timerFired(); });
}

CarouselViewController::~CarouselViewController() = default;

void CarouselViewController::setDelegate(std::weak_ptr<CarouselViewControllerDelegate> delegate) {
  delegate_ = std::move(delegate);
}

void CarouselViewController::viewDidLoad() {
  QWidget& root = view();
  root.setAutoFillBackground(true);
  QXPlatform::setAccessibility(root, {QAccessible::Grouping, {}});
  root.setAccessibleName(text("Carousel"));
  contentView_ = new CarouselContentView([this] { tapGesturePerformed(); }, &root);
  buttonContentView_ = new QWidget(&root);
  QXPlatform::setAccessibility(*buttonContentView_, {.role = QAccessible::Whitespace});
  pageControl_ = new QXPlatform::UIPageControl(buttonContentView_);
  // Over the bar, since their touch areas reach beyond it.
  backButton_ = new CarouselButton("left_arrow_enabled", "left_arrow_disabled", &root);
  nextButton_ = new CarouselButton("right_arrow_enabled", "right_arrow_disabled", &root);
  backButton_->setAccessibleName(text("Previous panel"));
  nextButton_->setAccessibleName(text("Next panel"));
  QObject::connect(backButton_, &QAbstractButton::clicked, &root, [this] { backButtonTapped(); });
  QObject::connect(nextButton_, &QAbstractButton::clicked, &root, [this] { nextButtonTapped(); });
}

void CarouselViewController::apply(const CarouselViewModel& viewModel) {
  view();
  const bool wasCollapsed = isCollapsed_;
  const bool hasNewPanels = viewModel.panels != viewModel_.panels;
  viewModel_ = viewModel;
  if (panelCount() > 0 && hasNewPanels) takePanels(viewModel.panels);
  // Without the panel the screen stays as it is, and takes no room when it has never shown any.
  if (isCurrentPanelThere()) {
    isCollapsed_ = false;
  } else if (laidOutPanels_ == nullptr) {
    isCollapsed_ = true;
  }
  applyNavigationState(viewModel.navigationState);
  applyPageIndicator();
  const bool isLaidOutAnew = laidOutPanels_ != viewModel_.panels && isCurrentPanelThere();
  if (isLaidOutAnew) {
    laidOutPanels_ = viewModel_.panels;
    panelsWidth_ = -1;
    layoutSubviews();
  }
  const bool isToBeSized =
      isLaidOutAnew || isCollapsed_ != wasCollapsed || neededSize() != preferredContentSize();
  if (isToBeSized) setPreferredContentSize(neededSize());
  showPanel();
  runTimerRules();
}

// A panel view goes on showing its image when the new panel has the same one.
void CarouselViewController::takePanels(const std::shared_ptr<const PanelItemComponents>& panels) {
  std::vector<std::shared_ptr<CarouselPanelView>> views(panelCount());
  for (std::size_t i = 0; i < std::min(views.size(), panelViews_.size()); ++i) {
    const auto& existing = panelViews_[i];
    if (existing != nullptr && existing->imageView().url() == (*panels)[i].media.url) views[i] = existing;
  }
  panelViews_ = std::move(views);
}

bool CarouselViewController::isCurrentPanelThere() const {
  return static_cast<std::size_t>(viewModel_.currentPanelIndex) < panelCount();
}

std::size_t CarouselViewController::panelCount() const {
  return viewModel_.panels == nullptr ? 0 : viewModel_.panels->size();
}

const CarouselPanelView* CarouselViewController::panelView(std::size_t index) const {
  return index < panelViews_.size() ? panelViews_[index].get() : nullptr;
}

bool CarouselViewController::isAnyImageDownloading() const {
  const auto isDownloading = [](const auto& panel) {
    return panel != nullptr && panel->imageView().imageLoadingState() == ImageLoadingState::downloading;
  };
  return isDownloading(contentView_->currentPanelView()) || std::ranges::any_of(panelViews_, isDownloading);
}

void CarouselViewController::applyNavigationState(const ViewTemplateNavigationState& state) {
  backButton_->setVisible(state.showNavigationButtons);
  nextButton_->setVisible(state.showNavigationButtons);
  // A key that moved the carousel to its end must not open the panel when it is pressed once more.
  handFocusOn(*backButton_, state.backButtonEnabled, *nextButton_, state.nextButtonEnabled);
  handFocusOn(*nextButton_, state.nextButtonEnabled, *backButton_, state.backButtonEnabled);
  backButton_->setEnabled(state.backButtonEnabled);
  nextButton_->setEnabled(state.nextButtonEnabled);
}

void CarouselViewController::applyPageIndicator() {
  const auto pages = static_cast<int>(panelCount());
  const int last = std::max(0, pages - 1);
  const auto page = static_cast<int>(std::clamp<std::int64_t>(viewModel_.currentPanelIndex, 0, last));
  pageControl_->setNumberOfPages(pages);
  pageControl_->setCurrentPage(page);
  pageControl_->setAccessibleName(spokenPosition(page, panelCount()));
  pageControl_->setVisible(pages >= 2);
  buttonContentView_->setVisible(pages >= 2);
}

void CarouselViewController::showPanel() {
  if (!isCurrentPanelThere()) {
    return logger_.error(LogCategory::ui, "Inavlid index in panel state setting");
  }
  const auto index = static_cast<std::size_t>(viewModel_.currentPanelIndex);
  const PanelItemComponent& panel = (*viewModel_.panels)[index];
  auto& panelView = panelViews_[index];
  if (panelView == nullptr) {
    panelView = std::make_shared<CarouselPanelView>(session_, static_cast<CarouselImageViewDelegate&>(*this),
                                                    logger_, contentView_);
  }
  panelView->setFrame(contentView_->panelFrame());
  panelView->setTextLayout(textLayout_);
  panelView->configure(panel, viewModel_.currentPanelIndex);
  contentView_->showPanel(panelView, panelChange(viewModel_.navigationState));
  const QString name = spoken(panel);
  contentView_->setAccessibleName(name.isEmpty() ? spokenPosition(viewModel_.currentPanelIndex, panelCount())
                                                 : name);
}

void CarouselViewController::runTimerRules() {
  const auto order = timerRules_.viewModelApplied(viewModel_);
  constexpr std::int64_t kLongest = std::numeric_limits<int>::max();
  if (order == CarouselTimerRules::Order::stop) timer_.stop();
  if (order == CarouselTimerRules::Order::start) {
    timer_.setInterval(static_cast<int>(std::min(viewModel_.timerInMilliSec, kLongest)));
  }
  // After a collapse it goes on at its own pace, whatever the view model of now says.
  const bool isToRun = timerRules_.state() == TimerState::running && !isCollapsed_;
  if (isToRun && !timer_.isActive()) timer_.start();
}

void CarouselViewController::collapse() {
  isCollapsed_ = true;
  timer_.stop();
  setPreferredContentSize(neededSize());
}

void CarouselViewController::viewDidLayoutSubviews() {
  layoutSubviews();
}

void CarouselViewController::traitCollectionDidChange() {
  if (contentView_ != nullptr) layoutSubviews();
}

bool CarouselViewController::pressesBegan(QXPlatform::UIKey key) {
  const bool isMirrored = view().layoutDirection() == Qt::RightToLeft;
  switch (key) {
    case QXPlatform::UIKey::left:
    case QXPlatform::UIKey::right:
      if (isMirrored == (key == QXPlatform::UIKey::left)) {
        nextButtonTapped();
      } else {
        backButtonTapped();
      }
      return true;
    case QXPlatform::UIKey::returnOrEnter:
      tapGesturePerformed();
      return true;
    case QXPlatform::UIKey::other:
      return false;
  }
  return false;
}

void CarouselViewController::layoutSubviews() {
  const int width = view().width();
  if (panelsWidth_ != width && laidOutPanels_ != nullptr) measurePanels(width);
  const int contentHeight = panelsHeight_ + 2 * CarouselContentView::kMargin;
  contentView_->setFrame({0, 0, width, contentHeight});

  const QRect bar(0, contentHeight - CarouselContentView::kMargin, width, kBarHeight);
  const auto direction = view().layoutDirection();
  const QRect back(kButtonMargin, bar.top() + (kBarHeight - kButtonSide) / 2, kButtonSide, kButtonSide);
  const QRect next = back.translated(width - 2 * kButtonMargin - kButtonSide, 0);
  backButton_->setBounds(QStyle::visualRect(direction, bar, back));
  nextButton_->setBounds(QStyle::visualRect(direction, bar, next));
  buttonContentView_->setGeometry(bar);
  const int inset = kButtonMargin + kButtonSide + CarouselButton::kTouchMargin + kPageControlGap;
  pageControl_->setGeometry(inset, 0, std::max(0, width - 2 * inset), kBarHeight);
  if (neededSize() != preferredContentSize()) setPreferredContentSize(neededSize());
}

void CarouselViewController::measurePanels(int width) {
  const int panelWidth = width - 2 * CarouselContentView::kMargin;
  panelsWidth_ = width;
  textLayout_ = CarouselPanelView::textLayoutForPanels(*laidOutPanels_, panelWidth);
  panelsHeight_ = CarouselPanelView::heightForPanels(textLayout_, panelWidth);
  if (const auto& shown = contentView_->currentPanelView()) shown->setTextLayout(textLayout_);
}

QXPlatform::Size CarouselViewController::neededSize() {
  constexpr double kCollapsedHeight = 1;
  const bool hasBar = panelCount() >= 2;
  const int height =
      panelsHeight_ + CarouselContentView::kMargin + (hasBar ? kBarHeight : CarouselContentView::kMargin);
  return {static_cast<double>(view().width()), isCollapsed_ ? kCollapsedHeight : static_cast<double>(height)};
}

std::shared_ptr<CarouselViewControllerDelegate> CarouselViewController::listeningDelegate() const {
  return isCollapsed_ ? nullptr : delegate_.lock();
}

void CarouselViewController::move(void (CarouselViewControllerDelegate::*request)(), std::string_view step) {
  const auto delegate = listeningDelegate();
  if (delegate == nullptr) return;
  const std::int64_t index = viewModel_.currentPanelIndex;
  // Whoever is told may close the extension, and this screen with it.
  const QPointer<const QTimer> alive(&timer_);
  ((*delegate).*request)();
  if (alive && stepHandler_ && viewModel_.currentPanelIndex != index) stepHandler_(step);
}

void CarouselViewController::backButtonTapped() {
  move(&CarouselViewControllerDelegate::backButtonTapped, "back");
}

void CarouselViewController::nextButtonTapped() {
  move(&CarouselViewControllerDelegate::nextButtonTapped, "next");
}

void CarouselViewController::timerFired() {
  move(&CarouselViewControllerDelegate::nextButtonTapped, "tick");
}

void CarouselViewController::tapGesturePerformed() {
  if (const auto delegate = listeningDelegate()) delegate->panelTapped();
}

void CarouselViewController::imageDownloadCompleted(std::int64_t panelIndex) {
  logger_.debug(LogCategory::ui, "Image download completion callback, Index=", panelIndex);
}

}  // namespace QXExtensionSDK
