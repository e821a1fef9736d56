// SPDX-License-Identifier: Apache-2.0
#include "Kor/PrintedObjects.h"

namespace Kor {

PrintedObjects& PrintedObjects::all() {
  // Never destroyed: objects may outlive static objects.
  static auto* const it = new PrintedObjects();
  return *it;
}

std::uint64_t PrintedObjects::numberOf(PtrInterface const* object) {
  auto const [at, isNew] = numbers_.try_emplace(object, last_ + 1);
  if (isNew) {
    byNumber_.emplace(++last_, object);
  }
  return at->second;
}

PtrInterface const* PrintedObjects::object(std::uint64_t number) const {
  auto const at = byNumber_.find(number);
  return at == byNumber_.end() ? nullptr : at->second;
}

void PrintedObjects::remove(PtrInterface const* object) noexcept {
  auto const at = numbers_.find(object);
  byNumber_.erase(at->second);
  numbers_.erase(at);
}

}  // namespace Kor
