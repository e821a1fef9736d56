// SPDX-License-Identifier: Apache-2.0
#include "byname/Recording.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <iostream>

namespace {
std::vector<std::string> before;
}

std::vector<std::string> const& typesBefore() {
  return before;
}

int main(int argc, char** argv) {
  for (Kor::KorType const* const type : Kor::KorType::all()) {
    before.emplace_back(type->name());
  }
  Kor::IntrospectionReactor::globalIs(&recording());
  if (dlopen(LIBRARY_TO_OPEN, RTLD_NOW | RTLD_LOCAL) == nullptr) {
    std::cerr << dlerror() << "\n";
    return 1;
  }
  Kor::IntrospectionReactor::globalIs(nullptr);
  testing::InitGoogleTest(&argc, argv);  // parameters come from the library's types
  return RUN_ALL_TESTS();
}
