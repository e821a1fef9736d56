// SPDX-License-Identifier: Apache-2.0
#pragma once

// Notification: how observers register with an object and are notified of its changes.
//
// An observed class X derives from its root and from NotifieeList, and declares
//
//   class X::NotifieeConst : public Kor::NotifieeOf<X, Base::NotifieeConst> {
//    public:
//     using NotifieeOf::NotifieeOf;
//     virtual void onColour() {}
//   };
//   class X::Notifiee : public X::NotifieeConst { ... };   // the same hooks, no further access
//
// Order: notifiees are called in registration order. A notification calls the notifiees that are
// registered when it begins. One that registers during it is called from the next one on. One that
// unregisters is not called, even if it registers again. An exception of a hook goes to that
// notifiee's onNotificationException and no further. A write inside a hook, with its notifications,
// completes before the hook continues.
//
// An AttributeObserver observes all attributes of one object of any such class, by identifier.
//
// Ownership: the list counts its notifiees, so a registered one stays alive; one that unregisters
// stays alive until its hook has returned. A notifiee refers to its subject uncounted. After the
// subject is destroyed, notifier() is null.

#include "Kor/Export.h"
#include "Kor/Generic.h"
#include "Kor/GenericValue.h"
#include "Kor/KorType.h"
#include "Kor/Ptr.h"
#include "Kor/Thread.h"
#include "Kor/Types.h"

#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

namespace Kor {

class NotifieeList;
class PtrInterface;

// Root of all notifiees, with its own count.
class KOR_API NotifieeBase {
 public:
  NotifieeBase(NotifieeBase const&) = delete;
  NotifieeBase& operator=(NotifieeBase const&) = delete;
  virtual ~NotifieeBase();

  // Called if a hook of this notifiee threw while the attribute `id` was announced. It runs inside
  // the handler, so `throw;` raises the exception again. Exceptions that leave this function are
  // dropped.
  virtual void onNotificationException(AttributeId id);

  // True if an object is observed.
  [[nodiscard]] bool registered() const { return list_ != nullptr; }

  void newRef() const noexcept { ++references_; }
  void deleteRef() const noexcept {
    if (--references_ == 0) {
      delete this;
    }
  }

 protected:
  NotifieeBase() = default;

  // Moves this notifiee to `list`, or to none if null. Does nothing if it is registered there
  // already.
  void listIs(NotifieeList* list);
  [[nodiscard]] NotifieeList* list() const { return list_; }
  void kindIs(KorType const* kind) { kind_ = kind; }

 private:
  friend class NotifieeList;

  [[nodiscard]] bool isOf(KorType const* kind) const {
    return kind_ != nullptr && kind_->isA(kind);
  }

  mutable std::uint32_t references_ = 1;
  NotifieeList* list_ = nullptr;
  KorType const* kind_ = nullptr;  // the class whose hooks it implements; null: any
};

// Mix-in for observable objects. No virtual functions; one pointer wide.
class KOR_API NotifieeList {
 public:
  NotifieeList() = default;
  NotifieeList(NotifieeList const&) = delete;
  NotifieeList& operator=(NotifieeList const&) = delete;
  ~NotifieeList();

  [[nodiscard]] std::uint32_t notifiees() const {
    return entries_ == nullptr ? 0 : entries_->count;
  }

 protected:
  // Calls `hook` of every notifiee of type `kind`, a member function with its arguments or a
  // function that takes the notifiee. The arguments are what the attribute calls its key. Keeps
  // `subject` alive meanwhile. Without notifiees it costs one branch.
  template <class Notifiee, class Subject, class Hook, class... Key>
  void notify(Subject const* subject, KorType const* kind, AttributeId id, Hook hook,
              Key const&... key) const {
    if (entries_ != nullptr) [[unlikely]] {
      notifyEach<Notifiee>(subject, kind, id, hook, key...);
    }
  }

 private:
  friend class NotifieeBase;

  // Not inlined into writes, most of which have no notifiees.
  template <class Notifiee, class Subject, class Hook, class... Key>
  [[gnu::noinline]] void notifyEach(Subject const* subject, KorType const* kind, AttributeId id,
                                    Hook hook, Key const&... key) const {
    KOR_ASSERT_OWNING_THREAD();
    Kor::Ptr<Subject const> const pinned = share(subject);
    Walk walk(entries_);
    NotifieeBase** const end = walk.end();
    for (NotifieeBase** place = walk.begin(); place != end; ++place) {
      NotifieeBase* const notifiee = walk.enter(place);
      if (notifiee == nullptr) [[unlikely]] {
        continue;
      }
      try {
        if (notifiee->kind_ == kind || notifiee->isOf(kind)) [[likely]] {
          std::invoke(hook, *static_cast<Notifiee*>(notifiee), key...);
        } else if (notifiee->kind_ == nullptr) {
          observe(*notifiee, id, genericKey(key...));
        }
      } catch (...) {
        deliverException(*notifiee, id);
      }
      walk.leave();
    }
  }

