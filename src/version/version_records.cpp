#include "version/version_records.h"

namespace vsp {

static constexpr VspLibraryVersion record(const char* name) {
    return {6, 1, 137, 818, {'y', '8', 0, 0}, name, "6.1 build 137.56", "Mar 17 2010"};
}

constexpr VspLibraryVersion kVersionAboveBaseline = record("libvspscy8.so.6.1+");
constexpr VspLibraryVersion kVersionBaseline = record("libvspscy8.so.6.1");

}  // namespace vsp
