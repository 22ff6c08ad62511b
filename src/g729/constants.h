// Frame constants under the standard's names.
#pragma once

namespace vsp {

constexpr int kPitMin = 20, kPitMax = 143;  // lags
constexpr int kL_frame = 80, kL_subfr = 40;

}  // namespace vsp
