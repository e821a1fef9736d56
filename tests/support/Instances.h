// SPDX-License-Identifier: Apache-2.0
#pragma once

// Instances<Tag>: a base that counts how many objects of a class are alive.
//
//   class Thing : public Kor::PtrInterface, public TestSupport::Instances<Thing> {};
//   EXPECT_EQ(Thing::alive(), 0);

namespace TestSupport {

template <class Tag>
class Instances {
 public:
  Instances() { ++count(); }
  Instances(Instances const& /*other*/) { ++count(); }
  Instances& operator=(Instances const&) = default;
  ~Instances() { --count(); }

  [[nodiscard]] static int alive() { return count(); }

 private:
  static int& count() {
    static int instances = 0;
    return instances;
  }
};

}  // namespace TestSupport
