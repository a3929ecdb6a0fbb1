#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace bench {

// The bare library's tree of a text, for the floors that parsing and writing are measured by.
class BareTree {
 public:
  explicit BareTree(std::string_view text);
  ~BareTree();
  BareTree(const BareTree&) = delete;
  BareTree& operator=(const BareTree&) = delete;

  std::string text() const;

 private:
  struct Tree;
  const std::unique_ptr<const Tree> tree_;
};

// Builds a tree and drops it again; whether the text is JSON.
bool bareParse(std::string_view text);

}  // namespace bench
