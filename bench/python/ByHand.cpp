// SPDX-License-Identifier: Apache-2.0

// What python_bench.py compares kor with: a helper that records, with bindings written by hand. It
// does the same work as the attributes and functions of PolicyMapTest::AclHelper and its records
// that are measured.

#include <cstdint>
#include <functional>
#include <memory>
#include <pybind11/pybind11.h>
#include <pybind11/stl_bind.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace ByHand {

enum class MatchOption { ipv4, ipv6, mac, mpls };

std::size_t mixed(std::size_t hash, std::size_t more) {
  return hash ^ (more + 0x9e3779b97f4a7c15U + (hash << 6U) + (hash >> 2U));
}

struct Hash {
  template <class Key>
  std::size_t operator()(Key const& key) const {
    return key.hash();
  }
};

class PolicyKey {
 public:
  PolicyKey(std::string name, std::string direction)
      : name_(std::move(name)), direction_(std::move(direction)) {}
  [[nodiscard]] std::string const& name() const { return name_; }
  [[nodiscard]] std::string const& direction() const { return direction_; }
  [[nodiscard]] std::size_t hash() const {
    return mixed(std::hash<std::string>()(name_), std::hash<std::string>()(direction_));
  }
  friend bool operator==(PolicyKey const&, PolicyKey const&) = default;

 private:
  std::string name_;
  std::string direction_;
};

// A policy and an option.
class RecordKey {
 public:
  RecordKey(PolicyKey policy, MatchOption option) : policy_(std::move(policy)), option_(option) {}
  [[nodiscard]] std::size_t hash() const {
    return mixed(policy_.hash(), static_cast<std::size_t>(option_));
  }
  friend bool operator==(RecordKey const&, RecordKey const&) = default;

 private:
  PolicyKey policy_;
  MatchOption option_;
};

class RuleKey {
 public:
  RuleKey(std::string className, std::string acl, std::uint32_t seqno, MatchOption option)
      : className_(std::move(className)), acl_(std::move(acl)), seqno_(seqno), option_(option) {}
  [[nodiscard]] std::string const& className() const { return className_; }
  [[nodiscard]] std::string const& acl() const { return acl_; }
  [[nodiscard]] std::uint32_t seqno() const { return seqno_; }
  [[nodiscard]] std::size_t hash() const {
    return mixed(mixed(std::hash<std::string>()(className_), std::hash<std::string>()(acl_)),
                 mixed(seqno_, static_cast<std::size_t>(option_)));
  }
  friend bool operator==(RuleKey const&, RuleKey const&) = default;

 private:
  std::string className_;
  std::string acl_;
  std::uint32_t seqno_;
  MatchOption option_;
};

class IntfId {
 public:
  explicit IntfId(std::string name) : name_(std::move(name)) {}
  [[nodiscard]] std::size_t hash() const { return std::hash<std::string>()(name_); }
  friend bool operator==(IntfId const&, IntfId const&) = default;

 private:
  std::string name_;
};

class PolicyData {
 public:
  explicit PolicyData(PolicyKey key) : key_(std::move(key)) {}
  [[nodiscard]] PolicyKey const& key() const { return key_; }

 private:
  PolicyKey key_;
};

using Actions = std::unordered_map<RuleKey, std::uint32_t, Hash>;

struct Record {
  std::uint32_t commitCount = 0;
  bool dirty = false;
  Actions ruleAction1;
  std::unordered_set<IntfId, Hash> intf;
};

class AclHelper {
 public:
  AclHelper(bool updateActionSupported, bool expandPortChannels)
      : updateActionSupported_(updateActionSupported), expandPortChannels_(expandPortChannels) {}

  [[nodiscard]] bool updateActionSupported() const { return updateActionSupported_; }
  [[nodiscard]] bool expandPortChannels() const { return expandPortChannels_; }
  [[nodiscard]] std::string const& commitError() const { return commitError_; }
  void commitErrorIs(std::string error) { set(commitError_, std::move(error), "commitError"); }
  [[nodiscard]] bool pseudoAsync() const { return pseudoAsync_; }
  void pseudoAsyncIs(bool pseudoAsync) { set(pseudoAsync_, pseudoAsync, "pseudoAsync"); }
  [[nodiscard]] std::string const& asyncError() const { return asyncError_; }

