#pragma once

#include <string>

namespace vsp::test {

// The bytes of a file under tests/data.
std::string testData(const std::string& name);

}  // namespace vsp::test
