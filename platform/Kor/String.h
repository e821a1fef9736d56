// SPDX-License-Identifier: Apache-2.0
#pragma once

// String: immutable text, shared by its copies, one pointer wide. It may contain any bytes,
// including NUL. The hash is computed when it is first asked for, and stored with the text.

#include "Kor/Export.h"
#include "Kor/Hash.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace Kor {

class KOR_API String8 {
 public:
  class IteratorConst;

  constexpr String8() noexcept = default;
  // NOLINTBEGIN(google-explicit-constructor): text is text
  String8(char const* text) : String8(std::string_view(text)) {}
  String8(std::string const& text) : String8(std::string_view(text)) {}
  String8(std::string_view text);
  // NOLINTEND(google-explicit-constructor)

  String8(String8 const& other) noexcept : text_(other.text_) {
    if (text_ != nullptr) {
      ++text_->references;
    }
  }
  String8(String8&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
  ~String8() {
    if (text_ != nullptr && --text_->references == 0) {
      dispose(text_);
    }
  }
  String8& operator=(String8 const& other) noexcept {
    String8(other).swap(*this);
    return *this;
  }
  String8& operator=(String8&& other) noexcept {
    String8(std::move(other)).swap(*this);
    return *this;
  }
  void swap(String8& other) noexcept { std::swap(text_, other.text_); }

  [[nodiscard]] std::size_t length() const { return text_ == nullptr ? 0 : text_->length; }
  [[nodiscard]] std::size_t size() const { return length(); }
  [[nodiscard]] bool empty() const { return text_ == nullptr; }
  [[nodiscard]] bool operator!() const { return empty(); }
  // NUL-terminated; valid while this or a copy exists.
  [[nodiscard]] char const* charPtr() const { return text_ == nullptr ? "" : text_->bytes(); }
  [[nodiscard]] std::string_view view() const { return {charPtr(), length()}; }
  [[nodiscard]] std::string stdString() const { return std::string(view()); }
  // The same, for templates that construct a std::string, such as the matchers of Google Mock.
  explicit operator std::string() const { return stdString(); }
  [[nodiscard]] std::uint32_t hash() const {
    if (text_ == nullptr) {
      return hashBytes({});
    }
    if (text_->hash == 0) [[unlikely]] {
      text_->hash = hashBytes(view());
    }
    return text_->hash;
  }
  char operator[](std::size_t position) const { return view()[position]; }

  // Compares unsigned bytes; a prefix is less.
  friend bool operator==(String8 const& a, String8 const& b) {
    return a.text_ == b.text_ || sameText(a, b);
  }
  friend std::strong_ordering operator<=>(String8 const& a, String8 const& b) {
    return a.view() <=> b.view();
  }
  friend bool operator==(String8 const& a, char const* b) { return a.view() == b; }
  friend String8 operator+(String8 const& a, String8 const& b);
  friend std::ostream& operator<<(std::ostream& out, String8 const& text) {
    out.width(0);  // neither pads the text nor leaves a width for the next output
    return out.write(text.charPtr(), static_cast<std::streamsize>(text.length()));
  }

  [[nodiscard]] IteratorConst begin() const;
  [[nodiscard]] IteratorConst end() const;

 private:
  static bool sameText(String8 const& a, String8 const& b) {
    return a.length() == b.length() && !differInHash(a, b) && a.view() == b.view();
  }
  static bool differInHash(String8 const& a, String8 const& b) {
    return !a.empty() && !b.empty() && a.text_->hash != 0 && b.text_->hash != 0 &&
           a.text_->hash != b.text_->hash;
  }

  struct Text {
    std::uint32_t references;
    std::uint32_t hash;  // 0: not computed yet, or computed each time in the rare case that it is 0
    std::size_t length;
    [[nodiscard]] char const* bytes() const { return reinterpret_cast<char const*>(this + 1); }
  };
  static Text* compose(std::string_view head, std::string_view tail);
  static void dispose(Text* text) noexcept;

  Text* text_ = nullptr;  // null: the empty text
};

KOR_API String8 operator+(String8 const& a, String8 const& b);

using String = String8;

// A position in a text. It keeps the text alive and knows its 0-based byte offset.
class String8::IteratorConst {
 public:
  IteratorConst() = default;
  explicit IteratorConst(String8 text, std::size_t position = 0)
      : text_(std::move(text)), position_(position) {}

  [[nodiscard]] std::size_t position() const { return position_; }
  [[nodiscard]] String8 const& text() const { return text_; }
  char operator*() const { return text_.charPtr()[position_]; }
  IteratorConst& operator++() {
    ++position_;
    return *this;
  }
  void positionIs(std::size_t position) { position_ = position; }
  // Compares the offsets. Both must be positions in the same text.
  friend bool operator==(IteratorConst const& a, IteratorConst const& b) {
    return a.position_ == b.position_;
  }

 private:
  String8 text_;
  std::size_t position_ = 0;
};

inline String8::IteratorConst String8::begin() const {
  return IteratorConst(*this);
}
inline String8::IteratorConst String8::end() const {
  return IteratorConst(*this, length());
}

// A short name. It behaves like any text; the type documents that it names something.
class KOR_API Name : public String8 {
 public:
  using String8::String8;
  Name() = default;
  // NOLINTNEXTLINE(google-explicit-constructor): every text can be a name
  Name(String8 text) noexcept : String8(std::move(text)) {}
};

}  // namespace Kor
