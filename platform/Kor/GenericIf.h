// SPDX-License-Identifier: Apache-2.0
#pragma once

// GenericIf: access to an object or a value without its class, by attribute identifier, operation
// code and generic arguments.
//
// Operations and their results:
//
//   data               0 reads it; 128 writes the value
//   collection         0 returns the member at the index, or the default or null if there is none;
//                      1 the number of members; 2 the first key; 3 the key after the index, which
//                      need not be a member; 2 and 3 return no value at the end; 128 sets the
//                      member at the index; 129 deletes it
//   owned collection   the same, but 128 takes the list [] or [key] and returns the member
//   function           0 calls it with a list of arguments
//
// Errors are the typed exceptions below. A call that raises one changes nothing.

#include "Kor/Exception.h"
#include "Kor/Export.h"
#include "Kor/GenericValue.h"
#include "Kor/KorAttr.h"
#include "Kor/KorType.h"
#include "Kor/PtrInterface.h"
#include "Kor/Types.h"

#include <cstdint>

namespace Kor {

// An argument, a value or an index is missing or of the wrong type.
class KOR_API TypeException : public Exception {
 public:
  explicit TypeException(String name) : TypeException({}, std::move(name)) {}
  TypeException(String typeName, String name);
  ~TypeException() override;
  // The expected type; empty if it is obvious.
  [[nodiscard]] String const& typeName() const { return typeName_; }
  // The missing or wrong item: an attribute, an argument, "kor_index" or "List".
  [[nodiscard]] String const& name() const { return name_; }

 private:
  String typeName_;
  String name_;
};

// The attribute does not support the operation.
class KOR_API OpNotSupportedException : public Exception {
 public:
  OpNotSupportedException(String name, std::uint32_t code);
  ~OpNotSupportedException() override;
  // The attribute; "unknown" if no attribute has that identifier.
  [[nodiscard]] String const& name() const { return name_; }
  [[nodiscard]] std::uint32_t code() const { return code_; }

 private:
  String name_;
  std::uint32_t code_;
};

// An index was given for an attribute without an index.
class KOR_API BadIndexAttrException : public Exception {
 public:
  explicit BadIndexAttrException(String name);
  ~BadIndexAttrException() override;
  [[nodiscard]] String const& name() const { return name_; }

 private:
  String name_;
};

// More arguments than the function or constructor takes.
class KOR_API UnknownArgException : public Exception {
 public:
  explicit UnknownArgException(String name);
  ~UnknownArgException() override;
  // The function, or the short name of the constructor's type.
  [[nodiscard]] String const& name() const { return name_; }

 private:
  String name_;
};

// A modifying operation on a const instance.
class KOR_API ConstException : public Exception {
 public:
  ConstException();
  ~ConstException() override;
};

// One request. Codes 128 to 255 modify.
struct AttributeOperation {
  enum Code : std::uint32_t {
    get = 0,
    count = 1,
    first = 2,
    next = 3,
    set = 128,
    del = 129,
  };

  AttributeId attribute = 0;
  std::uint32_t code = get;
  GenericValue kor_index = {};  // the key of a collection's member
  GenericValue value = {};
};

class KOR_API GenericIf {
 public:
  using AttributeOp = AttributeOperation;
  using List_ = GenericList;

  // `object` is an instance of `type`, or a box that holds one.
  GenericIf(Ptr<PtrInterface const> object, KorType const* type, bool isConst)
      : object_(std::move(object)), type_(type), const_(isConst) {}
  // The adapter of the box or object that `value` refers to.
  explicit GenericIf(GenericValue const& value);

  // Performs a request. Checks const first, then that the attribute exists, then the attribute's
  // own conditions.
  GenericValue attributeOp(AttributeOp const& operation) const {
    needModifiable(const_, operation);
    KorAttr const* const attr = type_->attr(operation.attribute);
    if (attr == nullptr) [[unlikely]] {
      throwOpNotSupportedException("unknown", operation.code);
    }
    return attr->access()({object_.get(), const_}, *attr, operation);
  }
  // The same for a given attribute of this type. This also reaches attributes that share the
  // identifier 0.
  GenericValue attributeOp(KorAttr const& attr, AttributeOp const& operation) const {
    return attributeOp({object_.get(), const_}, attr, operation);
  }
  // The same without an adapter.
  static GenericValue attributeOp(Instance self, KorAttr const& attr,
                                  AttributeOp const& operation) {
    needModifiable(self.isConst, operation);
    return attr.access()(self, attr, operation);
  }

  [[nodiscard]] KorType const* type() const { return type_; }
  [[nodiscard]] bool isConst() const { return const_; }
  [[nodiscard]] Ptr<PtrInterface const> const& object() const { return object_; }
  // The object or value that this adapter refers to, with the same const flag.
  [[nodiscard]] GenericValue value() const;
  [[nodiscard]] String attributeString(AttributeId id) const { return type_->attributeString(id); }

  [[noreturn]] static void throwTypeException(String const& name);
  [[noreturn]] static void throwTypeException(String const& typeName, String const& name);
  [[noreturn]] static void throwOpNotSupportedException(String const& name, std::uint32_t code);
  [[noreturn]] static void throwBadIndexAttrException(String const& name);
  [[noreturn]] static void throwUnknownArgException(String const& name);
  [[noreturn]] static void throwConstException();

 private:
  static void needModifiable(bool isConst, AttributeOp const& operation) {
    if (operation.code - 128U < 128U && isConst) [[unlikely]] {
      throwConstException();
    }
  }

  Ptr<PtrInterface const> object_;
  KorType const* type_;
  bool const_;
};

// The adapter of a counted object, viewed as one of its base types.
class KOR_API GenericIfPtrInterface : public GenericIf {
 public:
  using GenericIf::GenericIf;
  explicit GenericIfPtrInterface(GenericIf adapter) : GenericIf(std::move(adapter)) {}
  // The same object viewed as its base type; the root returns itself. This adapter handles the
  // identifiers that a type does not own.
  [[nodiscard]] GenericIfPtrInterface baseGenericIf() const;
};

// The adapter of an entity.
class KOR_API GenericIfEntity : public GenericIfPtrInterface {
 public:
  using GenericIfPtrInterface::GenericIfPtrInterface;

  // Iterates over the attributes of an object in the order of its type.
  class AttributeIterator {
   public:
    explicit AttributeIterator(KorType const* type) : type_(type) {}
    explicit operator bool() const { return place_ < type_->attrs().size(); }
    KorAttr const& operator*() const { return *type_->attrs()[place_]; }
    KorAttr const* operator->() const { return type_->attrs()[place_].get(); }
    AttributeIterator& operator++() {
      ++place_;
      return *this;
    }

   private:
    KorType const* type_;
    std::size_t place_ = 0;
  };
  // NOLINTNEXTLINE(readability-identifier-naming): its published name
  [[nodiscard]] AttributeIterator attributeIterator_iterObj() const {
    return AttributeIterator(type());
  }
};

// Creates an instance of `type` from the list of its constructor arguments. Raises TypeException
// and UnknownArgException as above, and RangeException if the type has no constructor by name.
KOR_API GenericIf genericConstruct(KorType const& type, GenericValue const& arguments);

// Parses any text form: numbers, texts, True, False, None, lists, values and objects. Raises
// RangeException.
KOR_API void sequenceToValue(String::IteratorConst& it, String::IteratorConst const& end,
                             GenericValue& value);

}  // namespace Kor
