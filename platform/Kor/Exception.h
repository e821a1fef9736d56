// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Export.h"

#include <exception>
#include <string>

namespace Kor {

// Root of the framework's exceptions. what() returns the whole text.
class KOR_API Exception : public std::exception {
 public:
  explicit Exception(std::string text) : text_(std::move(text)) {}
  ~Exception() override;

  [[nodiscard]] char const* what() const noexcept override { return text_.c_str(); }
  [[nodiscard]] std::string const& text() const noexcept { return text_; }

 private:
  std::string text_;
};

// A value is out of range, malformed or missing.
class KOR_API RangeException : public Exception {
 public:
  using Exception::Exception;
  ~RangeException() override;
};

}  // namespace Kor
