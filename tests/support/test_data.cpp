#include "support/test_data.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vsp::test {

std::string testData(const std::string& name) {
    std::ifstream file(VSPSC_TEST_DATA "/" + name, std::ios::binary);
    if (!file) throw std::runtime_error(name + ": missing from the test data");
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace vsp::test
