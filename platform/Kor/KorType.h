// SPDX-License-Identifier: Apache-2.0
#pragma once

// KorType: the record of one model type, and the directory of all records by name.
//
// T::_fwkType() creates the record on first use. It lives until the process ends. Records compare
// by address. A record is filled once, while the library of the type is loaded, and never changes
// afterwards.

#include "Kor/ArgumentSpec.h"
#include "Kor/EnumNames.h"
#include "Kor/Export.h"
#include "Kor/Ptr.h"
#include "Kor/String.h"
#include "Kor/Types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace Kor {

class GenericIf;
class GenericValue;
class KorAttr;
class KorType;
class PtrInterface;

// What a type can do by name, beyond its attributes.
struct TypeOperations {
  // Creates an instance from the list of constructor arguments.
  GenericValue (*construct)(KorType const& type, GenericValue const& list) = nullptr;
  // Parses a value from its text form and leaves the iterator after it.
  GenericValue (*parse)(String::IteratorConst& it, String::IteratorConst const& end) = nullptr;
  // Prints a value of an enumeration.
  String (*print)(GenericValue const& value) = nullptr;
};

class KOR_API KorType {
 public:
  // `name` is the qualified name, a literal. `base` is null for a root and for a value type.
  KorType(std::string_view name, KorType const* base);
  // An enumeration. The names outlive the record.
  KorType(std::string_view name, EnumNames const& names);
  KorType(KorType const&) = delete;
  KorType& operator=(KorType const&) = delete;
  ~KorType();

  [[nodiscard]] std::string_view name() const { return name_; }
  // The name after the last "::".
  [[nodiscard]] std::string_view shortName() const;
  [[nodiscard]] KorType const* base() const { return base_; }
  // Inheritance level: 0 for a root and for a value type.
  [[nodiscard]] std::uint32_t level() const { return level_; }

  // The names of the values 0, 1, 2, … of an enumeration. Empty for one without names and for every
  // other type.
  [[nodiscard]] std::span<std::string_view const> enumNames() const { return enumNames_; }

  // True if this type is `other` or derives from it. Constant time.
  [[nodiscard]] bool isA(KorType const* other) const {
    return level_ >= other->level_ && lineage_[other->level_] == other;
  }

  // Registration -----------------------------------------------------------------------------

  // Inherited from the base type unless set.
  [[nodiscard]] bool isEntity() const {
    return isEntity_ || (base_ != nullptr && base_->isEntity());
  }
  void isEntityIs(bool entity) { isEntity_ = entity; }
  [[nodiscard]] bool isValue() const { return isValue_; }
  void isValueIs(bool value) { isValue_ = value; }
  // True if instances can be accessed by name.
  [[nodiscard]] bool hasGenericIfSupport() const { return hasGenericIfSupport_; }
  void hasGenericIfSupportIs(bool supported) { hasGenericIfSupport_ = supported; }
  // Size of an instance in bytes; 0 until registered.
  [[nodiscard]] std::size_t size() const { return size_; }
  void sizeIs(std::size_t size) { size_ = size; }

  // In the order in which the constructor takes them by name.
  [[nodiscard]] std::vector<ArgumentSpec> const& constructorArgs() const {
    return constructorArgs_;
  }
  void newConstructorArg(Name name, Name typeName);

  [[nodiscard]] TypeOperations const& operations() const { return operations_; }
  void operationsAre(TypeOperations const& operations) { operations_ = operations; }

  // Copies the attributes of the base type, in its order. Called once, before own attributes.
  void attrsInherited();
  // Adds an attribute at the end, or replaces the one of that name in its place.
  void attrIs(Ptr<KorAttr> const& attr);
  // Removes an attribute. Does nothing if there is none of that name.
  void attrDel(std::string_view name);
  // Inherited attributes in the order of the base, then own ones in the order of registration.
  [[nodiscard]] std::vector<Ptr<KorAttr>> const& attrs() const { return attrs_; }
  // Returns the attribute of that name, null if there is none.
  [[nodiscard]] KorAttr const* attr(std::string_view name) const;
  // Returns the attribute of that identifier, null if there is none. Several attributes share 0; it
  // finds only the key. Constant time.
  [[nodiscard]] KorAttr const* attr(AttributeId id) const {
    return id < attrById_.size() ? attrById_[id] : nullptr;
  }
  // Returns the name of that attribute, "unknown" if there is none. An unregistered type uses the
  // attributes of its base.
  [[nodiscard]] String attributeString(AttributeId id) const;

  // Returns the adapter of an object or value of this type. Defined in GenericIf.cpp.
  [[nodiscard]] GenericIf genericIf(Ptr<PtrInterface const> const& object, bool isConst) const;

  // Enters the record into the directory. Asserts that `name` is the record's own and that no other
  // record has it. Repeating it has no effect.
  static void typeNodeIs(KorType* type, std::string_view name);
  // Returns the record of that qualified name, null if none is entered.
  [[nodiscard]] static KorType const* named(std::string_view name);
  // All entered records, in order of entry.
  [[nodiscard]] static std::vector<KorType const*> const& all();

 private:
  static constexpr std::size_t deepest = 8;

  // Removes the identifier of `attr` from the lookup.
  void idForgotten(KorAttr const& attr);

  std::string_view name_;
  KorType const* base_;
  std::uint32_t level_;
  std::span<std::string_view const> enumNames_;
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
