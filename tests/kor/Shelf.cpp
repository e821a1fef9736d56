// SPDX-License-Identifier: Apache-2.0
#include "kor/Shelf.h"

#include <Kor/Registration.h>

#include <array>
#include <cctype>

namespace Library {
namespace {

using Kor::Model;
using Kor::TypeModel;

constexpr std::array<std::string_view, 2> genres{"prose", "verse"};
constexpr Kor::EnumNames genreNames{"Genre", genres.data(), genres.size()};
constexpr std::array<std::string_view, 2> sizes{"small", "large"};
constexpr Kor::EnumNames sizeNames{"Size", sizes.data(), sizes.size()};

template <class T>
Kor::KorType* record(std::string_view name, Kor::KorType const* base = nullptr) {
  static Kor::KorType type(name, base);
  return &type;
}

constexpr TypeModel ofIsbn = Kor::fieldsModel<Isbn>();
constexpr TypeModel ofStamp = Model<Stamp>::value(
    Kor::fieldsOf<Stamp, true>, Model<Stamp>::constructor<&Kor::makeValue<Stamp>>());
constexpr std::array placeAttrs{Model<Place>::key<&Place::letter>("letter")};
constexpr TypeModel ofPlace = Model<Place>::value(
    placeAttrs, Model<Place>::constructor<&Kor::makeValue<Place, Kor::String8>>("letter"));
constexpr TypeModel ofGenre = Kor::enumModel<Genre>();
constexpr TypeModel ofSize = Kor::enumModel<Size>();

constexpr std::array drawerAttrs{
    Model<Drawer>::key<&Drawer::key>("key"),
    Model<Drawer>::data<&Drawer::depth, &Drawer::depthIs>("depth"),
    Model<Drawer>::fwkKey<&Drawer::fwkKey>(),
};
constexpr TypeModel ofDrawer = Model<Drawer>::object(
    drawerAttrs, Model<Drawer>::constructor<&Kor::makeObject<Drawer, Kor::Name>>("key"));

using M = Model<Shelf>;
constexpr std::array shelfAttrs{
    M::data<&Shelf::open, &Shelf::openIs>("open"),
    M::data<&Shelf::width, &Shelf::widthIs>("width").says("in centimetres"),
    M::data<&Shelf::tilt, &Shelf::tiltIs>("tilt"),
    M::data<&Shelf::serial, &Shelf::serialIs>("serial"),
    M::data<&Shelf::load, &Shelf::loadIs>("load"),
    M::data<&Shelf::label, &Shelf::labelIs>("label"),
    M::data<&Shelf::genre, &Shelf::genreIs>("genre"),
    M::data<&Shelf::size, &Shelf::sizeIs>("size"),
    M::data<&Shelf::first, &Shelf::firstIs>("first"),
    M::data<&Shelf::place, &Shelf::placeIs>("place"),
    M::data<&Shelf::top, &Shelf::topIs>("top"),
    M::data<&Shelf::above, &Shelf::aboveIs>("above"),
    M::collection<Shelf::BookAttribute>("book"),
    M::owned<Shelf::DrawerAttribute>("drawer").says("drawers by label"),
    M::function<&Shelf::weigh>("weigh", "scale", "unit").says("weight of all books"),
    M::function<&Shelf::clear>("clear").says("removes all books"),
    M::overloaded<static_cast<void (Shelf::*)(std::uint32_t)>(&Shelf::lift),
                  static_cast<void (Shelf::*)()>(&Shelf::lift)>("lift", "by"),
    M::function<&Shelf::titles>("titles"),
    M::factory<&Shelf::createDrawer>("createDrawer", "key"),
    M::hook<&Shelf::rustle>("rustle", "on"),
};
constexpr TypeModel ofShelf =
    M::entity(shelfAttrs, M::constructor<&Kor::makeObject<Shelf, Kor::Name>>("name"));

using Tall = Model<TallShelf>;
constexpr std::array tallAttrs{
    Tall::function<&TallShelf::weigh>("weigh", "scale", "unit"),
    Tall::data<&TallShelf::height, &TallShelf::heightIs>("height").says("number of boards"),
};
constexpr TypeModel ofTallShelf =
    Tall::entity(tallAttrs, Tall::constructor<&Kor::makeObject<TallShelf, Kor::Name>>("name"));

constexpr std::array all{&ofIsbn, &ofStamp,  &ofPlace, &ofGenre,
                         &ofSize, &ofDrawer, &ofShelf, &ofTallShelf};

[[maybe_unused]] bool const registered = [] {
  Kor::registerTypes("Library", all);
  Kor::enterTypes(all);
  return true;
}();

}  // namespace

Kor::KorType* korEnumType(Genre /*any*/) {
  static Kor::KorType type("Library::Genre", genreNames);
  return &type;
}
Kor::String8 valueToStrep(Genre genre) {
  return Kor::enumToStrep(genreNames, static_cast<std::int32_t>(genre));
}
void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, Genre& genre) {
  genre = static_cast<Genre>(Kor::sequenceToEnum(it, end, genreNames));
}

