#include "bench/BareJSON.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

namespace bench {

struct BareTree::Tree {
  boost::json::value root;
};

BareTree::BareTree(std::string_view text) : tree_(new Tree{boost::json::parse({text.data(), text.size()})}) {}
BareTree::~BareTree() = default;

std::string BareTree::text() const {
  return boost::json::serialize(tree_->root);
}

bool bareParse(std::string_view text) {
  boost::json::error_code error;
  const boost::json::value tree = boost::json::parse({text.data(), text.size()}, error);
  return !error && !tree.is_null();
}

}  // namespace bench
