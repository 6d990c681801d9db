#include "camera/recording/evtdecoders.h"

#include "camera/recording/evtclock.h"
#include "camera/recording/evtwords.h"

#include <bit>

#if defined(__x86_64__)

#include <immintrin.h>

#if !defined(__clang__)
// GCC 12's own intrinsics pass deliberately undefined registers.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define KORVANE_WIDE                                                                                         \
    __attribute__((target(                                                                                   \
        "avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,avx512vbmi2,avx512bitalg,bmi,bmi2,lzcnt,popcnt")))
#define KORVANE_WIDE_INLINE KORVANE_WIDE inline __attribute__((always_inline))

namespace korvane::recording {

namespace {

/// Writes eight events from their halves: `first` holds x, y and polarity, `time` the times.
KORVANE_WIDE_INLINE void storeEight(Event2D* out, __m512i first, __m512i time)
{
    const __m512i evenOdd = _mm512_unpacklo_epi64(first, time);
    const __m512i oddOdd = _mm512_unpackhi_epi64(first, time);
    const __m512i lowIndex = _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11);
    const __m512i highIndex = _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15);
    _mm512_storeu_si512(out, _mm512_permutex2var_epi64(evenOdd, lowIndex, oddOdd));
    _mm512_storeu_si512(out + 4, _mm512_permutex2var_epi64(evenOdd, highIndex, oddOdd));
}

KORVANE_WIDE_INLINE __m512i lowerHalf(__m512i lanes)
{
    return _mm512_cvtepu32_epi64(_mm512_castsi512_si256(lanes));
}

KORVANE_WIDE_INLINE __m512i upperHalf(__m512i lanes)
{
    return _mm512_cvtepu32_epi64(_mm512_extracti64x4_epi64(lanes, 1));
}

/// Eight of 32 16-bit values, widened.
KORVANE_WIDE_INLINE __m512i eightFrom(const std::uint16_t* values)
{
    return _mm512_cvtepu16_epi64(_mm_load_si128(reinterpret_cast<const __m128i*>(values)));
}

/// Writes the event of the lowest pixel of `bits`.
KORVANE_WIDE_INLINE void storeLowest(Event2D* out, std::uint64_t pixel, unsigned bits, std::int64_t time)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                     _mm_set_epi64x(time, static_cast<std::int64_t>(pixel + _tzcnt_u32(bits))));
}

/// Sixteen words of EVT 2.0, all of them events inside the sensor in time order or repeated time-high words.
/// False, with nothing done, for anything else.
KORVANE_WIDE_INLINE bool decodeEvt2Block(EvtState& state, EvtPass& pass, Event2D*& out)
{
    const __m512i words = _mm512_loadu_si512(pass.next);
    const __mmask16 events = _mm512_testn_epi32_mask(words, _mm512_set1_epi32(static_cast<int>(0xE0000000u)));
    const __m512i repeated = _mm512_set1_epi32(static_cast<int>(0x80000000u | state.highWord));
    const __mmask16 times = _mm512_cmpeq_epi32_mask(words, repeated);
    if ((events | times) != 0xFFFF)
        return false;
    const __m512i packed = events == 0xFFFF ? words : _mm512_maskz_compress_epi32(events, words);
    const auto count = static_cast<unsigned>(std::popcount(static_cast<unsigned>(events)));
    const auto lanes = static_cast<__mmask16>((1u << count) - 1);

    const __m512i coordinate = _mm512_set1_epi32(0x7FF);
    const __m512i x = _mm512_and_si512(_mm512_srli_epi32(packed, 11), coordinate);
    const __m512i y = _mm512_and_si512(packed, coordinate);
    const __mmask16 outside = _mm512_mask_cmpge_epu32_mask(lanes, x, _mm512_set1_epi32(pass.geometry.width))
        | _mm512_mask_cmpge_epu32_mask(lanes, y, _mm512_set1_epi32(pass.geometry.height));
    const __m512i bits = _mm512_and_si512(_mm512_srli_epi32(packed, 22), _mm512_set1_epi32(0x3F));
    const __m512i previous = _mm512_maskz_permutexvar_epi32(
        0xFFFE, _mm512_setr_epi32(0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14), bits);
    const __mmask16 back = _mm512_mask_cmplt_epu32_mask(lanes, bits, previous);
    const std::int64_t first = state.high + _mm_cvtsi128_si32(_mm512_castsi512_si128(bits));
    if ((outside | back) != 0 || (count > 0 && first < state.eventFloor))
        return false;
    pass.next += 64;
    if (count == 0)
        return true;

    const __m512i pixel = _mm512_or_si512(x, _mm512_slli_epi32(y, 16));
    const __m512i polarity = _mm512_srli_epi32(packed, 28);
    const __m512i high = _mm512_set1_epi64(state.high);
    storeEight(out, _mm512_or_si512(lowerHalf(pixel), _mm512_slli_epi64(lowerHalf(polarity), 32)),
               _mm512_add_epi64(high, lowerHalf(bits)));
    storeEight(out + 8, _mm512_or_si512(upperHalf(pixel), _mm512_slli_epi64(upperHalf(polarity), 32)),
               _mm512_add_epi64(high, upperHalf(bits)));
    out += count;
    state.eventFloor = static_cast<std::int64_t>(out[-1].timestamp);
    return true;
}

