#include "NotificationService.h"

int main(int argc, char** argv) {
  return QXPlatform::serviceExtensionMain<NotificationService>(argc, argv);
}
