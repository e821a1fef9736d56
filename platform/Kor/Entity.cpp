// SPDX-License-Identifier: Apache-2.0
#include "Kor/Entity.h"

namespace Kor {

Entity::~Entity() = default;
Entity::NotifieeConst::~NotifieeConst() = default;
Entity::Notifiee::~Notifiee() = default;

KorType const* Entity::fwkType() const {
  return _fwkType();
}

KorType* Entity::_fwkType() {
  static KorType type("Kor::Entity", PtrInterface::_fwkType());
  return &type;
}

String Entity::attributeString(AttributeId id) const {
  return fwkType()->attributeString(id);
}

void Entity::attributeLogReaderIs(Kor::Ptr<AttributeLogReader> const& reader) const {
  reader->listIs(&log_);
}

void Entity::attributeLogReaderDel(Kor::Ptr<AttributeLogReader> const& reader) const {
  if (reader->list() == &log_) {
    reader->listIs(nullptr);
  }
}

void Entity::LogReaders::logged(Entity const* entity, AttributeId id) const {
  notify<AttributeLogReader>(entity, Entity::_fwkType(), id,
                             [&](AttributeLogReader& reader) { reader.onAttribute(*entity, id); });
}

AttributeLogReader::AttributeLogReader() {
  kindIs(Entity::_fwkType());
}

AttributeLogReader::~AttributeLogReader() = default;

void AttributeLogReader::notifierIs(Entity const* entity) {
  listIs(entity == nullptr ? nullptr : &entity->log_);
}

}  // namespace Kor
