#include "camera/simulation/pixelkernelsx86.h"

#include <immintrin.h>

namespace korvane::simulation {

namespace {

constexpr int lanes = 32;

[[gnu::always_inline]] inline __m512i load(const std::int16_t* from)
{
    return _mm512_loadu_si512(from);
}

[[gnu::always_inline]] inline void store(std::int16_t* to, __m512i value)
{
    _mm512_storeu_si512(to, value);
}

[[gnu::always_inline]] inline __m512i towards(__m512i from, __m512i to, __m512i share)
{
    return _mm512_add_epi16(from, _mm512_mulhrs_epi16(_mm512_sub_epi16(to, from), share));
}

std::uint64_t step(const std::int16_t* light, std::int16_t* level, std::int16_t* before,
                   const std::int16_t* lower, const std::int16_t* upper, Bandwidth bandwidth)
{
    const __m512i base = _mm512_set1_epi16(bandwidth.base);
    const __m512i slope = _mm512_set1_epi16(bandwidth.slope);
    const __m512i least = _mm512_set1_epi16(bandwidth.least);
    std::uint64_t quiet = 0;
    for (int i = 0; i < segmentWidth; i += lanes) {
        const __m512i old = load(level + i);
        const __m512i wanted = _mm512_adds_epi16(base, _mm512_mulhrs_epi16(_mm512_slli_epi16(old, 2), slope));
        const __m512i now = towards(old, load(light + i), _mm512_max_epi16(wanted, least));
        store(before + i, old);
        store(level + i, now);
        const __mmask32 inside = _mm512_mask_cmpgt_epi16_mask(_mm512_cmpgt_epi16_mask(load(upper + i), now),
                                                              now, load(lower + i));
        quiet |= static_cast<std::uint64_t>(inside) << i;
    }
    return ~quiet;
}

struct Shifts
{
    explicit Shifts(const Taps& taps)
        : first(_mm512_set1_epi16(taps.firstShift)), second(_mm512_set1_epi16(taps.secondShift)),
          row(_mm512_set1_epi16(taps.rowShift))
    {
    }
    __m512i first;
    __m512i second;
    __m512i row;
};

[[gnu::always_inline]] inline __m512i interpolate(const Taps& taps, const Shifts& shifts, int i)
{
    const __m512i above = towards(load(taps.first + i), load(taps.first + i + 1), shifts.first);
    const __m512i below = towards(load(taps.second + i), load(taps.second + i + 1), shifts.second);
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
    const __m512i whole = _mm512_set1_epi32(0xFFFF);
    const __m512i added = _mm512_set1_epi32(static_cast<int>(turned));
    const __m512i half = _mm512_set1_epi32(0x4000);
    const __m128i down = _mm_cvtsi32_si128(16 - ringBits);
    const __m128i up = _mm_cvtsi32_si128(ringBits);
    for (int i = 0; i < segmentWidth; i += 16) {
        const __m512i angles
            = _mm512_cvtepu16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(angle + i)));
        const __m512i place = _mm512_and_si512(_mm512_add_epi32(angles, added), whole);
        const __m512i index = _mm512_add_epi32(_mm512_loadu_si512(offset + i), _mm512_srl_epi32(place, down));
        const __m512i share = _mm512_srli_epi32(_mm512_and_si512(_mm512_sll_epi32(place, up), whole), 1);
        const __m512i pair = _mm512_i32gather_epi32(index, rings, 2);
        const __m512i near = _mm512_srai_epi32(_mm512_slli_epi32(pair, 16), 16);
        const __m512i far = _mm512_srai_epi32(pair, 16);
        const __m512i way = _mm512_mullo_epi32(_mm512_sub_epi32(far, near), share);
        const __m512i value = _mm512_add_epi32(near, _mm512_srai_epi32(_mm512_add_epi32(way, half), 15));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm512_cvtepi32_epi16(value));
    }
}

} // namespace

const PixelKernels pixelKernelsAvx512{"avx512", step, sample, blend, turn};

} // namespace korvane::simulation
