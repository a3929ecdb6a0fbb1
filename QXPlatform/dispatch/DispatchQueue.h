#pragma once

#include <functional>
#include <memory>
#include <string>

namespace QXPlatform {

class DispatchGroup;

// Runs work items on threads of the process. A queue object is a handle: copies name the same queue, and the
// queue lives until its last item has run, also when every handle is gone. Nothing submitted is ever dropped.
//
//   serial      items run in the order submitted, one at a time
//   concurrent  items that one thread submits start in that order; an item that blocks never keeps another
//               from starting, up to 64 threads in the process
//
// An item that is submitted by another one is started when that one ends or waits, and within two
// milliseconds in any case. The label is the name of the thread (its last 15 characters) when an item has run
// for as long; work of sync() runs on the caller's thread, under its name. An exception that leaves an item
// ends the process, but for std::bad_alloc, which only ends the item. An item is destroyed, with all it
// holds, right after it has run. Any thread may call.
class DispatchQueue {
 public:
  using Work = std::function<void()>;
  enum class Attribute { serial, concurrent };

  DispatchQueue(std::string label, Attribute attribute);

  // Whether submitted items come to run: not while the system gives this process not even one thread. They
  // stay queued, and run when it does.
  static bool canRun();

  // From here on the calling thread bears the label of the queue whose item it runs, if it runs one.
  static void showLabel();

  const std::string& label() const;

  void async(Work work) const;
  // As a member of the group: entered now, left when the item has run.
  void async(const DispatchGroup& group, Work work) const;
  // Returns when the item has run. REQUIRES: not called from an item of the same serial queue.
  void sync(const Work& work) const;
  // On a concurrent queue: starts when every earlier item has ended, and later ones wait for it.
  void asyncBarrier(Work work) const;

 private:
  class State;

  std::shared_ptr<State> state_;
};

}  // namespace QXPlatform