/// For each of 32 lanes how many bits of `mask` stand at or before it.
KORVANE_WIDE_INLINE __m512i countUpTo(__mmask32 mask, __m512i lowLanes, __m512i highLanes)
{
    const __m512i low = _mm512_and_si512(_mm512_set1_epi16(static_cast<short>(mask)), lowLanes);
    const __m512i high = _mm512_and_si512(_mm512_set1_epi16(static_cast<short>(mask >> 16)), highLanes);
    return _mm512_add_epi16(_mm512_popcnt_epi16(low), _mm512_popcnt_epi16(high));
}

/// Lane masks for countUpTo: bit j of lane i is set for j <= i, and for j < i.
struct LaneMasks
{
    alignas(64) std::uint16_t low[32];
    alignas(64) std::uint16_t high[32];
    alignas(64) std::uint16_t lowBefore[32];
    alignas(64) std::uint16_t highBefore[32];

    constexpr LaneMasks() : low(), high(), lowBefore(), highBefore()
    {
        for (unsigned lane = 0; lane < 32; ++lane) {
            const std::uint64_t upTo = (std::uint64_t(2) << lane) - 1;
            const std::uint64_t before = (std::uint64_t(1) << lane) - 1;
            low[lane] = static_cast<std::uint16_t>(upTo & 0xFFFF);
            high[lane] = static_cast<std::uint16_t>(upTo >> 16);
            lowBefore[lane] = static_cast<std::uint16_t>(before & 0xFFFF);
            highBefore[lane] = static_cast<std::uint16_t>(before >> 16);
        }
    }
};
constexpr LaneMasks laneMasks;

KORVANE_WIDE_INLINE __mmask32 lanesOfType(__m512i types, unsigned type)
{
    return _mm512_cmpeq_epi16_mask(types, _mm512_set1_epi16(static_cast<short>(type << 12)));
}

/// Carries the value of the last marked lane into the lanes after it, and `before` into those before the
/// first one. `counts` is countUpTo(mark).
KORVANE_WIDE_INLINE __m512i fillForward(__mmask32 mark, __m512i counts, __m512i values, std::uint16_t before)
{
    const __m512i marked = _mm512_maskz_compress_epi16(mark, values);
    const __mmask32 any = _mm512_test_epi16_mask(counts, counts);
    return _mm512_mask_permutexvar_epi16(_mm512_set1_epi16(static_cast<short>(before)), any,
                                         _mm512_sub_epi16(counts, _mm512_set1_epi16(1)), marked);
}

/// The last of the marked lanes' values; `mark` is not empty.
KORVANE_WIDE_INLINE std::uint16_t lastOf(__mmask32 mark, const std::uint8_t* words)
{
    const unsigned lane = 31u - static_cast<unsigned>(std::countl_zero(mark));
    return loadWord<std::uint16_t>(words + 2 * lane);
}

