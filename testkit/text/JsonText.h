// SPDX-License-Identifier: Apache-2.0
#pragma once

// JsonText: writes JSON in one line without blanks, as Json::text() does, but straight to a text:
// for objects of which there are many.
//
//   JsonText json(text);
//   json.open('{');
//   json.name("seq").value(10U);
//   json.close('}');

#include "testkit/Export.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

class POLICYMAPTESTKIT_API JsonText {
 public:
  // Appends to `out`, which must outlive this object.
  explicit JsonText(std::string& out) : out_(out) {}

  // '{' or '[', and the bracket that belongs to it.
  void open(char bracket) {
    separate();
    out_ += bracket;
    isFirst_ = true;
  }
  void close(char bracket) {
    out_ += bracket;
    isFirst_ = false;
  }
  // The name of a member; its value is next.
  JsonText& name(std::string_view name) {
    value(name);
    out_ += ':';
    isFirst_ = true;
    return *this;
  }
  void value(std::string_view text);
  void value(std::uint64_t number);

 private:
  void separate() {
    if (!isFirst_) {
      out_ += ',';
    }
    isFirst_ = false;
  }

  std::string& out_;
  bool isFirst_ = true;
};

}  // namespace PolicyMapTestKit::Text
