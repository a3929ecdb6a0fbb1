#include "QXPlatform/ui/ContentExtensionWindow.h"

#include <QLabel>
#include <QScrollArea>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWidget>
#include <algorithm>
#include <utility>

#include "QXPlatform/ui/Appearance.h"

namespace QXPlatform {

namespace {

constexpr int kNotesMargin = 12;
constexpr int kMostNotesHeight = 220;
constexpr double kNotesPointSize = 13;

// Legible on both appearances' surface.
const char* colorOf(WindowNote::Kind kind, UserInterfaceStyle style) {
  const bool isDark = style == UserInterfaceStyle::dark;
  switch (kind) {
    case WindowNote::Kind::error:
      return isDark ? "#FF6961" : "#C4271B";
    case WindowNote::Kind::warning:
      return isDark ? "#FFB340" : "#8F5300";
    case WindowNote::Kind::remark:
      return isDark ? "#AEAEB2" : "#58585D";
  }
  return "";
}

QString markUp(const WindowNote& note, UserInterfaceStyle style) {
  const char* sign = note.kind == WindowNote::Kind::remark ? "" : "● ";
  return QStringLiteral("<p style=\"margin: 0 0 6px 0\"><span style=\"color: %1\">%2</span>%3</p>")
      .arg(colorOf(note.kind, style), sign, QString::fromStdString(note.text).toHtmlEscaped());
}

}  // namespace

ContentExtensionWindow::ContentExtensionWindow(ContentExtensionHost& host, const std::string& title)
    : host_(host), window_(std::make_unique<QWidget>()) {
  window_->setWindowTitle(QString::fromStdString(title));
  auto* layout = new QVBoxLayout(window_.get());
  layout->setContentsMargins({});
  layout->setSpacing(0);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  layout->addWidget(&host.view());
  notesText_ = new QLabel;
  notesText_->setTextFormat(Qt::RichText);
  notesText_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  notesText_->setWordWrap(true);
  notesText_->setAlignment(Qt::AlignTop | Qt::AlignLeading);
  notesText_->setFont(systemFont(SystemFontStyle::regular, kNotesPointSize));
  notesText_->setContentsMargins(kNotesMargin, kNotesMargin, kNotesMargin, kNotesMargin / 2);
  notes_ = new QScrollArea;
  notes_->setFrameShape(QFrame::NoFrame);
  notes_->setFocusPolicy(Qt::NoFocus);
  notes_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  notes_->setWidgetResizable(true);
  notes_->setWidget(notesText_);
  notes_->hide();
  layout->addWidget(notes_);
  new QShortcut(QKeySequence(Qt::Key_Escape), window_.get(), window_.get(), &QWidget::close);
}

ContentExtensionWindow::~ContentExtensionWindow() {
  host_.setDefaultActionHandler({});
  // It is the host's.
  host_.view().setParent(nullptr);
}

void ContentExtensionWindow::setNotes(const std::vector<WindowNote>& notes) {
  QString text;
  for (const WindowNote& note : notes) text += markUp(note, userInterfaceStyle(*window_));
  notesText_->setText(text);
  const int width = static_cast<int>(host_.contentSize().width);
  notes_->setFixedSize(width, std::min(notesText_->heightForWidth(width), kMostNotesHeight));
  notes_->setVisible(!notes.empty());
}

void ContentExtensionWindow::open(std::function<void()> performed) {
  host_.setDefaultActionHandler(std::move(performed));
  window_->show();
  // Hands the token to the system.
  window_->activateWindow();
}

void ContentExtensionWindow::close() {
  window_->close();
}

}  // namespace QXPlatform
