#pragma once

namespace vsp {

constexpr int kL_subfr = 40;   // subframe of the G.729 and GSM-AMR coders: a length with code of its own
constexpr int kMaxFast = 256;  // samples of the longest vectors for which there is room on the stack

}  // namespace vsp
