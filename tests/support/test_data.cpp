#include "support/test_data.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vsp::test {

std::string testData(const std::string& name) {
    const std::size_t slash = name.find('/');
    std::ifstream file(VSPSC_TESTS "/" + name.substr(0, slash) + "/data" + name.substr(slash), std::ios::binary);
    if (!file) throw std::runtime_error(name + ": missing from the test data");
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace vsp::test