Kor::KorType* korEnumType(Size /*any*/) {
  static Kor::KorType type("Library::Size", sizeNames);
  return &type;
}
Kor::String8 valueToStrep(Size size) {
  return Kor::enumToStrep(sizeNames, static_cast<std::int32_t>(size));
}
void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, Size& size) {
  std::int32_t const number = Kor::sequenceToEnum(it, end, sizeNames);
  if (number < 0 || number > 1) {
    throw Kor::RangeException("Size: no such number");
  }
  size = static_cast<Size>(number);
}

Isbn::Isbn(std::uint32_t group, Kor::String8 title) : group_(group), title_(std::move(title)) {
  if (group > 99) {
    throw Kor::RangeException("Isbn::group > 99 not allowed");
  }
}
Kor::KorType* Isbn::_fwkType() {
  return record<Isbn>(korTypeName);
}

void Stamp::dayIs(std::uint8_t day) {
  if (day > 31) {
    throw Kor::RangeException("Stamp::day > 31 not allowed");
  }
  day_ = day;
}
Kor::KorType* Stamp::_fwkType() {
  return record<Stamp>(korTypeName);
}

Place::Place(Kor::String8 const& letter) {
  if (letter.length() != 1 || std::isalpha(static_cast<unsigned char>(letter.view()[0])) == 0) {
    throw Kor::RangeException("Place: not a letter");
  }
  letter_ = letter.view()[0];
}
Kor::String8 Place::letter() const {
  return letter_ == 0 ? std::string() : std::string(1, letter_);
}
Kor::KorType* Place::_fwkType() {
  return record<Place>("Library::Place");
}
Kor::String8 valueToStrep(Place place) {
  return Kor::valueToStrep(place.letter());
}
void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, Place& place) {
  auto const letter = Kor::sequenceTo<Kor::String8>(it, end);
  place = letter.empty() ? Place() : Place(letter);
}

Kor::KorType* Drawer::_fwkType() {
  return record<Drawer>("Library::Drawer", PtrInterface::_fwkType());
}

Kor::KorType* Shelf::_fwkType() {
  return record<Shelf>("Library::Shelf", Entity::_fwkType());
}
double Shelf::weigh(double scale, Kor::String8 const& unit) {
  journal.push_back("weigh in " + unit.stdString());
  return scale * load_;
}
std::vector<Kor::Name> Shelf::titles() const {
  std::vector<Kor::Name> titles;
  for (auto const& entry : bookIteratorConst()) {
    titles.emplace_back(entry.key().title());
  }
  return titles;
}
Drawer::Ptr Shelf::createDrawer(Kor::Name const& key) const {
  return Kor::make<Drawer>(key);
}

Kor::KorType* TallShelf::_fwkType() {
  return record<TallShelf>("Library::TallShelf", Shelf::_fwkType());
}
double TallShelf::weigh(double scale, Kor::String8 const& unit) {
  return height_ * Shelf::weigh(scale, unit);
}

}  // namespace Library
