// SPDX-License-Identifier: Apache-2.0
#include "Acl/Models.h"

#include "Acl/AclDiff.h"
#include "Acl/Config.h"
#include "Acl/Generic.h"

#include <array>

namespace Acl {
namespace {

using Kor::Model;
using Kor::TypeModel;

template <class Match>
Match addressMatch(Kor::String const& text) {
  return Match(text.view());
}
template <class Match>
constexpr std::array addressMatchAttrs{
    Model<Match>::template derived<&Match::length>("length").says(
        "leading one bits of the mask; None if it has holes")};
template <class Match>
constexpr TypeModel ofAddressMatch = Model<Match>::value(
    addressMatchAttrs<Match>, Model<Match>::template constructor<&addressMatch<Match>>("text"));

// Parses a text form that may be of several types, or None.
template <class Optional>
Kor::GenericValue parseOptional(Kor::TextIterator& it, Kor::TextIterator const& end) {
  return Kor::Generic<Optional>::value(Kor::sequenceTo<Optional>(it, end));
}
template <class Optional>
constexpr TypeModel optionalModel() {
  TypeModel model;
  model.type = &Kor::Generic<Optional>::record;
  model.size = sizeof(Optional);
  model.kind = TypeModel::Kind::value;
  model.operations.parse = &parseOptional<Optional>;
  return model;
}

template <class Rule>
constexpr TypeModel ofRule = Model<Rule>::value(
    Kor::fieldsOf<Rule, true>, Model<Rule>::template constructor<&Kor::makeValue<Rule>>());

template <class List>
constexpr std::array listAttrs{
    Model<List>::template collection<typename List::RuleAttribute>("rule").says(
        "rules by sequence number; they apply in ascending order")};
template <class List>
constexpr TypeModel ofList = Model<List>::entity(
    listAttrs<List>, Model<List>::template constructor<&Kor::makeObject<List, Kor::Name>>("name"));

namespace ofConfig {
using T = Config;
using M = Model<T>;
constexpr std::array attrs{
    M::owned<T::IpAclAttribute>("ipAcl").says("IPv4 access lists by name"),
    M::owned<T::Ip6AclAttribute>("ip6Acl").says("IPv6 access lists by name"),
    M::owned<T::MacAclAttribute>("macAcl").says("MAC access lists by name"),
};
constexpr TypeModel model =
    M::entity(attrs, M::constructor<&Kor::makeObject<T, Kor::Name>>("name"));
}  // namespace ofConfig

constexpr TypeModel ofMatchOp = Kor::enumModel<MatchOp>();
constexpr TypeModel ofPortMatch = Kor::fieldsModel<PortMatch>();
constexpr TypeModel ofTtlMatch = Kor::fieldsModel<TtlMatch>();
constexpr TypeModel ofTcpFlags = Kor::fieldsModel<TcpFlags>();
constexpr TypeModel ofOptionalNumber = optionalModel<OptionalNumber>();
constexpr TypeModel ofOptionalRule = optionalModel<OptionalRule>();
constexpr TypeModel ofAclDiff =
    Model<AclDiff>::object({}, Model<AclDiff>::constructor<&Kor::makeObject<AclDiff>>());

constexpr std::array<TypeModel const*, 17> all{
    &ofOptionalNumber,
    &ofAddressMatch<IpAddressMatch>,
    &ofAddressMatch<Ip6AddressMatch>,
    &ofAddressMatch<MacAddressMatch>,
    &ofMatchOp,
    &ofPortMatch,
    &ofTtlMatch,
    &ofTcpFlags,
    &ofRule<IpRuleConfig>,
    &ofRule<Ip6RuleConfig>,
    &ofRule<MacRuleConfig>,
    &ofOptionalRule,
    &ofList<IpAclConfig>,
    &ofList<Ip6AclConfig>,
    &ofList<MacAclConfig>,
    &ofConfig::model,
    &ofAclDiff,
};

}  // namespace

std::span<TypeModel const* const> models() {
  return all;
}

}  // namespace Acl
