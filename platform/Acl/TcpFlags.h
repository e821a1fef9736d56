// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/Fields.h"
#include "Kor/KorType.h"
#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <compare>
#include <cstdint>
#include <string_view>
#include <tuple>

namespace Acl {

// The TCP flags that a rule checks, and their required values: bit 0 FIN, 1 SYN, 2 RST, 3 PSH, 4
// ACK, 5 URG, 6 ECE, 7 CWR. Value bits outside the mask are clear.
class POLICYMAP_API TcpFlags {
 public:
  static constexpr std::uint8_t fin = 1, syn = 2, rst = 4, psh = 8, ack = 16, urg = 32, ece = 64,
                                cwr = 128;
  static constexpr std::string_view korTypeName = "Acl::TcpFlags";
  static constexpr auto korFields() {
    return std::tuple(
        Kor::field("value", &TcpFlags::value, &TcpFlags::valueIs,
                   "required values of the checked flags, FIN in bit 0 to CWR in bit 7"),
        Kor::field("mask", &TcpFlags::mask, &TcpFlags::maskIs,
                   "flags that are checked, FIN in bit 0 to CWR in bit 7; 0: none"));
  }

  // Checks no flags.
  TcpFlags() = default;
  // Raises RangeException "TcpFlags::value < 0 or > 255 not allowed", the same for mask.
  TcpFlags(std::int64_t value, std::int64_t mask);

  [[nodiscard]] std::uint8_t value() const { return value_; }
  [[nodiscard]] std::uint8_t mask() const { return mask_; }

  [[nodiscard]] bool operator!() const { return mask_ == 0; }
  friend auto operator<=>(TcpFlags const&, TcpFlags const&) = default;
  [[nodiscard]] std::uint32_t hash() const { return hashOfFields(*this); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  friend void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                              TcpFlags& flags) {
    TcpFlags read;
    Kor::readValueFields(it, end, read);
    flags = TcpFlags(read.value_, read.mask_);
  }

 private:
  void valueIs(std::uint8_t value) { value_ = value; }
  void maskIs(std::uint8_t mask) { mask_ = mask; }

  std::uint8_t value_ = 0;
  std::uint8_t mask_ = 0;
};

}  // namespace Acl
