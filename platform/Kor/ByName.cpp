// SPDX-License-Identifier: Apache-2.0
#include "Kor/ByName.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace Kor {
namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The edit distance of two names, ignoring case.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      std::size_t const replaced = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

// " (did you mean A or B?)" for names close enough to be a typing error, otherwise empty.
std::string nearest(std::string_view wrong, std::vector<std::string_view> const& names) {
  constexpr std::size_t most = 3;
  std::vector<std::pair<std::size_t, std::string_view>> near;
  for (std::string_view const name : names) {
    std::size_t const steps = distance(wrong, name);
    if (steps <= std::max<std::size_t>(2, wrong.size() / 5)) {
      near.emplace_back(steps, name);
    }
  }
  std::sort(near.begin(), near.end());
  std::string text;
  for (std::size_t i = 0; i < std::min(most, near.size()); ++i) {
    text.append(i == 0 ? " (did you mean " : " or ").append(near[i].second);
  }
  return text.empty() ? text : text + "?)";
}

}  // namespace

KorAttr const& attributeNamed(KorType const* type, std::string_view name) {
  if (KorAttr const* const attr = type->attr(name)) {
    return *attr;
  }
  std::vector<std::string_view> names;
  for (KorAttr::Ptr const& attr : type->attrs()) {
    names.push_back(attr->name().view());
  }
  throw RangeException(std::string(type->shortName()) +
                       " has no such attribute: " + std::string(name) + nearest(name, names));
}

KorType const& typeNamed(std::string_view name) {
  if (KorType const* const type = KorType::named(name)) {
    return *type;
  }
  std::vector<std::string_view> names;
  for (KorType const* const type : KorType::all()) {
    names.push_back(type->name());
  }
  throw RangeException("no such type: " + std::string(name) + nearest(name, names));
}

void AttributeName::find(KorType const* type) const {
  attr_ = &attributeNamed(type, name_);
  type_ = type;
}

GenericIf GenericRef::adapter() const {
  if (!refers()) {
    refuse();
  }
  return GenericIf(value_);
}

void GenericRef::refuse() const {
  throw RangeException(valueToStrep(value_).stdString() + " has no attributes");
}

GenericPlace GenericRef::operator[](std::string_view name) const {
  GenericIf self = adapter();
  KorAttr const& attr = attributeNamed(self.type(), name);
  return {std::move(self), attr};
}

GenericRef GenericPlace::operation(std::uint32_t code, GenericValue value) const {
  return self_.attributeOp(*attr_, {attr_->id(), code, index_, std::move(value)});
}

GenericPlace GenericPlace::at(GenericValue const& key) const {
  if (isWholeCollection()) {
    return {self_, *attr_, key};
  }
  return get()[converted<std::string>(key, "attribute name")];
}

bool GenericPlace::has(GenericValue const& key) const {
  if (isWholeCollection()) {
    // This query checks the type of the key but reads no member.
    at(key).operation(AttributeOperation::next);
  }
  for (auto const& [present, member] : *this) {
    if (present == key) {
      return true;
    }
  }
  return false;
}

GenericPlace::Iterator GenericPlace::begin() const {
  return {self_, *attr_, operation(AttributeOperation::first)};
}

GenericPlace::Iterator::value_type GenericPlace::Iterator::operator*() const {
  return {key_, GenericPlace(self_, *attr_, key_).get()};
}

GenericPlace::Iterator& GenericPlace::Iterator::operator++() {
  key_ = self_.attributeOp(*attr_, {attr_->id(), AttributeOperation::next, key_, {}});
  return *this;
}

}  // namespace Kor
