// SPDX-License-Identifier: Apache-2.0
#pragma once

// Checks that hold for every value type, and a recorder of an entity's attribute log.

#include <Kor/Entity.h>
#include <Kor/Exception.h>
#include <Kor/Strep.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <iomanip>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

// The text of the RangeException that `work` throws; "no RangeException" if it throws none.
template <class Work>
std::string rangeError(Work&& work) {
  try {
    std::forward<Work>(work)();
  } catch (Kor::RangeException const& error) {
    return error.text();
  }
  return "no RangeException";
}

template <class T>
std::string printed(T const& value) {
  std::ostringstream out;
  out << std::setw(200) << std::hex << value;
  return out.str();
}

// `value` prints as `text`, and `text` reads back as an equal value.
template <class T>
void expectTextForm(T const& value, std::string const& text) {
  using Kor::valueToStrep;
  EXPECT_EQ(valueToStrep(value).stdString(), text);
  EXPECT_EQ(Kor::strepToValue<T>(Kor::String8(text)), value) << text;
}

// The values are in strictly ascending order and have different hashes. Different hashes are not
// guaranteed in general; choose the values accordingly.
template <class T>
void expectAscending(std::vector<T> const& values) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    for (std::size_t j = 0; j < values.size(); ++j) {
      EXPECT_EQ(values[i] < values[j], i < j) << i << " and " << j;
      EXPECT_EQ(values[i] == values[j], i == j) << i << " and " << j;
      EXPECT_EQ(values[i].hash() == values[j].hash(), i == j) << i << " and " << j;
    }
  }
}

// Records the names of the attributes that an entity logs.
class LogRecorder : public Kor::AttributeLogReader {
 public:
  explicit LogRecorder(Kor::Entity const& entity) { notifierIs(&entity); }

  void onAttribute(Kor::Entity const& entity, Kor::AttributeId id) override {
    names_.push_back(entity.attributeString(id).stdString());
  }
  [[nodiscard]] std::vector<std::string> take() { return std::exchange(names_, {}); }

 private:
  std::vector<std::string> names_;
};

}  // namespace TestSupport
