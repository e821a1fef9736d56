// SPDX-License-Identifier: Apache-2.0
#pragma once

// GenericValue: any attribute value, argument or result.
//
// Numbers, texts and enumerations are stored directly. A value of a model type is stored in a
// counted box; an object is referenced. Both carry a const flag. Copies share the box, object or
// list.

#include "Kor/Export.h"
#include "Kor/KorType.h"
#include "Kor/PtrInterface.h"
#include "Kor/String.h"

#include <compare>
#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace Kor {

class GenericList;

// A counted value of a model type. fwkType() returns the type of the value.
class KOR_API ValueBox : public PtrInterface {
 public:
  ~ValueBox() override;
  // `other` must hold a value of the same type.
  [[nodiscard]] virtual bool equals(ValueBox const& other) const = 0;
  // Unordered if values of that type have no order.
  [[nodiscard]] virtual std::partial_ordering order(ValueBox const& other) const = 0;
  [[nodiscard]] virtual String text() const = 0;
};

class KOR_API GenericValue {
 public:
  enum class Kind : std::uint8_t {
    none,  // no value
    null,  // a null pointer
    boolean,
    integer,  // at most 2^63 - 1
    natural,  // 2^63 and above
    real,
    enumeration,  // a number with its enumeration type
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
  GenericValue(String text) noexcept : kind_(Kind::text) {
    new (&payload_.text) String(std::move(text));
  }
  GenericValue(char const* text) : GenericValue(String(text)) {}
  GenericValue(std::string const& text) : GenericValue(String(text)) {}
  GenericValue(Kor::Ptr<GenericList> list) noexcept;
  // NOLINTEND(google-explicit-constructor)
  // `type` is the enumeration's type.
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
  // True if there is a value. Null is a value.
  [[nodiscard]] bool present() const { return kind_ != Kind::none; }
  [[nodiscard]] bool isNull() const { return kind_ == Kind::null; }
  [[nodiscard]] bool isInteger() const { return kind_ == Kind::integer || kind_ == Kind::natural; }
  // True if the box or object must not be changed through this value. False for all other kinds.
  [[nodiscard]] bool isConst() const { return const_; }
  // Makes the box or object read-only through this value.
  void makeConst() { const_ = kind_ == Kind::object || kind_ == Kind::value; }

  // The content. The caller must check the kind first.
  [[nodiscard]] bool boolean() const { return payload_.integer != 0; }
  [[nodiscard]] std::int64_t integer() const { return payload_.integer; }
  [[nodiscard]] std::uint64_t natural() const {
    return static_cast<std::uint64_t>(payload_.integer);
  }
  [[nodiscard]] double real() const { return payload_.real; }
  [[nodiscard]] std::int32_t enumeration() const { return number_; }
  [[nodiscard]] KorType const* enumerationType() const { return payload_.type; }
  [[nodiscard]] String const& text() const { return payload_.text; }
  [[nodiscard]] GenericList const& list() const;
  [[nodiscard]] Kor::Ptr<GenericList> const& listPtr() const { return payload_.list; }
  // For a box or an object.
  [[nodiscard]] PtrInterface const* object() const { return payload_.object; }

  // Numbers compare by value, whatever their kind; boxes by their values, objects by identity. A
  // value that prints as a plain text, e.g. an enumeration's, equals that text.
  KOR_API friend bool operator==(GenericValue const& a, GenericValue const& b);
  // Two values of one model type by their order; anything else is unordered.
  KOR_API friend std::partial_ordering orderOf(GenericValue const& a, GenericValue const& b);
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
    String text;
    Kor::Ptr<GenericList> list;
    PtrInterface const* object;  // counted
  };

  Kind kind_ = Kind::none;
  bool const_ = false;
  std::int32_t number_ = 0;
  Payload payload_;
};

// An ordered list of generic values: arguments or a result. Lists may be nested to any depth, but
// must not contain themselves.
class KOR_API GenericList {
 public:
  using Ptr = Kor::Ptr<GenericList>;

  GenericList() = default;
  explicit GenericList(std::vector<GenericValue> values) : own_(std::move(values)), values_(own_) {}
  // A view of values owned elsewhere, which must outlive it. Use share() for a list on the stack.
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
  // The value at `place`, or no value past the end.
  [[nodiscard]] GenericValue const& operator[](std::size_t place) const {
    return place < values_.size() ? values_[place] : none();
  }
  static GenericValue const& none();
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
  // Destroys a list and the nested lists that only it refers to, without recursion.
  static void destroy(GenericList* list) noexcept;

  std::vector<GenericValue> own_;
  std::span<GenericValue const> values_;
  mutable std::uint32_t references_ = 1;
  GenericList* nextToDestroy_ = nullptr;
};

inline GenericValue::GenericValue(Kor::Ptr<GenericList> list) noexcept
    : kind_(list == nullptr ? Kind::null : Kind::list) {
  new (&payload_.list) Kor::Ptr<GenericList>(std::move(list));
}

inline GenericList const& GenericValue::list() const {
  return *payload_.list;
}

// Returns the text form: as the value itself prints, a list as a list of these, and no value as
// None.
KOR_API String valueToStrep(GenericValue const& value);

}  // namespace Kor
