// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/JsonLine.h"

#include <algorithm>
#include <utility>

namespace PolicyMapTestKit::Text {

JsonLine::JsonLine(LineReader const& reader) : reader_(reader) {
  try {
    json_ = Json::parse(reader.line());
  } catch (JsonError const& error) {
    fail(error.offset(), error.expected());
  }
  if (json_.as<Json::Object>() == nullptr) {
    fail(0, "a JSON object");
  }
}

void JsonLine::fail(std::size_t offset, std::string expected) const {
  std::string_view const found = reader_.line().substr(std::min(offset, reader_.line().size()));
  throw InputError(reader_.position(static_cast<std::uint32_t>(offset) + 1), std::move(expected),
                   found);
}

template <class Type>
Type JsonLine::required(std::string_view name, char const* what) const {
  Json const* const found = json_.member(name);
  Type const* const value = found == nullptr ? nullptr : found->as<Type>();
  if (value == nullptr) {
    fail(0, std::string(what) + " as member \"" + std::string(name) + "\"");
  }
  return *value;
}

std::uint64_t JsonLine::number(std::string_view name) const {
  return required<std::uint64_t>(name, "a whole number");
}

double JsonLine::real(std::string_view name) const {
  Json const* const found = json_.member(name);
  auto const* const whole = found == nullptr ? nullptr : found->as<std::uint64_t>();
  return whole != nullptr ? static_cast<double>(*whole) : required<double>(name, "a number");
}

bool JsonLine::flag(std::string_view name) const {
  return required<bool>(name, "true or false");
}

std::string JsonLine::text(std::string_view name) const {
  return has(name) ? required<std::string>(name, "a text") : std::string();
}

std::vector<std::string> JsonLine::texts(std::string_view name) const {
  std::vector<std::string> texts;
  if (!has(name)) {
    return texts;
  }
  for (Json const& each : required<Json::Array>(name, "a list")) {
    auto const* const text = each.as<std::string>();
    if (text == nullptr) {
      fail(0, "texts in member \"" + std::string(name) + "\"");
    }
    texts.push_back(*text);
  }
  return texts;
}

}  // namespace PolicyMapTestKit::Text
