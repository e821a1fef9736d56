// SPDX-License-Identifier: Apache-2.0
#include "Kor/String.h"

#include "Kor/MemoryPool.h"

#include <cstring>

namespace Kor {

String8::String8(std::string_view text) : text_(text.empty() ? nullptr : compose(text, {})) {}

String8::Text* String8::compose(std::string_view head, std::string_view tail) {
  std::size_t const length = head.size() + tail.size();
  void* const memory = MemoryPool::allocate(sizeof(Text) + length + 1);
  auto* const bytes = static_cast<char*>(memory) + sizeof(Text);
  if (!head.empty()) {
    std::memcpy(bytes, head.data(), head.size());
  }
  if (!tail.empty()) {
    std::memcpy(bytes + head.size(), tail.data(), tail.size());
  }
  bytes[length] = '\0';
  return new (memory) Text{1, 0, length};
}

void String8::dispose(Text* text) noexcept {
  MemoryPool::release(text, sizeof(Text) + text->length + 1);
}

String8 operator+(String8 const& a, String8 const& b) {
  if (a.empty()) {
    return b;
  }
  if (b.empty()) {
    return a;
  }
  String8 joined;
  joined.text_ = String8::compose(a.view(), b.view());
  return joined;
}

}  // namespace Kor
