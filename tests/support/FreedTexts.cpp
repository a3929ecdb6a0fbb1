#include "tests/support/FreedTexts.h"

#include <malloc.h>
#include <string.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

using Texts = std::vector<std::string>;

std::atomic<const Texts*> wanted = nullptr;
std::atomic<const std::string*> foundText = nullptr;

}  // namespace

// A sanitizer has operators of its own, which are not to be replaced. Nothing of an object that was there
// before is left in a new one.
#ifndef QX_SANITIZED
namespace {

void giveBack(void* memory) {
  const Texts* const texts = wanted;
  const std::size_t size = memory == nullptr || texts == nullptr ? 0 : malloc_usable_size(memory);
  for (std::size_t i = 0; size > 0 && i < texts->size(); ++i) {
    const std::string& text = (*texts)[i];
    if (memmem(memory, size, text.data(), text.size()) != nullptr) foundText = &text;
  }
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* memory = std::calloc(1, size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  giveBack(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  giveBack(memory);
}
#endif

namespace support {

FreedTexts::FreedTexts(std::vector<std::string> texts) : texts_(std::move(texts)) {
  foundText = nullptr;
  wanted = &texts_;
}

FreedTexts::~FreedTexts() {
  wanted = nullptr;
}

bool FreedTexts::areFound() {
#ifdef QX_SANITIZED
  return false;
#else
  return true;
#endif
}

std::string FreedTexts::found() {
  const std::string* const text = foundText;
  return text == nullptr ? std::string() : *text;
}

}  // namespace support
