// SPDX-License-Identifier: Apache-2.0
#pragma once

// A shelf with every kind of attribute, registered by name, for the tests of the generic interface:
//
//   Library::Shelf      entity: data of each kind, collections, functions, factory, hook
//   Library::TallShelf  derived from it: overrides a function, adds data
//   Library::Drawer     object, owned by a shelf under its key
//   Library::Isbn       value with two fields, immutable once constructed
//   Library::Stamp      value whose fields are set one by one and checked
//   Library::Place      value that prints as a plain text
//   Library::Genre      open enumeration; Library::Size is a narrow one

#include <Kor/Collection.h>
#include <Kor/Entity.h>
#include <Kor/GenericIf.h>
#include <Kor/Hash.h>
#include <Kor/Model.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Library {

enum class Genre : std::int32_t { prose, verse };
Kor::KorType* korEnumType(Genre /*any*/);
Kor::String8 valueToStrep(Genre genre);
void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, Genre& genre);

enum class Size : std::uint8_t { small, large };
Kor::KorType* korEnumType(Size /*any*/);
Kor::String8 valueToStrep(Size size);
void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, Size& size);

class Isbn {
 public:
  static constexpr std::string_view korTypeName = "Library::Isbn";

  Isbn() = default;
  // Throws RangeException "Isbn::group > 99 not allowed".
  Isbn(std::uint32_t group, Kor::String8 title);

  [[nodiscard]] std::uint32_t group() const { return group_; }
  [[nodiscard]] Kor::String8 const& title() const { return title_; }
  void groupIs(std::uint32_t group) { group_ = group; }
  void titleIs(Kor::String8 const& title) { title_ = title; }

  [[nodiscard]] std::uint32_t hash() const { return Kor::hashCombine(group_, title_.hash()); }
  friend bool operator==(Isbn const&, Isbn const&) = default;
  friend auto operator<=>(Isbn const&, Isbn const&) = default;

  [[nodiscard]] static Kor::KorType* _fwkType();

  static constexpr auto korFields() {
    return std::tuple(Kor::field("group", &Isbn::group, &Isbn::groupIs, "publisher, 0 to 99"),
                      Kor::field("title", &Isbn::title, &Isbn::titleIs));
  }

 private:
  std::uint32_t group_ = 0;
  Kor::String8 title_;
};
[[nodiscard]] inline Kor::GenericValue isbn(std::uint32_t group, Kor::String8 title) {
  return Kor::Generic<Isbn>::value(Isbn(group, std::move(title)));
}

class Stamp {
 public:
  static constexpr std::string_view korTypeName = "Library::Stamp";

  [[nodiscard]] std::uint8_t day() const { return day_; }
  // Throws RangeException "Stamp::day > 31 not allowed".
  void dayIs(std::uint8_t day);

  friend bool operator==(Stamp const&, Stamp const&) = default;
  [[nodiscard]] static Kor::KorType* _fwkType();
  static constexpr auto korFields() {
    return std::tuple(Kor::field("day", &Stamp::day, &Stamp::dayIs, "day of the month; 0: none"));
  }

 private:
  std::uint8_t day_ = 0;
};

// A single letter, or empty.
class Place {
 public:
  Place() = default;
  // Throws RangeException "Place: not a letter".
  explicit Place(Kor::String8 const& letter);

  [[nodiscard]] Kor::String8 letter() const;
  friend bool operator==(Place, Place) = default;
  [[nodiscard]] static Kor::KorType* _fwkType();

 private:
  char letter_ = 0;
};
Kor::String8 valueToStrep(Place place);
void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, Place& place);

class Drawer : public Kor::PtrInterface, public Kor::HashMapLink<Drawer> {
 public:
  using Ptr = Kor::Ptr<Drawer>;

  explicit Drawer(Kor::Name key) : key_(std::move(key)) {}

  [[nodiscard]] Kor::KorType const* fwkType() const override { return _fwkType(); }
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] Kor::Name const& key() const { return key_; }
  [[nodiscard]] Kor::Name const& fwkKey() const { return key_; }
  [[nodiscard]] std::uint32_t depth() const { return depth_; }
  void depthIs(std::uint32_t depth) { depth_ = depth; }

 private:
  Kor::Name key_;
  std::uint32_t depth_ = 0;
};

