#include "bench/BareJSON.h"

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

namespace bench {

// In storage that is let go at once, the library's own fast way.
struct BareTree::Tree {
  explicit Tree(std::string_view text) : root(boost::json::parse({text.data(), text.size()}, &storage)) {}

  boost::json::monotonic_resource storage;
  boost::json::value root;
};

BareTree::BareTree(std::string_view text) : tree_(new Tree(text)) {}
BareTree::~BareTree() = default;

std::string BareTree::text() const {
  return boost::json::serialize(tree_->root);
}

bool bareParse(std::string_view text) {
  boost::json::error_code error;
  boost::json::monotonic_resource storage;
  const boost::json::value tree = boost::json::parse({text.data(), text.size()}, error, &storage);
  return !error && !tree.is_null();
}

}  // namespace bench
