#include "QXExtensionSDK/content/ViewConversions.h"

#include <QString>

#include "QXPlatform/ui/Appearance.h"

// Pulls the images out of a static library; must stand outside every namespace.
static void loadBundleImages() {
  Q_INIT_RESOURCE(images);
}

namespace QXExtensionSDK {

namespace {

QXPlatform::SystemFontStyle toSystemStyle(FontStyle style) {
  switch (style) {
    case FontStyle::regular:
      return QXPlatform::SystemFontStyle::regular;
    case FontStyle::bold:
      return QXPlatform::SystemFontStyle::bold;
    case FontStyle::italic:
      return QXPlatform::SystemFontStyle::italic;
  }
  return QXPlatform::SystemFontStyle::regular;
}

QXPlatform::UILabel::Alignment toLabelAlignment(TextAlignment alignment) {
  switch (alignment) {
    case TextAlignment::beginning:
      return QXPlatform::UILabel::Alignment::leading;
    case TextAlignment::center:
      return QXPlatform::UILabel::Alignment::center;
    case TextAlignment::end:
      return QXPlatform::UILabel::Alignment::trailing;
  }
  return QXPlatform::UILabel::Alignment::leading;
}

}  // namespace

QColor toQColor(Color color) {
  return QColor::fromRgbF(static_cast<float>(color.red()), static_cast<float>(color.green()),
                          static_cast<float>(color.blue()));
}

QFont toQFont(const Font& font) {
  return QXPlatform::systemFont(toSystemStyle(font.style), font.pointSize);
}

void configureLabel(QXPlatform::UILabel& label, const TextComponent& component) {
  label.setText(QString::fromStdString(component.text));
  label.setTextFont(toQFont(component.font));
  label.setTextColor(toQColor(component.textColor));
  label.setAlignment(toLabelAlignment(component.textAlignment));
}

QString bundleImage(const char* name) {
  [[maybe_unused]] static const bool loaded = (loadBundleImages(), true);
  return QStringLiteral(":/QXExtensionSDK/content/%1.svg").arg(QLatin1String(name));
}

}  // namespace QXExtensionSDK