  // Sets the pending result.
  void scheduleAsyncResult(std::string error) {
    set(asyncError_, std::move(error), "asyncError");
    if (pseudoAsync_) {
      announce("asyncOperationResult");
    }
  }
  std::string commitPolicy(PolicyData const& policy, MatchOption option) {
    auto const found = records_.find(RecordKey(policy.key(), option));
    if (found == records_.end()) {
      throw std::logic_error("no record");
    }
    ++found->second->commitCount;
    found->second->dirty = false;
    return commitError_;
  }
  std::string addIntfToPolicy(PolicyData const& policy, IntfId const& intf, MatchOption option) {
    newRecord(RecordKey(policy.key(), option))->intf.insert(intf);
    return addIntfError_;
  }
  // The record, made if there is none.
  std::shared_ptr<Record> newRecord(RecordKey const& key) {
    std::shared_ptr<Record>& record = records_[key];
    if (!record) {
      record = std::make_shared<Record>();
      announce("testData");
    }
    return record;
  }

  using Observer = std::function<void(std::string_view)>;
  void observe(Observer observer) { observers_.push_back(std::move(observer)); }

 private:
  void announce(std::string_view attribute) const {
    for (Observer const& observer : observers_) {
      observer(attribute);
    }
  }
  template <class Value>
  void set(Value& stored, Value value, std::string_view attribute) {
    if (stored != value) {
      stored = std::move(value);
      announce(attribute);
    }
  }

  bool updateActionSupported_;
  bool expandPortChannels_;
  bool pseudoAsync_ = false;
  std::string commitError_;
  std::string addIntfError_;
  std::string asyncError_;
  std::unordered_map<RecordKey, std::shared_ptr<Record>, Hash> records_;
  std::vector<Observer> observers_;
};

}  // namespace ByHand

PYBIND11_MAKE_OPAQUE(ByHand::Actions)

PYBIND11_MODULE(by_hand, module) {
  using namespace ByHand;

  py::enum_<MatchOption>(module, "MatchOption")
      .value("ipv4", MatchOption::ipv4)
      .value("ipv6", MatchOption::ipv6)
      .value("mac", MatchOption::mac)
      .value("mpls", MatchOption::mpls);
  py::class_<PolicyKey>(module, "PolicyKey")
      .def(py::init<std::string, std::string>(), py::arg("name"), py::arg("direction"))
      .def_property_readonly("name", &PolicyKey::name)
      .def_property_readonly("direction", &PolicyKey::direction);
  py::class_<RecordKey>(module, "RecordKey")
      .def(py::init<PolicyKey, MatchOption>(), py::arg("policy"), py::arg("option"));
  py::class_<RuleKey>(module, "RuleKey")
      .def(py::init<std::string, std::string, std::uint32_t, MatchOption>(), py::arg("className"),
           py::arg("aclName"), py::arg("seqno"), py::arg("matchOption"))
      .def_property_readonly("className", &RuleKey::className)
      .def_property_readonly("aclName", &RuleKey::acl)
      .def_property_readonly("seqno", &RuleKey::seqno);
  py::class_<IntfId>(module, "IntfId").def(py::init<std::string>(), py::arg("name"));
  py::class_<PolicyData, std::shared_ptr<PolicyData>>(module, "PolicyData")
      .def(py::init<PolicyKey>(), py::arg("key"));
  py::bind_map<Actions>(module, "Actions");
  py::class_<Record, std::shared_ptr<Record>>(module, "Record")
      .def_readwrite("commitCount", &Record::commitCount)
      .def_readwrite("dirty", &Record::dirty)
      .def_readonly("ruleAction1", &Record::ruleAction1);
  py::class_<AclHelper, std::shared_ptr<AclHelper>>(module, "AclHelper")
      .def(py::init<bool, bool>(), py::arg("updateActionSupported"), py::arg("expandPortChannels"))
      .def_property_readonly("updateActionSupported", &AclHelper::updateActionSupported)
      .def_property_readonly("expandPortChannels", &AclHelper::expandPortChannels)
      .def_property("commitError", &AclHelper::commitError, &AclHelper::commitErrorIs)
      .def_property("pseudoAsync", &AclHelper::pseudoAsync, &AclHelper::pseudoAsyncIs)
      .def_property_readonly("asyncError", &AclHelper::asyncError)
      .def("scheduleAsyncResult", &AclHelper::scheduleAsyncResult, py::arg("error"))
      .def("commitPolicy", &AclHelper::commitPolicy, py::arg("policyData"), py::arg("matchOption"))
      .def("addIntfToPolicy", &AclHelper::addIntfToPolicy, py::arg("policyData"), py::arg("intf"),
           py::arg("matchOption"))
      .def("newRecord", &AclHelper::newRecord, py::arg("key"));
}
