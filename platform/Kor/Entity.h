// SPDX-License-Identifier: Apache-2.0
#pragma once

// Entity: a named object that notifies.
//
// Two ways to learn of a change. A notifiee hears the hooks of one class, one per attribute. A
// reader of the attribute log hears of every stored change of an object of any class, by attribute
// identifier, right after the store and before the notifiees.

#include "Kor/Export.h"
#include "Kor/Notifiee.h"
#include "Kor/PtrInterface.h"
#include "Kor/String.h"
#include "Kor/Types.h"

namespace Kor {

class AttributeLogReader;

class KOR_API Entity : public PtrInterface, public NotifieeList {
 public:
  using Ptr = Kor::Ptr<Entity>;
  using PtrConst = Kor::Ptr<Entity const>;
  class NotifieeConst;
  class Notifiee;

  explicit Entity(Name name) : name_(std::move(name)) {}
  ~Entity() override;

  [[nodiscard]] KorType const* fwkType() const override;
  [[nodiscard]] static KorType* _fwkType();

  // The name of an attribute of this object, "unknown" for an identifier that it has not.
  [[nodiscard]] virtual String8 attributeString(AttributeId id) const;

  // Attaches and detaches a reader of this object's attribute log; both may repeat.
  virtual void attributeLogReaderIs(Kor::Ptr<AttributeLogReader> const& reader) const;
  virtual void attributeLogReaderDel(Kor::Ptr<AttributeLogReader> const& reader) const;

  [[nodiscard]] Name const& name() const { return name_; }

  static constexpr AttributeId nameId = 130;

 protected:
  // Announces a stored change: first to the readers of the attribute log, then by `hook` to the
  // notifiees of X. Whoever writes calls it right after the store. The hook owns what it passes on:
  // a key may lie in a member that an earlier notifiee has let go.
  template <class X, class Hook>
  void attributeChanged(AttributeId id, Hook&& hook) const {
    if (notifiees() == 0 && log_.notifiees() == 0) [[likely]] {
      return;
    }
    X const* const changed = static_cast<X const*>(this);
    // A reader may drop the last reference; the notifiees are called all the same.
    Kor::Ptr<X const> const pinned = log_.notifiees() == 0 ? nullptr : share(changed);
    attributeLogged(id);
    notify<typename X::NotifieeConst>(changed, X::_fwkType(), id, hook);
  }

 private:
  friend class AttributeLogReader;

  class LogReaders : public NotifieeList {
   public:
    void logged(Entity const* entity, AttributeId id) const;
  };

  void attributeLogged(AttributeId id) const {
    if (log_.notifiees() != 0) {
      log_.logged(this, id);
    }
  }

  Name name_;
  mutable LogReaders log_;
};

class KOR_API Entity::NotifieeConst : public NotifieeOf<Entity> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
};

class KOR_API Entity::Notifiee : public Entity::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

// Hears of every stored change of the entity that it is attached to.
class KOR_API AttributeLogReader : public NotifieeBase {
 public:
  AttributeLogReader();
  ~AttributeLogReader() override;

  virtual void onAttribute(Entity const& entity, AttributeId id) = 0;

  // Reads another entity's log, or none.
  void notifierIs(Entity const* entity);

 private:
  friend class Entity;
};

}  // namespace Kor
