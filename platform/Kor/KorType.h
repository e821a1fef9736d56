// SPDX-License-Identifier: Apache-2.0
#pragma once

// KorType: the record of one model type, and the directory of all records by name.
//
// A record is made on first use by T::_fwkType() and lives until the process ends; records compare
// by address. It is filled once, while the library that holds the type is loaded, and never changed
// afterwards.

#include "Kor/Export.h"
#include "Kor/Ptr.h"
#include "Kor/String.h"
#include "Kor/Types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Kor {

class GenericIf;
class GenericValue;
class KorAttr;
class KorType;
class PtrInterface;

// One argument of a constructor or of a function. The type goes by its name, so that it need not be
// registered before the arguments that have it.
struct ArgumentSpec {
  Name name;
  Name typeName;
};

// What a type that is reached by name can do beyond its attributes.
struct TypeOperations {
  // Builds an instance; `list` is the list of the constructor's arguments.
  GenericValue (*construct)(KorType const& type, GenericValue const& list) = nullptr;
  // Reads a value from its text form and leaves the iterator behind it.
  GenericValue (*parse)(String8::IteratorConst& it, String8::IteratorConst const& end) = nullptr;
  // Prints an enumeration's value.
  String8 (*print)(GenericValue const& value) = nullptr;
};

class KOR_API KorType {
 public:
  // `name` is the qualified name, a literal. `base` is null for a root and for a value type.
  KorType(std::string_view name, KorType const* base);
  KorType(KorType const&) = delete;
  KorType& operator=(KorType const&) = delete;
  ~KorType();

  [[nodiscard]] std::string_view name() const { return name_; }
  // The name behind the last "::".
  [[nodiscard]] std::string_view shortName() const;
  [[nodiscard]] KorType const* base() const { return base_; }
  // Inheritance level: 0 for a root and for a value type.
  [[nodiscard]] std::uint32_t level() const { return level_; }

  // Whether this type is `other` or derives from it. Constant time.
  [[nodiscard]] bool isA(KorType const* other) const {
    return level_ >= other->level_ && lineage_[other->level_] == other;
  }

  // Registration -----------------------------------------------------------------------------

  // What a type does not say of itself it has from its base.
  [[nodiscard]] bool isEntity() const {
    return isEntity_ || (base_ != nullptr && base_->isEntity());
  }
  void isEntityIs(bool entity) { isEntity_ = entity; }
  [[nodiscard]] bool isValue() const { return isValue_; }
  void isValueIs(bool value) { isValue_ = value; }
  // Whether instances can be reached by name.
  [[nodiscard]] bool hasGenericIfSupport() const { return hasGenericIfSupport_; }
  void hasGenericIfSupportIs(bool supported) { hasGenericIfSupport_ = supported; }
  // Of an instance, in bytes; 0 while unregistered.
  [[nodiscard]] std::size_t size() const { return size_; }
  void sizeIs(std::size_t size) { size_ = size; }

  // In the order in which a by-name constructor takes them.
  [[nodiscard]] std::vector<ArgumentSpec> const& constructorArgs() const {
    return constructorArgs_;
  }
  void newConstructorArg(Name name, Name typeName);

  [[nodiscard]] TypeOperations const& operations() const { return operations_; }
  void operationsAre(TypeOperations const& operations) { operations_ = operations; }

  // Takes over the attributes of the base type, in its order. Done once, before own ones.
  void attrsInherited();
  // Inherited ones first, in the order of the base; then own ones in the order of registration.
  [[nodiscard]] std::vector<Ptr<KorAttr>> const& attrs() const { return attrs_; }
  // The attribute of that name, null when there is none.
  [[nodiscard]] KorAttr const* attr(std::string_view name) const;
  // The attribute that the generic interface knows under `id`, null when there is none. Under 0 it
  // knows the key alone. Constant time.
  [[nodiscard]] KorAttr const* attr(AttributeId id) const {
    return id < attrById_.size() ? attrById_[id] : nullptr;
  }
  // The name of that attribute, "unknown" when there is none. A type that is not registered has the
  // attributes of its base.
  [[nodiscard]] String8 attributeString(AttributeId id) const;

  // The adapter of an object or value of this type.
  [[nodiscard]] GenericIf genericIf(Ptr<PtrInterface const> const& object, bool isConst) const;

  // Enters the record into the directory under its qualified name; that it is the record's own, and
  // that no other record has it, is asserted. Doing it again changes nothing.
  static void typeNodeIs(KorType* type, std::string_view name);
  // The record of that qualified name, null when none is entered.
  [[nodiscard]] static KorType const* named(std::string_view name);
  // All entered records, in order of entry.
  [[nodiscard]] static std::vector<KorType const*> const& all();

 private:
  friend class KorAttr;

  static constexpr std::size_t deepest = 8;

  std::string_view name_;
  KorType const* base_;
  std::uint32_t level_;
  bool isEntity_ = false;
  bool isValue_ = false;
  bool hasGenericIfSupport_ = false;
  std::size_t size_ = 0;
  std::array<KorType const*, deepest> lineage_{};  // by level, this type last
  std::vector<ArgumentSpec> constructorArgs_;
  TypeOperations operations_;
  std::vector<Ptr<KorAttr>> attrs_;
  std::vector<KorAttr const*> attrById_;
};

}  // namespace Kor
