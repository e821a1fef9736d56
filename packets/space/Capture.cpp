// SPDX-License-Identifier: Apache-2.0
#include "packets/space/Capture.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::Text::InputError;

// Reads numbers in the byte order of a file, and fails at the byte at which it ends too early.
class FileBytes {
 public:
  explicit FileBytes(PolicyMapTestKit::Text::SourceText const& file)
      : bytes_(file.content()), name_(file.name()) {}

  [[nodiscard]] std::size_t size() const { return bytes_.size(); }
  void bigEndianIs(bool isBig) { isBig_ = isBig; }

  [[nodiscard]] std::uint32_t number(std::size_t at, std::size_t size) const {
    need(at, size);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i != size; ++i) {
      std::size_t const place = isBig_ ? at + i : at + size - 1 - i;
      value = value << 8 | static_cast<std::uint8_t>(bytes_[place]);
    }
    return value;
  }
  [[nodiscard]] std::span<std::uint8_t const> part(std::size_t at, std::size_t size) const {
    need(at, size);
    return {reinterpret_cast<std::uint8_t const*>(bytes_.data()) + at, size};
  }
  [[noreturn]] void fail(std::size_t at, std::string const& expected) const {
    throw InputError({name_, 1, static_cast<std::uint32_t>(at + 1)}, expected, "");
  }

 private:
  void need(std::size_t at, std::size_t size) const {
    if (at > bytes_.size() || size > bytes_.size() - at) {
      fail(bytes_.size(), std::to_string(size) + " bytes more");
    }
  }

  std::string_view bytes_;
  PolicyMapTestKit::Text::FileName name_;
  bool isBig_ = false;
};

// The magic numbers at the beginning of a file.
constexpr std::uint32_t pcapMagic = 0xa1b2c3d4;
constexpr std::uint32_t pcapNanoMagic = 0xa1b23c4d;
constexpr std::uint32_t sectionBlock = 0x0a0d0d0a;

constexpr std::uint32_t swapped(std::uint32_t value) {
  return value << 24 | (value & 0xff00) << 8 | (value >> 8 & 0xff00) | value >> 24;
}

std::vector<Frame> readPcap(FileBytes const& file) {
  constexpr std::size_t headerSize = 24;
  constexpr std::uint32_t linkTypeBits = 0xffff;
  std::uint32_t const link = file.number(20, 4) & linkTypeBits;
  std::vector<Frame> frames;
  for (std::size_t at = headerSize; at != file.size();) {
    std::size_t const size = file.number(at + 8, 4);
    frames.push_back(readFrame(link, file.part(at + 16, size)));
    at += 16 + size;
  }
  return frames;
}

std::vector<Frame> readPcapng(FileBytes file) {
  constexpr std::uint32_t orderMagic = 0x1a2b3c4d;
  constexpr std::uint32_t interfaceBlock = 1;
  constexpr std::uint32_t simpleBlock = 3;
  constexpr std::uint32_t enhancedBlock = 6;
  constexpr std::size_t smallestBlock = 12;
  std::vector<std::uint32_t> links;
  std::vector<Frame> frames;
  for (std::size_t at = 0; at != file.size();) {
    std::uint32_t const type = file.number(at, 4);  // that of a section is the same in any order
    if (type == sectionBlock) {
      file.bigEndianIs(false);
      file.bigEndianIs(file.number(at + 8, 4) != orderMagic);
      links.clear();
    }
    std::size_t const length = file.number(at + 4, 4);
    if (length < smallestBlock || length % 4 != 0) {
      file.fail(at + 4, "the length of a block");
    }
    static_cast<void>(file.part(at, length));
    if (type == interfaceBlock) {
      links.push_back(file.number(at + 8, 2));
    } else if (type == simpleBlock || type == enhancedBlock) {
      bool const isSimple = type == simpleBlock;
      std::size_t const interface = isSimple ? 0 : file.number(at + 8, 4);
      if (interface >= links.size()) {
        file.fail(at + 8, "an interface that was described before");
      }
      std::size_t const head = isSimple ? 12 : 28;
      std::size_t const room = length - std::min(length, head + 4);
      std::size_t const size =
          std::min<std::size_t>(file.number(at + (isSimple ? 8 : 20), 4), room);
      frames.push_back(readFrame(links[interface], file.part(at + head, size)));
    }
    at += length;
  }
  return frames;
}

}  // namespace

std::vector<Frame> readCapture(PolicyMapTestKit::Text::SourceText const& source) {
  FileBytes file(source);
  std::uint32_t const magic = file.size() < 4 ? 0 : file.number(0, 4);
  if (magic == sectionBlock) {
    return readPcapng(file);
  }
  bool const isBig = magic == swapped(pcapMagic) || magic == swapped(pcapNanoMagic);
  if (!isBig && magic != pcapMagic && magic != pcapNanoMagic) {
    file.fail(0, "a capture file");
  }
  file.bigEndianIs(isBig);
  return readPcap(file);
}

}  // namespace PolicyMapPackets