/// Thirty-two words of EVT 3.0 in the common state: time, row and (where vectors come) base are known,
/// time-high does not change, times do not step back, no pixel lies outside. False, with nothing done, for
/// anything else.
KORVANE_WIDE_INLINE bool decodeEvt3Block(EvtState& state, EvtPass& pass, Event2D*& out)
{
    const std::uint8_t* const at = pass.next;
    const __m512i words = _mm512_loadu_si512(at);
    const __m512i types = _mm512_and_si512(words, _mm512_set1_epi16(static_cast<short>(0xF000)));
    const __m512i values = _mm512_and_si512(words, _mm512_set1_epi16(0x0FFF));
    const __m512i coordinates = _mm512_and_si512(words, _mm512_set1_epi16(0x07FF));

    const __mmask32 singles = lanesOfType(types, Evt3Words::AddressX);
    const __mmask32 rows = lanesOfType(types, Evt3Words::AddressY);
    const __mmask32 lows = lanesOfType(types, Evt3Words::TimeLow);
    const __mmask32 bases = lanesOfType(types, Evt3Words::VectorBase);
    const __mmask32 twelves = lanesOfType(types, Evt3Words::Vector12);
    const __mmask32 eights = lanesOfType(types, Evt3Words::Vector8);
    const __mmask32 repeats
        = _mm512_cmpeq_epi16_mask(words, _mm512_set1_epi16(static_cast<short>(0x8000u | state.highWord)));
    __mmask32 known = singles | rows | lows | bases | twelves | eights | repeats;
    if (known != 0xFFFFFFFFu) {
        // Monitoring words and the payload behind them are passed over; all else is for the careful decoder.
        known |= lanesOfType(types, Evt3Words::Others) | lanesOfType(types, Evt3Words::Continued12)
            | lanesOfType(types, Evt3Words::Continued4);
        if (known != 0xFFFFFFFFu)
            return false;
    }

    const __m512i lowLanes = _mm512_load_si512(laneMasks.low);
    const __m512i highLanes = _mm512_load_si512(laneMasks.high);
    const __mmask32 vectors = twelves | eights;

    __m512i x = coordinates;
    __m512i polarities = _mm512_srli_epi16(values, 11);
    __m512i bits = _mm512_set1_epi16(1);
    __mmask32 emitting = singles;
    std::uint16_t baseAfter = state.base;
    std::uint8_t polarityAfter = state.basePolarity;
    if ((vectors | bases) != 0) {
        const __m512i lowBefore = _mm512_load_si512(laneMasks.lowBefore);
        const __m512i highBefore = _mm512_load_si512(laneMasks.highBefore);
        // How far the base has advanced within the block before each lane: 12 a long vector, 8 a short one.
        const __m512i longs = countUpTo(twelves, lowBefore, highBefore);
        const __m512i shorts = countUpTo(eights, lowBefore, highBefore);
        const __m512i advance
            = _mm512_add_epi16(_mm512_add_epi16(_mm512_slli_epi16(longs, 3), _mm512_slli_epi16(longs, 2)),
                               _mm512_slli_epi16(shorts, 3));
        const __m512i baseCounts = countUpTo(bases, lowLanes, highLanes);
        const __m512i start
            = fillForward(bases, baseCounts, _mm512_sub_epi16(coordinates, advance), state.base);
        const __m512i vectorX = _mm512_add_epi16(start, advance);
        const __m512i vectorPolarity = fillForward(bases, baseCounts, polarities, state.basePolarity);
        x = _mm512_mask_mov_epi16(x, vectors, vectorX);
        polarities = _mm512_mask_mov_epi16(polarities, vectors, vectorPolarity);
        bits = _mm512_mask_mov_epi16(bits, twelves, values);
        bits = _mm512_mask_mov_epi16(bits, eights, _mm512_and_si512(values, _mm512_set1_epi16(0xFF)));

        const __m512i spans = _mm512_mask_mov_epi16(
            _mm512_mask_mov_epi16(_mm512_set1_epi16(1), twelves, _mm512_set1_epi16(12)), eights,
            _mm512_set1_epi16(8));
        const __mmask32 beyond = _mm512_cmpgt_epu16_mask(
            _mm512_add_epi16(x, spans), _mm512_set1_epi16(static_cast<short>(pass.geometry.width)));
        if ((beyond & (singles | vectors)) != 0)
            return false;
        // A vector before the block's first base needs one from before the block.
        if (!state.hasBase && (vectors & (bases == 0 ? ~0u : (bases & (0u - bases)) - 1)) != 0)
            return false;
        emitting |= vectors & _mm512_test_epi16_mask(bits, bits);

        // The vectors behind the block's last base, or all of them where the block has none.
        const std::uint32_t behind = bases == 0
            ? ~0u
            : static_cast<std::uint32_t>(~((std::uint64_t(2) << (31 - std::countl_zero(bases))) - 1));
        const auto longsAfter = static_cast<unsigned>(std::popcount(twelves & behind));
        const auto shortsAfter = static_cast<unsigned>(std::popcount(eights & behind));
        unsigned from = state.base;
        if (bases != 0) {
            const unsigned last = lastOf(bases, at);
            from = last & 0x7FF;
            polarityAfter = static_cast<std::uint8_t>((last >> 11) & 1);
        }
        baseAfter = static_cast<std::uint16_t>(from + 12 * longsAfter + 8 * shortsAfter);
    } else if ((_mm512_cmpge_epu16_mask(x, _mm512_set1_epi16(static_cast<short>(pass.geometry.width)))
                & singles)
               != 0) {
        return false;
    }

    const __m512i y = fillForward(rows, countUpTo(rows, lowLanes, highLanes), coordinates, state.row);
    const __mmask32 below
        = _mm512_cmpge_epu16_mask(y, _mm512_set1_epi16(static_cast<short>(pass.geometry.height)));
    if ((below & emitting) != 0)
        return false;
    const __m512i times = fillForward(lows, countUpTo(lows, lowLanes, highLanes), values, state.low);

    const unsigned count = static_cast<unsigned>(std::popcount(emitting));
    alignas(64) std::uint16_t timeOf[32];
    if (count > 0) {
        const __m512i emitted = _mm512_maskz_compress_epi16(emitting, times);
        const __m512i previous = _mm512_maskz_permutexvar_epi16(
            0xFFFFFFFEu,
            _mm512_set_epi16(30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15, 14, 13, 12, 11,
                             10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0),
            emitted);
        const auto lanes = static_cast<__mmask32>((std::uint64_t(1) << count) - 1);
        if (_mm512_mask_cmplt_epu16_mask(lanes, emitted, previous) != 0)
            return false;
        _mm512_store_si512(timeOf, emitted);
        if (state.high + timeOf[0] < state.eventFloor)
            return false;

        const __m512i xs = _mm512_maskz_compress_epi16(emitting, x);
        const __m512i ys = _mm512_maskz_compress_epi16(emitting, y);
        const __m512i ps = _mm512_maskz_compress_epi16(emitting, polarities);
        if ((emitting & vectors) == 0) {
            const __m512i high = _mm512_set1_epi64(state.high);
            alignas(64) std::uint16_t xOf[32];
            alignas(64) std::uint16_t yOf[32];
            alignas(64) std::uint16_t pOf[32];
            _mm512_store_si512(xOf, xs);
            _mm512_store_si512(yOf, ys);
            _mm512_store_si512(pOf, ps);
            for (unsigned i = 0; i < count; i += 8) {
                const __m512i first
                    = _mm512_or_si512(eightFrom(xOf + i),
                                      _mm512_or_si512(_mm512_slli_epi64(eightFrom(yOf + i), 16),
                                                      _mm512_slli_epi64(eightFrom(pOf + i), 32)));
                storeEight(out + i, first, _mm512_add_epi64(high, eightFrom(timeOf + i)));
            }
            out += count;
        } else {
            alignas(64) std::uint32_t pixelOf[32];
            alignas(64) std::uint16_t polarityOf[32];
            alignas(64) std::uint16_t bitsOf[32];
            const __m512i lowPart = _mm512_unpacklo_epi16(xs, ys);
            const __m512i highPart = _mm512_unpackhi_epi16(xs, ys);
            _mm512_store_si512(
                pixelOf,
                _mm512_permutex2var_epi64(lowPart, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), highPart));
            _mm512_store_si512(
                pixelOf + 16,
                _mm512_permutex2var_epi64(lowPart, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), highPart));
            _mm512_store_si512(polarityOf, ps);
            _mm512_store_si512(bitsOf, _mm512_maskz_compress_epi16(emitting, bits));
            for (unsigned i = 0; i < count; ++i) {
                unsigned rest = bitsOf[i];
                const std::uint64_t pixel = pixelOf[i] | (static_cast<std::uint64_t>(polarityOf[i]) << 32);
                const std::int64_t time = state.high + timeOf[i];
                Event2D* const after = out + std::popcount(rest);
                // Vector words hold two events on the average: write two without asking.
                storeLowest(out, pixel, rest, time);
                rest &= rest - 1;
                storeLowest(out + 1, pixel, rest, time);
                rest &= rest - 1;
                for (out += 2; rest != 0; ++out) {
                    storeLowest(out, pixel, rest, time);
                    rest &= rest - 1;
                }
                out = after;
            }
        }
        state.eventFloor = state.high + timeOf[count - 1];
    }

    state.base = baseAfter;
    state.basePolarity = polarityAfter;
    state.hasBase |= bases != 0;
    if (rows != 0)
        state.row = lastOf(rows, at) & 0x7FF;
    if (lows != 0)
        state.low = lastOf(lows, at) & 0xFFF;
    pass.next = at + 64;
    return true;
}

