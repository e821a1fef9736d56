// SPDX-License-Identifier: Apache-2.0
#pragma once

// The tables of interface addresses and of their statuses, for IPv4 and IPv6.

#include "Kor/Model.h"

#include <array>

namespace Ip {

template <class Address>
Address makeAddress(Kor::String const& text) {
  return text.empty() ? Address() : Address(text.view());
}
template <class Address>
inline constexpr std::array addressAttrs{
    Kor::Model<Address>::template key<&Address::text>("text").says(
        "address and prefix length, such as 10.1.2.3/24; empty for no address"),
    Kor::Model<Address>::template derived<&Address::length>("length").says("prefix length in bits"),
};
template <class Address>
inline constexpr Kor::TypeModel ofAddress = Kor::Model<Address>::value(
    addressAttrs<Address>,
    Kor::Model<Address>::template constructor<&makeAddress<Address>>("text"));

template <class Status>
inline constexpr std::array addressStatusAttrs{
    Kor::Model<Status>::template collection<typename Status::IntfAddressAttribute>("intfAddress")
        .says("address of each interface; absent: it has none")};
template <class Status>
inline constexpr Kor::TypeModel ofAddressStatus = Kor::Model<Status>::entity(
    addressStatusAttrs<Status>,
    Kor::Model<Status>::template constructor<&Kor::makeObject<Status, Kor::Name>>("name"));

}  // namespace Ip
