// SPDX-License-Identifier: Apache-2.0
#include "Kor/Notifiee.h"

#include "Kor/MemoryPool.h"
#include "Kor/PtrInterface.h"

#include <algorithm>
#include <new>

namespace Kor {

std::size_t NotifieeList::Entries::sizeFor(std::uint32_t capacity) {
  return sizeof(Entries) + capacity * sizeof(NotifieeBase::Entry*);
}

NotifieeList::Entries* NotifieeList::Entries::make(std::uint32_t capacity) {
  return new (MemoryPool::allocate(sizeFor(capacity))) Entries{1, 0, capacity};
}

NotifieeList::Entries* NotifieeList::Entries::owned(std::uint32_t wanted) {
  if (references == 1 && wanted <= capacity) {
    return this;
  }
  Entries* const copy = make(std::max(wanted, capacity));
  for (NotifieeBase::Entry* const entry : *this) {
    ++entry->references;
    copy->begin()[copy->count++] = entry;
  }
  deleteRef();
  return copy;
}

void NotifieeList::Entries::release() {
  for (NotifieeBase::Entry* const entry : *this) {
    entry->deleteRef();
  }
  MemoryPool::release(this, sizeFor(capacity));
}

void NotifieeBase::Entry::deleteRef() {
  if (--references == 0) {
    MemoryPool::release(this, sizeof(Entry));
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
  Entries* const entries = std::exchange(entries_, nullptr);
  for (NotifieeBase::Entry* const entry : *entries) {
    entry->notifiee->list_ = nullptr;
    entry->notifiee->entry_ = nullptr;
  }
  // Last: a destroyed notifiee may unregister others, which must already be marked as unregistered.
  for (NotifieeBase::Entry* const entry : *entries) {
    std::exchange(entry->notifiee, nullptr)->deleteRef();
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
  auto* const entry =
      new (MemoryPool::allocate(sizeof(NotifieeBase::Entry))) NotifieeBase::Entry{1, notifiee};
  entries_->begin()[entries_->count++] = entry;
  notifiee->newRef();
  notifiee->list_ = this;
  notifiee->entry_ = entry;
}

void NotifieeList::remove(NotifieeBase* notifiee) {
  NotifieeBase::Entry* const entry = std::exchange(notifiee->entry_, nullptr);
  notifiee->list_ = nullptr;
  entry->notifiee = nullptr;
  if (entries_->count == 1) {
    std::exchange(entries_, nullptr)->deleteRef();
  } else {
    entries_ = entries_->owned(entries_->capacity);
    NotifieeBase::Entry** const place = std::find(entries_->begin(), entries_->end(), entry);
    std::copy(place + 1, entries_->end(), place);
    --entries_->count;
    entry->deleteRef();
  }
  notifiee->deleteRef();
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
