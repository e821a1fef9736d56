// SPDX-License-Identifier: Apache-2.0
#pragma once

// GenericValue: any value that an attribute can have, an argument can be, or a function can answer.
//
// Numbers, texts and enumerations stand in it directly. A value of a model type stands in a counted
// box, an object is referred to; both carry a const flag. Copies of a generic value share box,
// object and list.

#include "Kor/Export.h"
#include "Kor/KorType.h"
#include "Kor/PtrInterface.h"
#include "Kor/String.h"

#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace Kor {

class GenericList;

// A value of a model type, counted. fwkType() is the type of the value.
class KOR_API ValueBox : public PtrInterface {
 public:
  ~ValueBox() override;
  // `other` holds a value of the same type.
  [[nodiscard]] virtual bool equals(ValueBox const& other) const = 0;
  [[nodiscard]] virtual String8 text() const = 0;
};

class KOR_API GenericValue {
 public:
  enum class Kind : std::uint8_t {
    none,  // no value at all
    null,  // a null pointer
    boolean,
    integer,  // at most 2^63 - 1
    natural,  // from 2^63 on
    real,
    enumeration,  // a number with a type that may have a name for it
    text,
    list,
    value,  // of a model type, in a box
    object,
  };

  GenericValue() noexcept = default;
  // NOLINTBEGIN(google-explicit-constructor): every such value is a generic value
  GenericValue(std::nullptr_t) noexcept : kind_(Kind::null) {}
  template <std::integral Number>
  GenericValue(Number number) noexcept {
    if constexpr (std::same_as<Number, bool>) {
      kind_ = Kind::boolean;
      payload_.integer = number ? 1 : 0;
    } else {
      kind_ = std::cmp_less_equal(number, INT64_MAX) ? Kind::integer : Kind::natural;
      // NOLINTNEXTLINE(bugprone-signed-char-misuse): a small number, no character
      payload_.integer = static_cast<std::int64_t>(number);
    }
  }
  GenericValue(double number) noexcept : kind_(Kind::real) { payload_.real = number; }
  GenericValue(String8 text) noexcept : kind_(Kind::text) {
    new (&payload_.text) String8(std::move(text));
  }
  GenericValue(char const* text) : GenericValue(String8(text)) {}
  GenericValue(std::string const& text) : GenericValue(String8(text)) {}
  GenericValue(Kor::Ptr<GenericList> const& list);
  // NOLINTEND(google-explicit-constructor)
  // `type` is that of the enumeration.
  GenericValue(KorType const* type, std::int32_t number) noexcept
      : kind_(Kind::enumeration), number_(number) {
    payload_.type = type;
  }
  // A null pointer gives the null value.
  GenericValue(Kor::Ptr<PtrInterface const> const& object, bool isConst) noexcept
      : GenericValue(object == nullptr ? Kind::null : Kind::object, object.get(), isConst) {}
  GenericValue(Kor::Ptr<ValueBox const> const& box, bool isConst) noexcept
      : GenericValue(Kind::value, box.get(), isConst) {}

  GenericValue(GenericValue const& other) noexcept
      : kind_(other.kind_), const_(other.const_), number_(other.number_) {
    if (isCounted()) {
      copyCounted(other);
    } else {
      payload_.integer = other.payload_.integer;
    }
  }
  GenericValue(GenericValue&& other) noexcept
      : kind_(std::exchange(other.kind_, Kind::none)),
        const_(other.const_),
        number_(other.number_) {
    payload_.integer = other.payload_.integer;
  }
  ~GenericValue() {
    if (isCounted()) {
      release();
    }
  }
  GenericValue& operator=(GenericValue const& other) noexcept {
    GenericValue(other).swap(*this);
    return *this;
  }
  GenericValue& operator=(GenericValue&& other) noexcept {
    GenericValue(std::move(other)).swap(*this);
    return *this;
  }
  void swap(GenericValue& other) noexcept {
    std::swap(kind_, other.kind_);
    std::swap(const_, other.const_);
    std::swap(number_, other.number_);
    std::swap(payload_.integer, other.payload_.integer);
  }

  [[nodiscard]] Kind kind() const { return kind_; }
  // Whether there is a value; null is one.
  [[nodiscard]] bool present() const { return kind_ != Kind::none; }
  [[nodiscard]] bool isNull() const { return kind_ == Kind::null; }
  [[nodiscard]] bool isInteger() const { return kind_ == Kind::integer || kind_ == Kind::natural; }
  // Whether a box or object may not be changed through this value. False for all other kinds.
  [[nodiscard]] bool isConst() const { return const_; }
  // Forbids to change the box or object through this value.
  void makeConst() { const_ = kind_ == Kind::object || kind_ == Kind::value; }

