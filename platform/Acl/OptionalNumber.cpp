// SPDX-License-Identifier: Apache-2.0
#include "Acl/OptionalNumber.h"

namespace Acl {

Kor::String valueToStrep(OptionalNumber number) {
  return number ? Kor::valueToStrep(*number) : "None";
}

void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end, OptionalNumber& number) {
  Kor::skipSpace(it, end);
  if (Kor::takeString(it, end, "None")) {
    number = std::nullopt;
  } else {
    number = Kor::sequenceTo<std::int64_t>(it, end);
  }
}

std::ostream& operator<<(std::ostream& out, OptionalNumber number) {
  return out << valueToStrep(number);
}

}  // namespace Acl
