#pragma once

#include <QColor>
#include <QFont>
#include <string>

#include "QXExtensionSDK/content/TextComponent.h"
#include "QXExtensionSDK/payload/Color.h"
#include "QXPlatform/ui/UILabel.h"

namespace QXExtensionSDK {

// The view model's plain values as the view toolkit's.
QColor toQColor(Color color);
QFont toQFont(const Font& font);

// Shows the text in the label.
void configureLabel(QXPlatform::UILabel& label, const TextComponent& component);

// A vector image of the framework's bundle, such as "failure_image".
QString bundleImage(const char* name);

}  // namespace QXExtensionSDK
