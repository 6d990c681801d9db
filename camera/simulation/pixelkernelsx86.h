#pragma once

#include "camera/simulation/pixelkernels.h"

namespace korvane::simulation {

#ifdef KORVANE_SIMULATION_X86
// Each table lives in a source of its own that is compiled for its instruction set. Those sources use
// intrinsics and functions of their own only: an inline function of the standard library compiled there could
// be the copy that the linker keeps for the whole program, which would then stop on older machines.
extern const PixelKernels pixelKernelsAvx2;
extern const PixelKernels pixelKernelsAvx512;
#endif

} // namespace korvane::simulation