  // The content; the kind must be the one named.
  [[nodiscard]] bool boolean() const { return payload_.integer != 0; }
  [[nodiscard]] std::int64_t integer() const { return payload_.integer; }
  [[nodiscard]] std::uint64_t natural() const {
    return static_cast<std::uint64_t>(payload_.integer);
  }
  [[nodiscard]] double real() const { return payload_.real; }
  [[nodiscard]] std::int32_t enumeration() const { return number_; }
  [[nodiscard]] KorType const* enumerationType() const { return payload_.type; }
  [[nodiscard]] String8 const& text() const { return payload_.text; }
  [[nodiscard]] GenericList const& list() const;
  [[nodiscard]] Kor::Ptr<GenericList> const& listPtr() const { return payload_.list; }
  // Of a box or an object.
  [[nodiscard]] PtrInterface const* object() const { return payload_.object; }

  // Numbers compare by value, whatever their kind; boxes by their values, objects by identity. What
  // prints as a plain text, an enumeration's value for one, is equal to that text.
  KOR_API friend bool operator==(GenericValue const& a, GenericValue const& b);
  // Writes the text form.
  KOR_API friend std::ostream& operator<<(std::ostream& out, GenericValue const& value);

 private:
  GenericValue(Kind kind, PtrInterface const* object, bool isConst) noexcept
      : kind_(kind), const_(isConst && object != nullptr) {
    payload_.object = object;
    if (object != nullptr) {
      object->newRef();
    }
  }

  friend class GenericList;

  [[nodiscard]] bool isCounted() const { return kind_ >= Kind::text; }
  void copyCounted(GenericValue const& other) noexcept;
  void release() noexcept;

  union Payload {
    Payload() noexcept : integer(0) {}
    ~Payload() {}  // NOLINT(modernize-use-equals-default): the owner destroys what is in it
    Payload(Payload const&) = delete;
    Payload& operator=(Payload const&) = delete;

    std::int64_t integer;
    double real;
    KorType const* type;
    String8 text;
    Kor::Ptr<GenericList> list;
    PtrInterface const* object;  // counted
  };

  Kind kind_ = Kind::none;
  bool const_ = false;
  std::int32_t number_ = 0;
  Payload payload_;
};

// An ordered list of generic values: the arguments of a constructor or function, or a result. Lists
// may be nested to any depth; a list must not contain itself.
class KOR_API GenericList {
 public:
  using Ptr = Kor::Ptr<GenericList>;

  GenericList() = default;
  explicit GenericList(std::vector<GenericValue> values) : own_(std::move(values)), values_(own_) {}
  // A list over values that stand elsewhere and outlive it. For one on the stack: share() it.
  explicit GenericList(std::span<GenericValue const> values) : values_(values) {}
  GenericList(GenericList const&) = delete;
  GenericList& operator=(GenericList const&) = delete;
  ~GenericList() = default;

  template <class... Values>
  [[nodiscard]] static Ptr of(Values&&... values) {
    std::vector<GenericValue> elements;
    elements.reserve(sizeof...(values));
    (elements.emplace_back(std::forward<Values>(values)), ...);
    return Ptr(new GenericList(std::move(elements)));
  }

  [[nodiscard]] std::size_t size() const { return values_.size(); }
  [[nodiscard]] bool empty() const { return values_.empty(); }
  // The value at a place, no value behind the end.
  [[nodiscard]] GenericValue const& operator[](std::size_t place) const {
    return place < values_.size() ? values_[place] : none();
  }
  void append(GenericValue value) {
    if (own_.size() != values_.size()) {
      own_.assign(values_.begin(), values_.end());
    }
    own_.push_back(std::move(value));
    values_ = own_;
  }
  [[nodiscard]] auto begin() const { return values_.begin(); }
  [[nodiscard]] auto end() const { return values_.end(); }

  void newRef() const noexcept { ++references_; }
  void deleteRef() const noexcept {
    if (--references_ == 0) {
      destroy(const_cast<GenericList*>(this));
    }
  }

 private:
  static GenericValue const& none();
  // Destroys a list and the lists in it that are referred to from nowhere else, without recursion.
  static void destroy(GenericList* list) noexcept;

  std::vector<GenericValue> own_;
  std::span<GenericValue const> values_;
  mutable std::uint32_t references_ = 1;
  GenericList* nextToDestroy_ = nullptr;
};

inline GenericList const& GenericValue::list() const {
  return *payload_.list;
}

}  // namespace Kor
