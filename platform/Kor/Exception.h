// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Export.h"

#include <exception>
#include <string>

namespace Kor {

// Root of everything the framework throws. what() is the text, whole.
class KOR_API Exception : public std::exception {
 public:
  explicit Exception(std::string text) : text_(std::move(text)) {}
  ~Exception() override;

  [[nodiscard]] char const* what() const noexcept override { return text_.c_str(); }
  [[nodiscard]] std::string const& text() const noexcept { return text_; }

 private:
  std::string text_;
};

// A value that is not allowed: out of range, of the wrong form, missing.
class KOR_API RangeException : public Exception {
 public:
  using Exception::Exception;
  ~RangeException() override;
};

}  // namespace Kor
