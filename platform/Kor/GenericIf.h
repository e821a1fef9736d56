// SPDX-License-Identifier: Apache-2.0
#pragma once

// GenericIf: the adapter through which an object or a value is reached without its class: by
// attribute identifier, operation code and generic arguments.
//
// Which operation an attribute takes, and what it answers:
//
//   data               0 reads it; 128 writes the value
//   collection         0 the member at the index, the default or null when there is none; 1 the
//                      number of members; 2 the first key; 3 the key behind the index, which need
//                      not be a member; both nothing at the end; 128 sets the member at the index;
//                      129 deletes it
//   owned collection   the same; 128 takes the list [] or [key] and answers the member
//   function           0 calls it with a list of arguments
//
// Errors are the typed exceptions below, and nothing has changed when one is raised.

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
  explicit TypeException(String8 name) : TypeException({}, std::move(name)) {}
  TypeException(String8 typeName, String8 name);
  ~TypeException() override;
  // The type that was expected; empty where it goes without saying.
  [[nodiscard]] String8 const& typeName() const { return typeName_; }
  // What is missing or wrong: an attribute, an argument, "kor_index" or "List".
  [[nodiscard]] String8 const& name() const { return name_; }

 private:
  String8 typeName_;
  String8 name_;
};

// The attribute does not take that operation.
class KOR_API OpNotSupportedException : public Exception {
 public:
  OpNotSupportedException(String8 name, std::uint32_t code);
  ~OpNotSupportedException() override;
  // The attribute, "unknown" when there is none of that identifier.
  [[nodiscard]] String8 const& name() const { return name_; }
  [[nodiscard]] std::uint32_t code() const { return code_; }

 private:
  String8 name_;
  std::uint32_t code_;
};

// An index was given where there is nothing to index.
class KOR_API BadIndexAttrException : public Exception {
 public:
  explicit BadIndexAttrException(String8 name);
  ~BadIndexAttrException() override;
  [[nodiscard]] String8 const& name() const { return name_; }

 private:
  String8 name_;
};

// More arguments than a function or constructor takes.
class KOR_API UnknownArgException : public Exception {
 public:
  explicit UnknownArgException(String8 name);
  ~UnknownArgException() override;
  // The function, or the short name of the constructor's type.
  [[nodiscard]] String8 const& name() const { return name_; }

 private:
  String8 name_;
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

  // `object` is an instance of `type`, or a box with one.
  GenericIf(Ptr<PtrInterface const> object, KorType const* type, bool isConst)
      : object_(std::move(object)), type_(type), const_(isConst) {}
  // The adapter of what a generic value refers to: a box or an object.
  explicit GenericIf(GenericValue const& value);

  // Answers a request, by the attribute's identifier: const first, then whether there is such an
  // attribute, then what the attribute itself asks.
  GenericValue attributeOp(AttributeOp const& operation) const {
    needModifiable(const_, operation);
    KorAttr const* const attr = type_->attr(operation.attribute);
    if (attr == nullptr) [[unlikely]] {
      throwOpNotSupportedException("unknown", operation.code);
    }
    return attr->access()({object_.get(), const_}, *attr, operation);
  }
  // The same on an attribute of this type, whatever its identifier; so the attributes that share
  // the identifier 0 are reached.
  GenericValue attributeOp(KorAttr const& attr, AttributeOp const& operation) const {
    return attributeOp({object_.get(), const_}, attr, operation);
  }
  // The same without an adapter.
  static GenericValue attributeOp(Instance const& self, KorAttr const& attr,
                                  AttributeOp const& operation) {
    needModifiable(self.isConst, operation);
    return attr.access()(self, attr, operation);
  }

  [[nodiscard]] KorType const* type() const { return type_; }
  [[nodiscard]] bool isConst() const { return const_; }
  [[nodiscard]] Ptr<PtrInterface const> const& object() const { return object_; }
  // What refers to the same, with the same const flag.
  [[nodiscard]] GenericValue value() const;
  [[nodiscard]] String8 attributeString(AttributeId id) const { return type_->attributeString(id); }

  [[noreturn]] static void throwTypeException(String8 const& name);
  [[noreturn]] static void throwTypeException(String8 const& typeName, String8 const& name);
  [[noreturn]] static void throwOpNotSupportedException(String8 const& name, std::uint32_t code);
  [[noreturn]] static void throwBadIndexAttrException(String8 const& name);
  [[noreturn]] static void throwUnknownArgException(String8 const& name);
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

// The adapter of a counted object, seen as some type in its lineage.
class KOR_API GenericIfPtrInterface : public GenericIf {
 public:
  using GenericIf::GenericIf;
  explicit GenericIfPtrInterface(GenericIf adapter) : GenericIf(std::move(adapter)) {}
  // The same object seen as its base type; of the root, the root again. An identifier that a type
  // does not own is answered by this adapter.
  [[nodiscard]] GenericIfPtrInterface baseGenericIf() const;
};

// The adapter of an entity.
class KOR_API GenericIfEntity : public GenericIfPtrInterface {
 public:
  using GenericIfPtrInterface::GenericIfPtrInterface;

  // Walks the attributes of an object in the order in which the type lists them.
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

// The by-name constructor: builds an instance of `type` from a list of its constructor's arguments.
// Raises TypeException and UnknownArgException as above, and RangeException for a type that cannot
// be built.
KOR_API GenericIf genericConstruct(KorType const& type, GenericValue const& arguments);

// Text forms of generic values ---------------------------------------------------------------

// As the value itself prints; a list is a list of these; no value prints as None.
KOR_API String8 valueToStrep(GenericValue const& value);
// Reads any text form: numbers, texts, True, False, None, lists, values and objects. Raises
// RangeException.
KOR_API void sequenceToValue(String8::IteratorConst& it, String8::IteratorConst const& end,
                             GenericValue& value);

}  // namespace Kor
