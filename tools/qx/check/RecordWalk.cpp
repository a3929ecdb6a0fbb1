#include "tools/qx/check/RecordWalk.h"

#include <cstddef>
#include <optional>
#include <tuple>
#include <variant>

#include "QXExtensionSDK/payload/CarouselModel.h"
#include "QXPlatform/foundation/JSONCoding.h"
#include "QXPlatform/notifications/NotificationRecords.h"
#include "tools/qx/check/Places.h"

namespace qx {

namespace {

using QXExtensionSDK::ActionSerDeWrapper;
using QXPlatform::Value;
using Visit = std::function<void(const RecordInPlace&)>;

// How to walk what is read as a T; as it stands, a leaf.
template <typename T>
struct Walk {
  static void over(const Value&, std::string_view, const Visit&) {}
};

template <typename T>
struct Walk<std::optional<T>> : Walk<T> {};

template <typename T>
struct Walk<std::vector<T>> {
  static void over(const Value& value, std::string_view place, const Visit& visit) {
    const auto elements = value.elements();
    for (std::size_t i = 0; i < elements.size(); ++i) {
      Walk<T>::over(elements[i], elementPlace(place, i), visit);
    }
  }
};

template <QXPlatform::JSONRecord T>
struct Walk<T> {
  static void over(const Value& value, std::string_view place, const Visit& visit) {
    const auto object = value.dictionary();
    if (!object) return;
    const auto visitAll = [&](const auto&... field) {
      visit({*object, std::string(place), {field.key...}});
      (overField(*object, place, field, visit), ...);
    };
    constexpr auto kFields = QXPlatform::JSONRecordAccess::fields<T>();
    std::apply(visitAll, kFields);
  }

 private:
  template <typename Record, typename Member>
  static void overField(const QXPlatform::Dictionary& object, std::string_view place,
                        const QXPlatform::JSONField<Record, Member>& field, const Visit& visit) {
    const Value* value = object.find(field.key);
    if (value != nullptr) Walk<Member>::over(*value, memberPlace(place, field.key), visit);
  }
};

// Which record an action is, its own type says.
template <>
struct Walk<ActionSerDeWrapper> {
  static void over(const Value& value, std::string_view place, const Visit& visit) {
    const auto wrapper = QXPlatform::decodeValue<ActionSerDeWrapper>(value);
    if (!wrapper) return;
    std::visit([&]<typename Record>(const Record&) { Walk<Record>::over(value, place, visit); },
               wrapper->action);
  }
};

}  // namespace

void walkRecords(const Value& richFeatures, std::string_view place, const Visit& visit) {
  Walk<QXExtensionSDK::CarouselModel>::over(richFeatures, place, visit);
}

void walkRequest(const QXPlatform::Dictionary& request, const Visit& visit) {
  Walk<QXPlatform::RequestRecord>::over(request, "", visit);
}

}  // namespace qx
