// SPDX-License-Identifier: Apache-2.0
#pragma once

// Conversion of optional numbers and rules to and from generic values.

#include "Acl/OptionalNumber.h"
#include "Acl/OptionalRule.h"
#include "Kor/Generic.h"
#include "PolicyMapExport.h"

// A number or null.
template <>
struct POLICYMAP_API Kor::Generic<Acl::OptionalNumber> {
  static KorType* record();
  static KorType const* type() { return record(); }
  static GenericValue value(Acl::OptionalNumber number);
  static bool take(GenericValue const& from, Acl::OptionalNumber& to);
};

// A rule of any kind, or null.
template <>
struct POLICYMAP_API Kor::Generic<Acl::OptionalRule> {
  static KorType* record();
  static KorType const* type() { return record(); }
  static GenericValue value(Acl::OptionalRule const& rule);
  static bool take(GenericValue const& from, Acl::OptionalRule& to);
};