  // The notifiees follow this header in the same allocation.
  struct alignas(void*) Entries {
    std::uint32_t references;
    std::uint32_t count;
    std::uint32_t capacity;

    NotifieeBase** begin() { return reinterpret_cast<NotifieeBase**>(this + 1); }
    NotifieeBase** end() { return begin() + count; }

    static std::size_t sizeFor(std::uint32_t capacity);
    static Entries* make(std::uint32_t capacity);
    // Returns a list with room for `wanted` notifiees that no iteration holds, and releases this
    // one.
    Entries* owned(std::uint32_t wanted);
    void deleteRef() {
      if (--references == 0) [[unlikely]] {
        release();
      }
    }
    void release();
  };

  // One iteration over a snapshot. The list is copied on write while an iteration holds it, so a
  // snapshot costs one increment, however long the list is. Open iterations are known: a notifiee
  // that unregisters is taken out of their snapshots.
  class KOR_API Walk {
   public:
    explicit Walk(Entries* entries) : entries_(entries), outer_(std::exchange(innermost, this)) {
      ++entries->references;
    }
    Walk(Walk const&) = delete;
    Walk& operator=(Walk const&) = delete;
    ~Walk() {
      innermost = outer_;
      entries_->deleteRef();
    }
    [[nodiscard]] NotifieeBase** begin() const { return entries_->begin(); }
    [[nodiscard]] NotifieeBase** end() const { return entries_->end(); }
    // Returns the notifiee at that place, which stays alive until leave(); null if it has
    // unregistered.
    NotifieeBase* enter(NotifieeBase** place) {
      place_ = place;
      return *place;
    }
    void leave() {
      if (left_ != nullptr) [[unlikely]] {
        std::exchange(left_, nullptr)->deleteRef();  // may unregister the next one
      }
    }

    // Takes a notifiee out of all snapshots and releases the list's reference to it, or leaves it
    // to the outermost iteration that is calling the notifiee.
    static void forget(NotifieeBase* notifiee);

   private:
    static Walk* innermost;

    Entries* entries_;
    NotifieeBase** place_ = nullptr;  // of the notifiee that is being called
    NotifieeBase* left_ = nullptr;    // counted: it has unregistered during its call
    Walk* outer_;
  };

  static GenericValue genericKey() { return {}; }
  template <class Key>
  static GenericValue genericKey(Key const& key) {
    return Generic<Key>::value(key);
  }
  static void observe(NotifieeBase& observer, AttributeId id, GenericValue const& key);

  void add(NotifieeBase* notifiee);
  void remove(NotifieeBase* notifiee);
  static void deliverException(NotifieeBase& notifiee, AttributeId id) noexcept;

  Entries* entries_ = nullptr;  // null without notifiees
};

// Observes all attributes of one object by identifier, without the class of the object.
class KOR_API AttributeObserver : public NotifieeBase {
 public:
  ~AttributeObserver() override;

  // Called after a change was stored, in the order of registration among all notifiees. `key` is
  // that of the member that changed; no value for an attribute that is no collection.
  virtual void onAttribute(AttributeId id, GenericValue const& key) = 0;

  // Observes another object, or none if null. Returns false, and observes none, if the class has
  // no notifications.
  bool notifierIs(PtrInterface const* object);
};

// Base of X::NotifieeConst: registers with an X, and records the class whose hooks it implements.
// `Base` is NotifieeBase or the NotifieeConst of X's base class.
template <class X, class Base = NotifieeBase>
class NotifieeOf : public Base {
 public:
  // Registers immediately if `notifier` is not null.
  explicit NotifieeOf(X const* notifier = nullptr) {
    this->kindIs(X::_fwkType());
    notifierIs(notifier);
  }
  explicit NotifieeOf(Kor::Ptr<X const> const& notifier) : NotifieeOf(notifier.get()) {}

  // Observes another object, or none if null.
  void notifierIs(X const* notifier) {
    // Observing does not change the object: its list is not part of its value.
    this->listIs(const_cast<X*>(notifier));
  }
  void notifierIs(std::nullptr_t) { notifierIs(static_cast<X const*>(nullptr)); }
  void notifierIs(Kor::Ptr<X const> const& notifier) { notifierIs(notifier.get()); }

  // The observed object, or null.
  [[nodiscard]] X const* notifier() const { return static_cast<X const*>(this->list()); }
};

}  // namespace Kor
