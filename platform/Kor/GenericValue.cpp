// SPDX-License-Identifier: Apache-2.0
#include "Kor/GenericValue.h"

#include "Kor/Strep.h"

#include <string>
#include <vector>

namespace Kor {
namespace {

using Kind = GenericValue::Kind;

// True if a value that prints as a plain text, e.g. an enumeration's, prints as `text`.
bool printsAs(GenericValue const& value, GenericValue const& text) {
  return text.kind() == Kind::text &&
         (value.kind() == Kind::enumeration || value.kind() == Kind::value) &&
         valueToStrep(value) == valueToStrep(text);
}

bool equalNumbers(GenericValue const& a, GenericValue const& b) {
  auto const asReal = [](GenericValue const& value) {
    switch (value.kind()) {
    case Kind::real: return value.real();
    case Kind::natural: return static_cast<double>(value.natural());
    case Kind::enumeration: return static_cast<double>(value.enumeration());
    default: return static_cast<double>(value.integer());
    }
  };
  auto const asInteger = [](GenericValue const& value) {
    return value.kind() == Kind::enumeration ? std::int64_t{value.enumeration()} : value.integer();
  };
  if (a.kind() == Kind::real || b.kind() == Kind::real) {
    return asReal(a) == asReal(b);
  }
  return (a.kind() == Kind::natural) == (b.kind() == Kind::natural) && asInteger(a) == asInteger(b);
}

bool isNumber(GenericValue const& value) {
  return value.isInteger() || value.kind() == Kind::real || value.kind() == Kind::enumeration;
}

// Lists may be nested too deep for recursion, so the open positions are in a vector.
bool equalLists(GenericList const& left, GenericList const& right) {
  struct Place {
    GenericList const& a;
    GenericList const& b;
    std::size_t next = 0;
  };
  if (left.size() != right.size()) {
    return false;
  }
  std::vector<Place> open{{left, right}};
  while (!open.empty()) {
    Place& place = open.back();
    if (place.next == place.a.size()) {
      open.pop_back();
      continue;
    }
    GenericValue const& a = place.a[place.next];
    GenericValue const& b = place.b[place.next];
    ++place.next;
    if (a.kind() == Kind::list && b.kind() == Kind::list) {
      if (a.list().size() != b.list().size()) {
        return false;
      }
      open.push_back({a.list(), b.list()});
    } else if (!(a == b)) {
      return false;
    }
  }
  return true;
}

// Lists may be nested too deep for recursion, so the open positions are in a vector.
String listToStrep(GenericList const& whole) {
  struct Place {
    GenericList const& list;
    std::size_t next = 0;
  };
  std::string text = "[";
  std::vector<Place> open{{whole}};
  while (!open.empty()) {
    Place& place = open.back();
    if (place.next == place.list.size()) {
      text.push_back(']');
      open.pop_back();
      continue;
    }
    text.append(place.next == 0 ? "" : ", ");
    GenericValue const& element = place.list[place.next++];
    if (element.kind() == Kind::list) {
      text.push_back('[');
      open.push_back({element.list()});
    } else {
      text.append(valueToStrep(element).view());
    }
  }
  return text;
}

}  // namespace

ValueBox::~ValueBox() = default;

void GenericValue::copyCounted(GenericValue const& other) noexcept {
  switch (kind_) {
  case Kind::text: new (&payload_.text) String(other.payload_.text); break;
  case Kind::list: new (&payload_.list) Kor::Ptr<GenericList>(other.payload_.list); break;
  default:
    payload_.object = other.payload_.object;
    payload_.object->newRef();
    break;
  }
}

void GenericValue::release() noexcept {
  switch (kind_) {
  case Kind::text: payload_.text.~String(); break;
  case Kind::list: payload_.list.~Ptr(); break;
  default: payload_.object->deleteRef(); break;
  }
}

bool operator==(GenericValue const& a, GenericValue const& b) {
  if (isNumber(a) && isNumber(b)) {
    return equalNumbers(a, b);
  }
  if (a.kind() != b.kind()) {
    return printsAs(a, b) || printsAs(b, a);
  }
  switch (a.kind()) {
  case Kind::boolean: return a.boolean() == b.boolean();
  case Kind::text: return a.text() == b.text();
  case Kind::list: return equalLists(a.list(), b.list());
  case Kind::value:
    return a.object()->fwkType() == b.object()->fwkType() &&
           static_cast<ValueBox const*>(a.object())
               ->equals(*static_cast<ValueBox const*>(b.object()));
  case Kind::object: return a.object() == b.object();
  default: return true;  // none, null
  }
}

std::partial_ordering orderOf(GenericValue const& a, GenericValue const& b) {
  if (a.kind() != GenericValue::Kind::value || b.kind() != GenericValue::Kind::value ||
      a.object()->fwkType() != b.object()->fwkType()) {
    return std::partial_ordering::unordered;
  }
  return static_cast<ValueBox const*>(a.object())->order(*static_cast<ValueBox const*>(b.object()));
}

String valueToStrep(GenericValue const& value) {
  switch (value.kind()) {
  case Kind::boolean: return valueToStrep(value.boolean());
  case Kind::integer: return valueToStrep(value.integer());
  case Kind::natural: return valueToStrep(value.natural());
  case Kind::real: return valueToStrep(value.real());
  case Kind::enumeration: return value.enumerationType()->operations().print(value);
  case Kind::text: return valueToStrep(value.text());
  case Kind::value: return static_cast<ValueBox const*>(value.object())->text();
  case Kind::object: return valueToStrep(value.object());
  case Kind::list: return listToStrep(value.list());
  default: return "None";  // none, null
  }
}

std::ostream& operator<<(std::ostream& out, GenericValue const& value) {
  return out << valueToStrep(value);
}

GenericValue const& GenericList::none() {
  static GenericValue const value;
  return value;
}

void GenericList::destroy(GenericList* list) noexcept {
  while (list != nullptr) {
    GenericList* next = list->nextToDestroy_;
    for (GenericValue& value : list->own_) {
      if (value.kind_ != Kind::list) {
        continue;
      }
      GenericList* const inner = value.payload_.list.get();
      value.kind_ = Kind::none;  // its reference is released here
      if (--inner->references_ == 0) {
        inner->nextToDestroy_ = next;
        next = inner;
      }
    }
    delete list;
    list = next;
  }
}

}  // namespace Kor
