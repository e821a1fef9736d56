// SPDX-License-Identifier: Apache-2.0
#include "Kor/GenericIf.h"

#include "Kor/ObjectText.h"
#include "Kor/Strep.h"

#include <cctype>
#include <string>

namespace Kor {
namespace {

using Kind = GenericValue::Kind;

std::string typeError(String const& typeName, String const& name) {
  return "type error: " + (typeName.empty() ? "" : typeName.stdString() + " expected for ") +
         name.stdString();
}

// The type named at the start of `Value('Ns::Type', …`.
KorType const& valueTypeAt(TextIterator it, TextIterator const& end) {
  needString(it, end, "Value ( ");
  auto const column = it.position();
  String name;
  sequenceToValue(it, end, name);
  KorType const* const type = KorType::named(name.view());
  if (type == nullptr || type->operations().parse == nullptr) {
    throw RangeException("no such value type: " + name.stdString() + " at column " +
                         std::to_string(column));
  }
  return *type;
}

GenericValue numberAt(TextIterator& it, TextIterator const& end) {
  std::string_view const ahead = it.text().view().substr(it.position());
  auto const digits = ahead.substr(0, ahead.find_first_not_of("+-0123456789_.eE"));
  if (ahead.starts_with("float") || digits.find_first_of(".eE") != std::string_view::npos) {
    double real = 0;
    sequenceToValue(it, end, real);
    return real;
  }
  if (digits.starts_with('-')) {
    return sequenceToInteger(it, end, INT64_MIN, INT64_MAX);
  }
  return sequenceToUnsigned(it, end, UINT64_MAX);
}

// Nesting limit of parsed lists: far above any real input, far below what the stack allows.
constexpr unsigned deepest = 200;

void valueAt(TextIterator& it, TextIterator const& end, GenericValue& value, unsigned depth);

GenericValue listAt(TextIterator& it, TextIterator const& end, unsigned depth) {
  if (depth == deepest) {
    throw RangeException("nested too deep at column " + std::to_string(it.position()));
  }
  needString(it, end, "[");
  auto list = GenericList::of();
  skipSpace(it, end);
  while (!takeString(it, end, "]")) {
    if (!list->empty()) {
      needString(it, end, " ,");
    }
    GenericValue element;
    valueAt(it, end, element, depth + 1);
    list->append(std::move(element));
    skipSpace(it, end);
  }
  return list;
}

void valueAt(TextIterator& it, TextIterator const& end, GenericValue& value, unsigned depth) {
  skipSpace(it, end);
  auto const column = it.position();
  char const head = it == end ? '\0' : *it;
  std::string_view const ahead = it.text().view().substr(column);
  if (ahead.starts_with("Value")) {
    value = valueTypeAt(it, end).operations().parse(it, end);
  } else if (ahead.starts_with("Ptr")) {
    value = GenericValue(sequenceToObject(it, end), false);
  } else if (ahead.starts_with("None")) {
    takeString(it, end, "None");
    value = nullptr;
  } else if (ahead.starts_with("True") || ahead.starts_with("False")) {
    bool truth = false;
    sequenceToValue(it, end, truth);
    value = truth;
  } else if (head == '[') {
    value = listAt(it, end, depth);
  } else if (head == '-' || head == '+' || head == '.' || (head >= '0' && head <= '9') ||
             ahead.starts_with("float")) {
    value = numberAt(it, end);
  } else if (head == '\'' || head == '"' || ahead.find_first_of("'\"") < 3) {
    String text;
    sequenceToValue(it, end, text);
    value = text;
  } else {
    throw RangeException("expected a value at column " + std::to_string(column));
  }
}

}  // namespace

TypeException::TypeException(String typeName, String name)
    : Exception(typeError(typeName, name)),
      typeName_(std::move(typeName)),
      name_(std::move(name)) {}
TypeException::~TypeException() = default;

OpNotSupportedException::OpNotSupportedException(String name, std::uint32_t code)
    : Exception("operation " + std::to_string(code) + " not supported: " + name.stdString()),
      name_(std::move(name)),
      code_(code) {}
OpNotSupportedException::~OpNotSupportedException() = default;

BadIndexAttrException::BadIndexAttrException(String name)
    : Exception("attribute takes no index: " + name.stdString()), name_(std::move(name)) {}
BadIndexAttrException::~BadIndexAttrException() = default;

UnknownArgException::UnknownArgException(String name)
    : Exception("too many arguments: " + name.stdString()), name_(std::move(name)) {}
UnknownArgException::~UnknownArgException() = default;

ConstException::ConstException() : Exception("attempting to modify a const instance") {}
ConstException::~ConstException() = default;

GenericIf KorType::genericIf(Kor::Ptr<PtrInterface const> const& object, bool isConst) const {
  return {object, this, isConst};
}

GenericValue KorAttr::notSupported(Instance /*self*/, KorAttr const& attr,
                                   AttributeOperation const& operation) {
  GenericIf::throwOpNotSupportedException(attr.name(), operation.code);
}

GenericValue KorAttr::notCallable(Instance /*self*/, KorAttr const& attr,
                                  std::span<ArgumentView const> /*args*/) {
  GenericIf::throwOpNotSupportedException(attr.name(), AttributeOperation::get);
}

GenericIf::GenericIf(GenericValue const& value) : type_(nullptr), const_(value.isConst()) {
  KOR_ASSERT(value.kind() == Kind::object || value.kind() == Kind::value);
  object_ = share(value.object());
  type_ = object_->fwkType();
}

GenericValue GenericIf::value() const {
  if (type_->isValue()) {
    return {share(static_cast<ValueBox const*>(object_.get())), const_};
  }
  return {object_, const_};
}

void GenericIf::throwTypeException(String const& name) {
  throw TypeException(name);
}
void GenericIf::throwTypeException(String const& typeName, String const& name) {
  throw TypeException(typeName, name);
}
void GenericIf::throwOpNotSupportedException(String const& name, std::uint32_t code) {
  throw OpNotSupportedException(name, code);
}
void GenericIf::throwBadIndexAttrException(String const& name) {
  throw BadIndexAttrException(name);
}
void GenericIf::throwUnknownArgException(String const& name) {
  throw UnknownArgException(name);
}
void GenericIf::throwConstException() {
  throw ConstException();
}

GenericIfPtrInterface GenericIfPtrInterface::baseGenericIf() const {
  KorType const* const base = type()->base();
  return {object(), base == nullptr ? type() : base, isConst()};
}

GenericIf genericConstruct(KorType const& type, GenericValue const& arguments) {
  if (type.operations().construct == nullptr) {
    throw RangeException(std::string(type.name()) + " cannot be constructed by name");
  }
  return GenericIf(type.operations().construct(type, arguments));
}

void sequenceToValue(TextIterator& it, TextIterator const& end, GenericValue& value) {
  valueAt(it, end, value, 0);
}

}  // namespace Kor
