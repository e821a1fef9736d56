// SPDX-License-Identifier: Apache-2.0
#include "Kor/Notifiee.h"

#include "Kor/MemoryPool.h"
#include "Kor/PtrInterface.h"

#include <algorithm>
#include <new>

namespace Kor {

std::size_t NotifieeList::Entries::sizeFor(std::uint32_t capacity) {
  // NOLINTNEXTLINE(bugprone-sizeof-expression): they are pointers
  return sizeof(Entries) + capacity * sizeof(NotifieeBase*);
}

NotifieeList::Entries* NotifieeList::Entries::make(std::uint32_t capacity) {
  return new (MemoryPool::allocate(sizeFor(capacity))) Entries{1, 0, capacity};
}

NotifieeList::Entries* NotifieeList::Entries::owned(std::uint32_t wanted) {
  if (references == 1 && wanted <= capacity) {
    return this;
  }
  Entries* const copy = make(std::max(wanted, capacity));
  std::copy(begin(), end(), copy->begin());
  copy->count = count;
  deleteRef();
  return copy;
}

void NotifieeList::Entries::release() {
  MemoryPool::release(this, sizeFor(capacity));
}

constinit NotifieeList::Walk* NotifieeList::Walk::innermost = nullptr;

void NotifieeList::Walk::forget(NotifieeBase* notifiee) {
  Walk* caller = nullptr;
  for (Walk* walk = innermost; walk != nullptr; walk = walk->outer_) {
    if (walk->place_ != nullptr && *walk->place_ == notifiee) {
      caller = walk;
    }
  }
  for (Walk* walk = innermost; walk != nullptr; walk = walk->outer_) {
    std::replace(walk->entries_->begin(), walk->entries_->end(), notifiee,
                 static_cast<NotifieeBase*>(nullptr));
  }
  if (caller != nullptr) {
    caller->left_ = notifiee;
  } else {
    notifiee->deleteRef();
  }
}

NotifieeBase::~NotifieeBase() {
  listIs(nullptr);
}

void NotifieeBase::onNotificationException(AttributeId /*id*/) {}

void NotifieeBase::listIs(NotifieeList* list) {
  if (list == list_) {
    return;
  }
  if (list_ != nullptr) {
    // The registration may hold the last reference to this notifiee, which must survive the move.
    Kor::Ptr<NotifieeBase> const pinned = share(this);
    list_->remove(this);
    if (list != nullptr) {
      list->add(this);
    }
  } else {
    list->add(this);
  }
}

NotifieeList::~NotifieeList() {
  if (entries_ == nullptr) {
    return;
  }
  Entries* const entries = std::exchange(entries_, nullptr)->owned(0);
  for (NotifieeBase* const notifiee : *entries) {
    notifiee->list_ = nullptr;
  }
  // Last: a destroyed notifiee may unregister others, which must already be marked as unregistered.
  for (NotifieeBase* const notifiee : *entries) {
    Walk::forget(notifiee);
  }
  entries->deleteRef();
}

void NotifieeList::add(NotifieeBase* notifiee) {
  KOR_ASSERT_OWNING_THREAD();
  if (entries_ == nullptr) {
    entries_ = Entries::make(2);
  } else if (entries_->count == entries_->capacity) {
    entries_ = entries_->owned(2 * entries_->capacity);
  } else {
    entries_ = entries_->owned(entries_->capacity);
  }
  entries_->begin()[entries_->count++] = notifiee;
  notifiee->newRef();
  notifiee->list_ = this;
}

void NotifieeList::remove(NotifieeBase* notifiee) {
  notifiee->list_ = nullptr;
  if (entries_->count == 1) {
    std::exchange(entries_, nullptr)->deleteRef();
  } else {
    entries_ = entries_->owned(entries_->capacity);
    NotifieeBase** const place = std::find(entries_->begin(), entries_->end(), notifiee);
    std::copy(place + 1, entries_->end(), place);
    --entries_->count;
  }
  Walk::forget(notifiee);
}

void NotifieeList::deliverException(NotifieeBase& notifiee, AttributeId id) noexcept {
  try {
    notifiee.onNotificationException(id);
  } catch (...) {  // NOLINT(bugprone-empty-catch): the write must complete
  }
}

void NotifieeList::observe(NotifieeBase& observer, AttributeId id, GenericValue const& key) {
  static_cast<AttributeObserver&>(observer).onAttribute(id, key);
}

AttributeObserver::~AttributeObserver() = default;

bool AttributeObserver::notifierIs(PtrInterface const* object) {
  // Observing does not change the object: its list is not part of its value.
  auto* const list = const_cast<NotifieeList*>(dynamic_cast<NotifieeList const*>(object));
  listIs(list);
  return list != nullptr || object == nullptr;
}

}  // namespace Kor
