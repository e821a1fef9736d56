// SPDX-License-Identifier: Apache-2.0
#include "Kor/PtrInterface.h"

#include "Kor/PrintedObjects.h"

namespace Kor {
namespace {

// High enough that pointers copied and released during destruction cannot reach zero.
constexpr std::uint32_t pinned = 0x80000000U;

}  // namespace

PtrInterface::~PtrInterface() {
  if (hasText_) {
    PrintedObjects::all().remove(this);
  }
}

void PtrInterface::hasNotificationActiveIs(bool active) {
  notificationActive_ = active;
}

std::uint32_t PtrInterface::korAuditErrors() const {
  return 0;
}

std::uint32_t PtrInterface::auditErrors() const {
  return korAuditErrors();
}

void PtrInterface::isNondestructingIs(bool nondestructing) {
  nondestructing_ = nondestructing;
}

void PtrInterface::zeroReferencesIs() {
  isNondestructingIs(false);
  delete this;
}

KorType const* PtrInterface::fwkType() const {
  return _fwkType();
}

KorType* PtrInterface::_fwkType() {
  static KorType type("Kor::PtrInterface", nullptr);
  return &type;
}

void PtrInterface::lastReferenceGone() const noexcept {
  references_ = pinned;
  if (hasText_) {
    PrintedObjects::all().remove(this);
    hasText_ = false;
  }
  const_cast<PtrInterface*>(this)->zeroReferencesIs();
}

}  // namespace Kor
