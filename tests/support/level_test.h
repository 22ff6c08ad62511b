// Tests that run over every instruction-set level and over the shared library itself.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "core/api.h"

namespace vsp::test {

// The functions of "y8", "v3", "v4", or of "library", the built shared library; null if the processor lacks the level, or
// if VSPSC_LEVEL in the environment names another one.
const Api* apiOf(const std::string& level);

// GetParam() names the level, api is its table. Skipped where the processor lacks the level.
class LevelTest : public ::testing::TestWithParam<std::string> {
  protected:
    void SetUp() override {
        if (apiOf(GetParam()) == nullptr) GTEST_SKIP() << "the processor lacks level " << GetParam();
    }

    const Api& api = apiOf(GetParam()) != nullptr ? *apiOf(GetParam()) : kApi_y8;
};

}  // namespace vsp::test

#define VSPSC_EVERY_LEVEL(Suite)                                                      \
    INSTANTIATE_TEST_SUITE_P(, Suite, ::testing::Values("y8", "v3", "v4", "library"), \
                             [](const auto& test) { return test.param; })
