#pragma once

#include <string>

namespace vsp::test {

// The bytes of a file of test data: "ec/fir_16s.vec" is tests/ec/data/fir_16s.vec.
std::string testData(const std::string& name);

}  // namespace vsp::test
