// SPDX-License-Identifier: Apache-2.0
#pragma once

// Entity: a named object that notifies its observers.
//
// Two kinds of observers exist. A notifiee implements the hooks of one class, one per attribute. An
// attribute log reader is notified of every stored change of an entity of any class, by attribute
// identifier. The log readers run directly after the store, before the notifiees.

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

  // The name of an attribute of this object; "unknown" if it has no such attribute.
  [[nodiscard]] virtual String attributeString(AttributeId id) const;

  // Attaches or detaches a reader of this object's attribute log. Repeating either has no effect.
  virtual void attributeLogReaderIs(Kor::Ptr<AttributeLogReader> const& reader) const;
  virtual void attributeLogReaderDel(Kor::Ptr<AttributeLogReader> const& reader) const;

  [[nodiscard]] Name const& name() const { return name_; }

  static constexpr AttributeId nameId = 130;

 protected:
  // Announces a stored change, first to the log readers, then by `hook` to the notifiees of X; see
  // notify(). To be called directly after the store. The key is a copy: an earlier notifiee may
  // release the member that holds it.
  template <class X, class Hook, class... Key>
  void attributeChanged(AttributeId id, Hook&& hook, Key... key) const {
    if (notifiees() == 0 && log_.notifiees() == 0) [[likely]] {
      return;
    }
    X const* const changed = static_cast<X const*>(this);
    // A reader may drop the last reference; the notifiees are still called.
    Kor::Ptr<X const> const pinned = log_.notifiees() == 0 ? nullptr : share(changed);
    attributeLogged(id);
    notify<typename X::NotifieeConst>(changed, X::_fwkType(), id, hook, key...);
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

// Observes every stored change of one entity.
class KOR_API AttributeLogReader : public NotifieeBase {
 public:
  AttributeLogReader();
  ~AttributeLogReader() override;

  virtual void onAttribute(Entity const& entity, AttributeId id) = 0;

  // Reads the log of another entity, or of none if null.
  void notifierIs(Entity const* entity);

 private:
  friend class Entity;
};

}  // namespace Kor