using PortableDecoder = void (*)(EvtState&, EvtPass&, EvtCounts&);

/// Runs the portable decoder over the next `bytes` bytes only.
void decodeCarefully(PortableDecoder decoder, EvtState& state, EvtPass& pass, EvtCounts& counts,
                     std::ptrdiff_t bytes)
{
    const std::uint8_t* const end = pass.end;
    if (end - pass.next > bytes)
        pass.end = pass.next + bytes;
    decoder(state, pass, counts);
    pass.end = end;
}

} // namespace

bool hasBitInstructions()
{
    // GCC 12 has no name for lzcnt here; every processor with bmi2 has it.
    static const bool has
        = __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
    return has;
}

bool hasWideInstructions()
{
    static const bool has = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw")
        && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq")
        && __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2")
        && __builtin_cpu_supports("avx512bitalg") && hasBitInstructions();
    return has;
}

KORVANE_WIDE void decodeEvt2Wide(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    constexpr std::ptrdiff_t block = 64;
    while (pass.end - pass.next >= block
           && pass.outEnd - pass.out >= static_cast<std::ptrdiff_t>(EvtDecoder::slack)) {
        if (state.started && !state.stepOpen && decodeEvt2Block(state, pass, pass.out))
            continue;
        decodeCarefully(decodeEvt2Portable, state, pass, counts, block);
    }
    if (pass.end - pass.next < block)
        decodeEvt2Portable(state, pass, counts);
}

KORVANE_WIDE void decodeEvt3Wide(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    constexpr std::ptrdiff_t block = 64;
    while (pass.end - pass.next >= block
           && pass.outEnd - pass.out >= static_cast<std::ptrdiff_t>(EvtDecoder::slack)) {
        if (state.started && state.hasRow && !state.rowHidden && !state.stepOpen
            && decodeEvt3Block(state, pass, pass.out))
            continue;
        decodeCarefully(decodeEvt3Portable, state, pass, counts, block);
    }
    if (pass.end - pass.next < block)
        decodeEvt3Portable(state, pass, counts);
}

} // namespace korvane::recording

#else

namespace korvane::recording {

bool hasBitInstructions()
{
    return false;
}

bool hasWideInstructions()
{
    return false;
}

void decodeEvt2Wide(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    decodeEvt2Portable(state, pass, counts);
}

void decodeEvt3Wide(EvtState& state, EvtPass& pass, EvtCounts& counts)
{
    decodeEvt3Portable(state, pass, counts);
}

} // namespace korvane::recording

#endif
