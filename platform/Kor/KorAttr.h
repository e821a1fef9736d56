// SPDX-License-Identifier: Apache-2.0
#pragma once

// KorAttr: the record of one attribute of a type: data, a keyed collection, or a function.

#include "Kor/ArgumentSpec.h"
#include "Kor/Export.h"
#include "Kor/Ptr.h"
#include "Kor/String.h"
#include "Kor/Types.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace Kor {

struct AttributeOperation;
class ArgumentView;
class GenericValue;
class KorType;
class PtrInterface;

// The target of an operation: an object or a box. The caller keeps it alive.
struct Instance {
  PtrInterface const* object;
  bool isConst;
};

class KOR_API KorAttr {
 public:
  using Ptr = Kor::Ptr<KorAttr>;
  using PtrConst = Kor::Ptr<KorAttr const>;

  // Two words of flag bits, stored as registered.
  class AttrFlags {
   public:
    constexpr AttrFlags() = default;
    constexpr explicit AttrFlags(std::uint32_t first, std::uint32_t second = 0x400)
        : first_(first), second_(second) {}
    [[nodiscard]] constexpr std::uint32_t first() const { return first_; }
    [[nodiscard]] constexpr std::uint32_t second() const { return second_; }
    friend constexpr bool operator==(AttrFlags const&, AttrFlags const&) = default;

   private:
    std::uint32_t first_ = 0;
    std::uint32_t second_ = 0;
  };

  class KOR_API KorAttrIntrospectionFlags {
   public:
    constexpr KorAttrIntrospectionFlags() = default;
    // Raises RangeException "KorAttrIntrospectionFlags::value > 0x3f not allowed".
    constexpr explicit KorAttrIntrospectionFlags(std::uint32_t value) : value_(checked(value)) {}

    // The flags with only that bit.
    static constexpr KorAttrIntrospectionFlags isIndependentDomainAttr_() {
      return KorAttrIntrospectionFlags(2);
    }
    static constexpr KorAttrIntrospectionFlags isFunction_() {
      return KorAttrIntrospectionFlags(8);
    }
    static constexpr KorAttrIntrospectionFlags hasInternalIndex_() {
      return KorAttrIntrospectionFlags(32);
    }

    [[nodiscard]] constexpr std::uint32_t value() const { return value_; }
    // The value can be chosen independently of the owner's other attributes.
    [[nodiscard]] constexpr bool isIndependentDomainAttr() const { return (value_ & 2U) != 0; }
    // It is called, not stored.
    [[nodiscard]] constexpr bool isFunction() const { return (value_ & 8U) != 0; }
    // The collection keeps an index of its members.
    [[nodiscard]] constexpr bool hasInternalIndex() const { return (value_ & 32U) != 0; }

    friend constexpr KorAttrIntrospectionFlags operator|(KorAttrIntrospectionFlags a,
                                                         KorAttrIntrospectionFlags b) {
      return KorAttrIntrospectionFlags(a.value_ | b.value_);
    }
    friend constexpr bool operator==(KorAttrIntrospectionFlags,
                                     KorAttrIntrospectionFlags) = default;

   private:
    static constexpr std::uint32_t checked(std::uint32_t value) {
      return value <= 0x3f ? value : refused();
    }
    static std::uint32_t refused();

    std::uint32_t value_ = 0;
  };

  // Performs an operation of the generic interface on this attribute of an object.
  using Access = GenericValue (*)(Instance self, KorAttr const& attr,
                                  AttributeOperation const& operation);
  // Reads plain data directly, without an operation code.
  using Reader = GenericValue (*)(Instance self);
  // Writes plain data directly, without an operation code. `self` must not be const.
  using Writer = void (*)(Instance self, KorAttr const& attr, GenericValue const& value);
  // Calls a function directly, without a list.
  using Caller = GenericValue (*)(Instance self, KorAttr const& attr,
                                  std::span<ArgumentView const> args);

  // The next three are about a type; KorType.cpp defines them.

  // Returns the attribute of that name, null if there is none.
  [[nodiscard]] static Ptr attr(KorType const* type, std::string_view name);
  // Removes an attribute. Does nothing if there is none of that name.
  static void attrDel(KorType* type, std::string_view name);
  // Registers an attribute at the end, or replaces the one of that name in its place. `keyAttr` is
  // for a collection that creates its members from their key: it is the member's attribute that
  // holds the key.
  static Ptr attrIs(KorType* type, Name name, KorType const* valueType, Ptr const& keyAttr,
                    Ptr const& indexAttr, AttrFlags flags, AttributeId id);

