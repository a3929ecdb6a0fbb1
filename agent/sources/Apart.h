#pragma once

#include <functional>
#include <optional>
#include <string>

namespace QXAgent {

// Runs a function in a process of its own, a copy of this one, and gives what it returned; nothing when it
// came to no end. The cryptographic library takes 3 MB that it never gives back, which an agent that idles
// all day can do without; and what strangers have sent is taken apart where it can break nothing. REQUIRES:
// this process has one thread.
std::optional<std::string> runApart(const std::function<std::string()>& function);

}  // namespace QXAgent
