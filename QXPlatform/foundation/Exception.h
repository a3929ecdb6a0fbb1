#pragma once

#include <exception>
#include <string>
#include <utility>

namespace QXPlatform {

// The platform's exception object: what host code raises and the host-hook guard catches.
class Exception : public std::exception {
 public:
  Exception(std::string name, std::string reason) : name_(std::move(name)), reason_(std::move(reason)) {}

  const std::string& name() const { return name_; }
  const std::string& reason() const { return reason_; }
  const char* what() const noexcept override { return reason_.c_str(); }

 private:
  std::string name_;
  std::string reason_;
};

}  // namespace QXPlatform
