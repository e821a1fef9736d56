// SPDX-License-Identifier: Apache-2.0
#include "packets/hardware/PortBlocks.h"

#include <algorithm>
#include <set>
#include <utility>

namespace PolicyMapPackets {

namespace {

using Interval = std::pair<std::uint32_t, std::uint32_t>;

// Adjacent intervals become one. Empty if some overlap.
std::vector<Interval> joined(std::set<Interval> const& intervals) {
  std::vector<Interval> result;
  for (Interval const& each : intervals) {
    if (result.empty() || each.first > result.back().second + 1) {
      result.push_back(each);
    } else if (each.first == result.back().second + 1) {
      result.back().second = each.second;
    } else {
      return {};
    }
  }
  return result;
}

}  // namespace

std::vector<PortBlock> portBlocksOf(std::vector<PolicyMap::SubRuleData> const& subRules) {
  std::vector<PortBlock> blocks;
  std::set<Interval> sources;
  std::set<Interval> destinations;
  std::set<std::pair<Interval, Interval>> pairs;
  for (PolicyMap::SubRuleData const& each : subRules) {
    if (each.srcPortLow() > each.srcPortHigh() || each.dstPortLow() > each.dstPortHigh()) {
      continue;
    }
    Interval const source{each.srcPortLow(), each.srcPortHigh()};
    Interval const destination{each.dstPortLow(), each.dstPortHigh()};
    sources.insert(source);
    destinations.insert(destination);
    pairs.emplace(source, destination);
    blocks.push_back({source.first, source.second, destination.first, destination.second});
  }
  std::vector<Interval> const sourcePorts = joined(sources);
  std::vector<Interval> const destinationPorts = joined(destinations);
  bool const isProduct = pairs.size() == sources.size() * destinations.size() &&
                         !sourcePorts.empty() && !destinationPorts.empty();
  if (!isProduct) {
    return blocks;
  }
  blocks.clear();
  for (Interval const& source : sourcePorts) {
    for (Interval const& destination : destinationPorts) {
      blocks.push_back({source.first, source.second, destination.first, destination.second});
    }
  }
  return blocks;
}

}  // namespace PolicyMapPackets
