#include "camera/simulation/pixelkernelsx86.h"

#include <immintrin.h>

namespace korvane::simulation {

namespace {

constexpr int lanes = 16;

[[gnu::always_inline]] inline __m256i load(const std::int16_t* from)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

[[gnu::always_inline]] inline void store(std::int16_t* to, __m256i value)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), value);
}

[[gnu::always_inline]] inline __m256i towards(__m256i from, __m256i to, __m256i share)
{
    return _mm256_add_epi16(from, _mm256_mulhrs_epi16(_mm256_sub_epi16(to, from), share));
}

std::uint64_t step(const std::int16_t* light, std::int16_t* level, std::int16_t* before,
                   const std::int16_t* lower, const std::int16_t* upper, Bandwidth bandwidth)
{
    const __m256i base = _mm256_set1_epi16(bandwidth.base);
    const __m256i slope = _mm256_set1_epi16(bandwidth.slope);
    const __m256i least = _mm256_set1_epi16(bandwidth.least);
    __m256i inside[segmentWidth / lanes];
    for (int i = 0; i < segmentWidth / lanes; ++i) {
        const __m256i old = load(level + i * lanes);
        const __m256i wanted = _mm256_adds_epi16(base, _mm256_mulhrs_epi16(_mm256_slli_epi16(old, 2), slope));
        const __m256i now = towards(old, load(light + i * lanes), _mm256_max_epi16(wanted, least));
        store(before + i * lanes, old);
        store(level + i * lanes, now);
        inside[i] = _mm256_and_si256(_mm256_cmpgt_epi16(load(upper + i * lanes), now),
                                     _mm256_cmpgt_epi16(now, load(lower + i * lanes)));
    }
    // packs works within 128-bit halves; the permutation puts the quarters back in order.
    const __m256i low = _mm256_permute4x64_epi64(_mm256_packs_epi16(inside[0], inside[1]), 0xD8);
    const __m256i high = _mm256_permute4x64_epi64(_mm256_packs_epi16(inside[2], inside[3]), 0xD8);
    const std::uint64_t quiet = static_cast<std::uint32_t>(_mm256_movemask_epi8(low))
        | static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm256_movemask_epi8(high))) << 32U;
    return ~quiet;
}

struct Shifts
{
    explicit Shifts(const Taps& taps)
        : first(_mm256_set1_epi16(taps.firstShift)), second(_mm256_set1_epi16(taps.secondShift)),
          row(_mm256_set1_epi16(taps.rowShift))
    {
    }
    __m256i first;
    __m256i second;
    __m256i row;
};

[[gnu::always_inline]] inline __m256i interpolate(const Taps& taps, const Shifts& shifts, int i)
{
    const __m256i above = towards(load(taps.first + i), load(taps.first + i + 1), shifts.first);
    const __m256i below = towards(load(taps.second + i), load(taps.second + i + 1), shifts.second);
    return towards(above, below, shifts.row);
}

void sample(std::int16_t* out, const Taps& image)
{
    const Shifts shifts(image);
    for (int i = 0; i < segmentWidth; i += lanes)
        store(out + i, interpolate(image, shifts, i));
}

void blend(std::int16_t* out, const Taps& image, const Taps& opacity)
{
    const Shifts imageShifts(image);
    const Shifts opacityShifts(opacity);
    for (int i = 0; i < segmentWidth; i += lanes) {
        store(out + i,
              towards(load(out + i), interpolate(image, imageShifts, i),
                      interpolate(opacity, opacityShifts, i)));
    }
}

void turn(std::int16_t* out, const std::int16_t* rings, const std::uint32_t* offset,
          const std::uint16_t* angle, std::uint32_t turned, int ringBits)
{
    const __m256i whole = _mm256_set1_epi32(0xFFFF);
    const __m256i added = _mm256_set1_epi32(static_cast<int>(turned));
    const __m256i half = _mm256_set1_epi32(0x4000);
    const __m128i down = _mm_cvtsi32_si128(16 - ringBits);
    const __m128i up = _mm_cvtsi32_si128(ringBits);
    for (int i = 0; i < segmentWidth; i += 8) {
        const __m256i angles
            = _mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(angle + i)));
        const __m256i place = _mm256_and_si256(_mm256_add_epi32(angles, added), whole);
        const __m256i index = _mm256_add_epi32(
            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(offset + i)), _mm256_srl_epi32(place, down));
        const __m256i share = _mm256_srli_epi32(_mm256_and_si256(_mm256_sll_epi32(place, up), whole), 1);
        const __m256i pair = _mm256_i32gather_epi32(reinterpret_cast<const int*>(rings), index, 2);
        const __m256i near = _mm256_srai_epi32(_mm256_slli_epi32(pair, 16), 16);
        const __m256i far = _mm256_srai_epi32(pair, 16);
        const __m256i way = _mm256_mullo_epi32(_mm256_sub_epi32(far, near), share);
        const __m256i value = _mm256_add_epi32(near, _mm256_srai_epi32(_mm256_add_epi32(way, half), 15));
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packs_epi32(value, value), 0xD8);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm256_castsi256_si128(packed));
    }
}

} // namespace

const PixelKernels pixelKernelsAvx2{"avx2", step, sample, blend, turn};

} // namespace korvane::simulation