  [[nodiscard]] Name const& name() const { return name_; }
  // One line that explains the attribute: what it means, its unit, a special value. Empty if the
  // table says nothing.
  [[nodiscard]] std::string_view prose() const { return prose_; }
  // `prose` is a literal.
  void proseIs(std::string_view prose) { prose_ = prose; }
  // The type that registered this record; for an overridden function, the most derived one.
  [[nodiscard]] KorType const* owner() const { return owner_; }
  // The type of the value, of a collection's members, or of a function's result.
  [[nodiscard]] KorType const* valueType() const { return valueType_; }
  // The key type of a collection, otherwise null.
  [[nodiscard]] KorType const* keyType() const { return keyType_; }
  [[nodiscard]] Ptr const& keyAttr() const { return keyAttr_; }
  [[nodiscard]] Ptr const& indexAttr() const { return indexAttr_; }
  [[nodiscard]] AttrFlags flags() const { return flags_; }
  [[nodiscard]] KorAttrIntrospectionFlags introspectionFlags() const { return introspection_; }
  void introspectionFlagsIs(KorAttrIntrospectionFlags flags) { introspection_ = flags; }
  [[nodiscard]] AttributeId id() const { return id_; }
  [[nodiscard]] bool isFunction() const { return introspection_.isFunction(); }
  [[nodiscard]] bool isCollection() const { return keyType_ != nullptr; }
  // True for a collection of objects that it creates from their key.
  [[nodiscard]] bool isOwnedCollection() const { return bool(keyAttr_); }

  // The arguments of a function, in calling order.
  [[nodiscard]] std::vector<ArgumentSpec> const& args() const { return args_; }
  void newArg(Name name, Name typeName);

  // The accessor. Until set, it rejects every operation.
  [[nodiscard]] Access access() const { return access_; }
  void accessIs(Access function) { access_ = function; }
  // Null unless the attribute is data.
  [[nodiscard]] Reader reader() const { return reader_; }
  void readerIs(Reader function) { reader_ = function; }
  // Null unless the attribute is data that can be written.
  [[nodiscard]] Writer writer() const { return writer_; }
  void writerIs(Writer function) { writer_ = function; }
  // Until set, it rejects every call.
  [[nodiscard]] Caller caller() const { return caller_; }
  void callerIs(Caller function) { caller_ = function; }
  // True if operation 128 can succeed: it writes data or sets a member of a collection.
  [[nodiscard]] bool isWritable() const { return isWritable_; }
  void isWritableIs(bool writable) { isWritable_ = writable; }

  void newRef() const noexcept { ++references_; }
  void deleteRef() const noexcept {
    if (--references_ == 0) {
      delete this;
    }
  }

 private:
  friend Ptr defNoninstantiatingAttr(KorType*, Name, KorType const*, KorType const*, AttrFlags,
                                     KorAttrIntrospectionFlags, AttributeId);

  KorAttr(KorType const* owner, Name name, KorType const* valueType, AttrFlags flags,
          AttributeId id);
  ~KorAttr() = default;

  // These raise OpNotSupportedException. Defined in GenericIf.cpp.
  static GenericValue notSupported(Instance self, KorAttr const& attr,
                                   AttributeOperation const& operation);

  static GenericValue notCallable(Instance self, KorAttr const& attr,
                                  std::span<ArgumentView const> args);

  mutable std::uint32_t references_ = 1;
  AttributeId id_;
  Access access_ = &notSupported;
  Reader reader_ = nullptr;
  Writer writer_ = nullptr;
  Caller caller_ = &notCallable;
  Name name_;
  std::string_view prose_;
  KorType const* owner_;
  KorType const* valueType_;
  KorType const* keyType_ = nullptr;
  Ptr keyAttr_;
  Ptr indexAttr_;
  AttrFlags flags_;
  KorAttrIntrospectionFlags introspection_;
  bool isWritable_ = false;
  std::vector<ArgumentSpec> args_;
};

// Defines data (`keyType` null) or a collection of values, and announces it to the global
// introspection reactor. Defined in Registration.cpp.
KOR_API KorAttr::Ptr defNoninstantiatingAttr(KorType* owner, Name name, KorType const* valueType,
                                             KorType const* keyType, KorAttr::AttrFlags flags,
                                             KorAttr::KorAttrIntrospectionFlags introspection,
                                             AttributeId id);

}  // namespace Kor
