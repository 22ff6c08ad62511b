#pragma once

namespace vsp::test {

// Whether the upper halves of vector registers are in use. A function that leaves them so slows down its caller's SSE code.
// False where the processor does not tell, and where the compiler was not to optimise.
bool upperHalvesInUse();

}  // namespace vsp::test
