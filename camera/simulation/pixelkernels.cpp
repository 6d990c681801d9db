#include "camera/simulation/pixelkernels.h"

#include "camera/simulation/pixelkernelsx86.h"

#include <algorithm>
#include <cstring>

namespace korvane::simulation {

namespace {

/// a x b / 32768, rounded; as the instruction of this name does it.
std::int16_t mulhrs(std::int16_t a, std::int16_t b)
{
    return static_cast<std::int16_t>((a * b + 0x4000) >> 15);
}

std::int16_t towards(std::int16_t from, std::int16_t to, std::int16_t share)
{
    return static_cast<std::int16_t>(from + mulhrs(static_cast<std::int16_t>(to - from), share));
}

std::uint64_t step(const std::int16_t* light, std::int16_t* level, std::int16_t* before,
                   const std::int16_t* lower, const std::int16_t* upper, Bandwidth bandwidth)
{
    std::uint8_t out[segmentWidth];
    for (int i = 0; i < segmentWidth; ++i) {
        const std::int16_t old = level[i];
        const int wanted = bandwidth.base + mulhrs(static_cast<std::int16_t>(old * 4), bandwidth.slope);
        const int share = std::clamp<int>(wanted, bandwidth.least, 32767);
        const std::int16_t now = towards(old, light[i], static_cast<std::int16_t>(share));
        before[i] = old;
        level[i] = now;
        out[i] = static_cast<std::uint8_t>((now >= upper[i] ? 1 : 0) | (now <= lower[i] ? 1 : 0));
    }
    std::uint64_t fired = 0;
    for (int i = 0; i < segmentWidth; ++i)
        fired |= static_cast<std::uint64_t>(out[i]) << i;
    return fired;
}

std::int16_t interpolate(const Taps& taps, int i)
{
    const std::int16_t above = towards(taps.first[i], taps.first[i + 1], taps.firstShift);
    const std::int16_t below = towards(taps.second[i], taps.second[i + 1], taps.secondShift);
    return towards(above, below, taps.rowShift);
}

void sample(std::int16_t* out, const Taps& image)
{
    for (int i = 0; i < segmentWidth; ++i)
        out[i] = interpolate(image, i);
}

void blend(std::int16_t* out, const Taps& image, const Taps& opacity)
{
    for (int i = 0; i < segmentWidth; ++i)
        out[i] = towards(out[i], interpolate(image, i), interpolate(opacity, i));
}

void turn(std::int16_t* out, const std::int16_t* rings, const std::uint32_t* offset,
          const std::uint16_t* angle, std::uint32_t turned, int ringBits)
{
    for (int i = 0; i < segmentWidth; ++i) {
        const std::uint32_t place = (angle[i] + turned) & 0xFFFFU;
        const std::int16_t* at = rings + offset[i] + (place >> (16 - ringBits));
        const std::uint32_t share = ((place << ringBits) & 0xFFFFU) >> 1U;
        out[i] = towards(at[0], at[1], static_cast<std::int16_t>(share));
    }
}

constexpr PixelKernels generic{"generic", step, sample, blend, turn};

} // namespace

const PixelKernels& pixelKernels()
{
    static const PixelKernels* const best = [] {
        for (const char* name : {"avx512", "avx2"}) {
            if (const PixelKernels* kernels = pixelKernels(name))
                return kernels;
        }
        return &generic;
    }();
    return *best;
}

const PixelKernels* pixelKernels(const char* name)
{
#ifdef KORVANE_SIMULATION_X86
    if (std::strcmp(name, "avx512") == 0 && __builtin_cpu_supports("avx512f")
        && __builtin_cpu_supports("avx512bw"))
        return &pixelKernelsAvx512;
    if (std::strcmp(name, "avx2") == 0 && __builtin_cpu_supports("avx2"))
        return &pixelKernelsAvx2;
#endif
    return std::strcmp(name, "generic") == 0 ? &generic : nullptr;
}

} // namespace korvane::simulation