class Shelf : public Kor::Entity {
 public:
  using Ptr = Kor::Ptr<Shelf>;

  explicit Shelf(Kor::Name name) : Entity(std::move(name)) {}

  [[nodiscard]] Kor::KorType const* fwkType() const override { return _fwkType(); }
  [[nodiscard]] static Kor::KorType* _fwkType();

  // The calls so far, for the tests to examine.
  std::vector<std::string> journal;

  [[nodiscard]] bool open() const { return open_; }
  void openIs(bool open) { open_ = open; }
  [[nodiscard]] std::uint32_t width() const { return width_; }
  void widthIs(std::uint32_t width) { width_ = width; }
  [[nodiscard]] std::int8_t tilt() const { return tilt_; }
  void tiltIs(std::int8_t tilt) { tilt_ = tilt; }
  [[nodiscard]] std::uint64_t serial() const { return serial_; }
  void serialIs(std::uint64_t serial) { serial_ = serial; }
  [[nodiscard]] double load() const { return load_; }
  void loadIs(double load) { load_ = load; }
  [[nodiscard]] Kor::String8 const& label() const { return label_; }
  void labelIs(Kor::String8 const& label) { label_ = label; }
  [[nodiscard]] Genre genre() const { return genre_; }
  void genreIs(Genre genre) { genre_ = genre; }
  [[nodiscard]] Size size() const { return size_; }
  void sizeIs(Size size) { size_ = size; }
  [[nodiscard]] Isbn const& first() const { return first_; }
  void firstIs(Isbn const& first) { first_ = first; }
  [[nodiscard]] Place place() const { return place_; }
  void placeIs(Place place) { place_ = place; }
  [[nodiscard]] Drawer::Ptr const& top() const { return top_; }
  void topIs(Drawer::Ptr const& top) { top_ = top; }
  [[nodiscard]] Kor::Ptr<Shelf const> const& above() const { return above_; }
  void aboveIs(Kor::Ptr<Shelf const> const& above) { above_ = above; }

  KOR_VALUE_COLLECTION(Shelf, book, Book, Isbn, std::uint32_t,
                       KOR_ON_CHANGE(journal.push_back("book " + key.title().stdString())))
  KOR_OWNED_COLLECTION(Shelf, drawer, Drawer, Kor::Name, Library::Drawer,
                       KOR_ON_CHANGE(journal.push_back("drawer " + key.stdString())))

  [[nodiscard]] virtual double weigh(double scale, Kor::String8 const& unit);
  void clear() { journal.emplace_back("clear"); }
  void lift() { journal.emplace_back("lift"); }
  void lift(std::uint32_t by) { journal.push_back("lift " + std::to_string(by)); }
  [[nodiscard]] std::vector<Kor::Name> titles() const;
  [[nodiscard]] Drawer::Ptr createDrawer(Kor::Name const& key) const;
  void rustle(bool on) { journal.emplace_back(on ? "rustle" : "quiet"); }

 private:
  bool open_ = false;
  std::int8_t tilt_ = 0;
  Genre genre_ = Genre::prose;
  Size size_ = Size::small;
  std::uint32_t width_ = 0;
  std::uint64_t serial_ = 0;
  double load_ = 0;
  Kor::String8 label_;
  Isbn first_;
  Place place_;
  Drawer::Ptr top_;
  Kor::Ptr<Shelf const> above_;
};

class TallShelf : public Shelf {
 public:
  using Ptr = Kor::Ptr<TallShelf>;

  using Shelf::Shelf;
  [[nodiscard]] Kor::KorType const* fwkType() const override { return _fwkType(); }
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] std::uint32_t height() const { return height_; }
  void heightIs(std::uint32_t height) { height_ = height; }
  [[nodiscard]] double weigh(double scale, Kor::String8 const& unit) override;

 private:
  std::uint32_t height_ = 2;
};

// The identifiers of a shelf's attributes.
enum ShelfId : Kor::AttributeId {
  openId = 258,
  widthId,
  tiltId,
  serialId,
  loadId,
  labelId,
  genreId,
  sizeId,
  firstId,
  placeId,
  topId,
  aboveId,
  bookId,
  drawerId,
  weighId,
  clearId,
  liftId,
  titlesId,
  createDrawerId,
  heightId = 386,
};

}  // namespace Library
