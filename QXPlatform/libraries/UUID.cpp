#include "QXPlatform/foundation/UUID.h"

#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include "QXPlatform/foundation/ASCII.h"

namespace QXPlatform {

// The generator without a state of its own: one question to the system's random numbers, from any thread.
std::string makeUUIDString() {
  return uppercased(to_string(boost::uuids::random_generator_pure()()));
}

}  // namespace QXPlatform
