#include "bench/BareJSON.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

namespace bench {

bool bareParse(std::string_view text) {
  boost::json::error_code error;
  const boost::json::value tree = boost::json::parse({text.data(), text.size()}, error);
  return !error && !tree.is_null();
}

}  // namespace bench
