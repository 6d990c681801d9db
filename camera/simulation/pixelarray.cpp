#include "camera/simulation/pixelarray.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace korvane::simulation {

namespace {

// Shares and factors are counted in parts of 32768, deviations of the normal distribution in parts of 4096.
constexpr int fractionBits = 15;
constexpr int one = 1 << fractionBits;
constexpr int deviationBits = 12;

int toUnits(float contrast)
{
    return static_cast<int>(std::lround(contrast * logUnits));
}

int toFraction(float value)
{
    return static_cast<int>(std::lround(value * one));
}

/// The share of the way to its input that a first-order low-pass goes in a time.
double shareOf(double cornerHz, double seconds)
{
    return 1.0 - std::exp(-2.0 * std::numbers::pi * cornerHz * seconds);
}

std::int16_t toShare(double share)
{
    return static_cast<std::int16_t>(std::clamp(std::lround(share * one), 1L, long{one - 1}));
}

/// The corner follows the light, so the share of the way is a curve over the level; the loops draw a straight
/// line through its values at mid-grey and at e^-2.5 of it.
Bandwidth bandwidthFor(double cornerHz, double seconds)
{
    constexpr double dark = 2.5;
    const double grey = shareOf(cornerHz, seconds);
    const double inTheDark = shareOf(cornerHz * std::exp(-dark), seconds);
    Bandwidth result;
    result.base = toShare(grey);
    result.slope = toShare((grey - inTheDark) / (dark * logUnits) * 8192.0);
    result.least
        = toShare(shareOf(cornerHz * std::exp(static_cast<double>(darkestLevel) / logUnits), seconds));
    return result;
}

/// Deviations to pick from, so that one costs a look-up.
std::vector<std::int16_t> gaussianTable(Random& random)
{
    std::vector<std::int16_t> table(1U << 14U);
    for (std::int16_t& value : table)
        value = static_cast<std::int16_t>(
            std::clamp(std::lround(random.gaussian() * (1 << deviationBits)), -32767L, 32767L));
    return table;
}

} // namespace

/// Finds the events of one segment in one step. A pixel's level moves in a straight line from `before` to its
/// level now. Events are found in rounds of one event for every pixel that has one due, so that the work on
/// one pixel does not have to wait for the outcome of another.
class PixelArray::Crossings
{
public:
    Crossings(PixelArray& all, std::size_t index, const std::int16_t* levelsBefore, std::uint32_t firstColumn,
              const Step& during, FrameEvents& events)
        : array(all), segment(all.segments[index]), blind(all.blind[index]), random(all.random),
          refractory(all.refractory), before(levelsBefore), column(firstColumn), from(during.from),
          to(during.to), frameStart(static_cast<std::uint32_t>(during.frameStart)),
          length(static_cast<float>(during.to - during.from)), perMicrosecond(1.0F / length), out(events)
    {
    }

    /// Returns the pixels that are blind at the end.
    std::uint64_t run(std::uint64_t due, std::span<const NoiseEvent> noise)
    {
        due &= ~blind;
        for (std::uint64_t left = blind; left != 0; left &= left - 1)
            due |= see(laneOf(left));
        for (const NoiseEvent& event : noise) {
            if (event.time >= from && event.time < to)
                due = disturb(event, due);
        }
        while (due != 0) {
            std::uint64_t again = 0;
            for (std::uint64_t left = due; left != 0; left &= left - 1) {
                const std::uint32_t lane = laneOf(left);
                again |= fire(lane, to, segment.level[lane]);
            }
            due = again;
        }
        array.random = random;
        return blind;
    }

private:
    static std::uint32_t laneOf(std::uint64_t lanes)
    {
        return static_cast<std::uint32_t>(std::countr_zero(lanes));
    }
    static std::uint64_t bit(std::uint32_t lane, bool set) { return static_cast<std::uint64_t>(set) << lane; }

    /// No event of a pixel comes before.
    std::uint32_t earliest(std::uint32_t lane) const
    {
        return (delayed >> lane & 1U) != 0 ? delays[lane] : from;
    }
    void delay(std::uint32_t lane, std::uint32_t time)
    {
        delays[lane] = time;
        delayed |= bit(lane, true);
    }

    int levelAt(std::uint32_t lane, std::uint32_t time) const
    {
        const float travel = static_cast<float>(segment.level[lane] - before[lane]);
        const float waited = static_cast<float>(static_cast<std::int32_t>(time - from));
        return before[lane] + static_cast<int>(travel * perMicrosecond * waited);
    }

    bool isDue(std::uint32_t lane, int reached) const
    {
        return reached >= segment.upper[lane] || reached <= segment.lower[lane];
    }

    /// A threshold with one event's share of noise, chosen by the low 8 of `bits`.
    int jittered(int threshold, std::uint32_t bits) const
    {
        return std::max(1, threshold + (threshold * array.jitter[bits & 0xFFU] >> fractionBits));
    }

    /// A blind pixel remembers what it sees when it sees again; returns its bit when an event is due by then.
    std::uint64_t see(std::uint32_t lane)
    {
        // Right as long as refractory time and frame together are below half of what 16 bits count.
        const int sees = static_cast<std::int16_t>(static_cast<std::uint16_t>(segment.lower[lane])
                                                   - static_cast<std::uint16_t>(frameStart));
        if (sees >= static_cast<int>(to))
            return 0;
        const std::uint32_t start = std::max(static_cast<std::uint32_t>(std::max(sees, 0)), from);
        delay(lane, start);
        const int reference = levelAt(lane, start);
        const std::uint32_t bits = random.next();
        segment.upper[lane]
            = static_cast<std::int16_t>(reference + jittered(segment.onThreshold[lane], bits));
        segment.lower[lane]
            = static_cast<std::int16_t>(reference - jittered(segment.offThreshold[lane], bits >> 8U));
        blind &= ~bit(lane, true);
        return bit(lane, isDue(lane, segment.level[lane]));
    }

    /// A noise event comes after the events that its pixel makes until then, unless the pixel is blind;
    /// returns which pixels have events due now.
    std::uint64_t disturb(const NoiseEvent& event, std::uint64_t due)
    {
        const std::uint32_t lane = event.pixel % segmentWidth;
        while ((blind >> lane & 1U) == 0 && isDue(lane, levelAt(lane, event.time))
               && event.time > earliest(lane))
            fire(lane, event.time, levelAt(lane, event.time));
        if ((blind >> lane & 1U) == 0 && event.time >= earliest(lane)) {
            out.add(event.time, column + lane, event.polarity);
            segment.lower[lane]
                = static_cast<std::int16_t>(static_cast<std::uint16_t>(frameStart + event.time + refractory));
            blind |= bit(lane, true);
        }
        due &= ~bit(lane, true);
        return due | ((blind >> lane & 1U) != 0 ? see(lane) : bit(lane, isDue(lane, segment.level[lane])));
    }

    /// Adds the next event of a pixel on its way to the level that it reaches at `until`; returns its bit
    /// when another one is due by then.
    std::uint64_t fire(std::uint32_t lane, std::uint32_t until, int reached)
    {
        const int start = before[lane];
        const bool on = reached >= segment.upper[lane];
        const float travel = static_cast<float>(segment.level[lane] - start);
        const float usPerUnit = length / travel;
        const std::uint32_t bits = random.next();
        // Levels are whole units, so a slow change would bunch its events at a few times of the step; a
        // random part of a unit spreads them. A threshold that has itself moved past the level is due at any
        // time.
        const float part = static_cast<float>(static_cast<std::int32_t>(bits & 0xFFFFU)) * 0x1.0p-16F;
        const float way = static_cast<float>((on ? segment.upper[lane] : segment.lower[lane]) - start);
        float wait = way * usPerUnit;
        if (wait > 0) [[likely]]
            wait -= part * std::abs(usPerUnit);
        else
            wait = part * length;
        const auto offset = static_cast<std::int32_t>(wait);
        const std::uint32_t time = static_cast<std::uint32_t>(
            std::clamp(static_cast<std::int32_t>(from) + offset, static_cast<std::int32_t>(earliest(lane)),
                       static_cast<std::int32_t>(until) - 1));
        out.add(time, column + lane, on ? 1U : 0U);

        const std::uint32_t sees = time + refractory;
        const int reference = levelAt(lane, sees);
        const int upper = reference + jittered(segment.onThreshold[lane], bits >> 16U);
        const int lower = reference - jittered(segment.offThreshold[lane], bits >> 24U);
        const bool isBlind = sees >= until;
        delay(lane, sees);
        segment.upper[lane] = static_cast<std::int16_t>(upper);
        segment.lower[lane]
            = static_cast<std::int16_t>(isBlind ? static_cast<int>(frameStart + sees) : lower);
        blind |= bit(lane, isBlind);
        return bit(lane, (sees < until) & ((reached >= upper) | (reached <= lower)));
    }

    PixelArray& array;
    Segment& segment;
    std::uint64_t blind;
    QuickRandom random; // a copy of the array's
    std::uint32_t refractory;
    const std::int16_t* before;
    std::uint32_t column;
    std::uint32_t from;
    std::uint32_t to;
    std::uint32_t frameStart; // low half of the time in microseconds
    float length;
    float perMicrosecond;
    FrameEvents& out;
    std::uint64_t delayed = 0;
    std::uint32_t delays[segmentWidth]; // of the pixels in `delayed`
};

PixelArray::PixelArray(std::size_t segmentCount, std::uint64_t seed)
    : kernels(&pixelKernels()), segments(segmentCount), blind(segmentCount),
      onMismatch(segmentCount * segmentWidth), offMismatch(segmentCount * segmentWidth), random(seed)
{
    Random draw(seed);
    const std::vector<std::int16_t> table = gaussianTable(draw);
    for (std::size_t i = 0; i < onMismatch.size(); ++i) {
        const std::uint64_t bits = draw.next();
        onMismatch[i] = table[bits & 0x3FFFU];
        offMismatch[i] = table[bits >> 32U & 0x3FFFU];
    }
    for (Segment& segment : segments) {
        std::fill_n(segment.upper, segmentWidth, std::int16_t{1});
        std::fill_n(segment.lower, segmentWidth, std::int16_t{-1});
    }
}

void PixelArray::setParameters(const SensorParameters& parameters, std::uint32_t frameUs)
{
    const double frameSeconds = frameUs * 1e-6;
    for (std::size_t i = 0; i < bandwidths.size(); ++i) {
        bandwidths[i] = bandwidthFor(static_cast<double>(parameters.cutoffHz),
                                     frameSeconds / static_cast<double>(1U << i));
    }
    const auto highPass = static_cast<double>(parameters.highPassHz);
    forgetShare = highPass > 0 ? toShare(shareOf(highPass, frameSeconds)) : std::int16_t{0};
    refractory = parameters.refractoryUs;
    Random draw(0);
    for (std::size_t i = 0; i < jitter.size(); i += 2) {
        const double relative = draw.gaussian() * static_cast<double>(parameters.thresholdJitter);
        jitter[i] = static_cast<std::int16_t>(std::lround(std::clamp(relative, -0.9, 0.9) * one));
        jitter[i + 1] = static_cast<std::int16_t>(-jitter[i]);
    }

    setThresholds(parameters);
}

/// Gives every pixel its thresholds and moves its bounds accordingly; what it remembers stays.
void PixelArray::setThresholds(const SensorParameters& parameters)
{
    const int on = toUnits(parameters.onThreshold);
    const int off = toUnits(parameters.offThreshold);
    const int spread = toFraction(parameters.thresholdMismatch);
    // A threshold far below its neighbours' would make a pixel that never rests.
    const auto individual = [spread](int threshold, int deviation) {
        const int factor = std::max(one / 5, one + (spread * deviation >> deviationBits));
        return static_cast<std::int16_t>(std::clamp(threshold * factor >> fractionBits, 1, 8191));
    };
    for (std::size_t index = 0; index < segments.size(); ++index) {
        Segment& segment = segments[index];
        const std::int16_t* onDeviation = onMismatch.data() + index * segmentWidth;
        const std::int16_t* offDeviation = offMismatch.data() + index * segmentWidth;
        moveBounds(index, [&](std::size_t i) {
            const std::int16_t newOn = individual(on, onDeviation[i]);
            const std::int16_t newOff = individual(off, offDeviation[i]);
            segment.upper[i] = static_cast<std::int16_t>(segment.upper[i] - segment.onThreshold[i] + newOn);
            segment.lower[i] = static_cast<std::int16_t>(segment.lower[i] + segment.offThreshold[i] - newOff);
            segment.onThreshold[i] = newOn;
            segment.offThreshold[i] = newOff;
        });
    }
}

/// Lets `move` change the bounds of pixel after pixel of a segment. A blind pixel has none: its `lower` says
/// when it sees again and stays.
template <typename Move>
void PixelArray::moveBounds(std::size_t index, Move move)
{
    std::int16_t* const lower = segments[index].lower;
    std::int16_t kept[segmentWidth];
    for (std::uint64_t left = blind[index]; left != 0; left &= left - 1)
        kept[std::countr_zero(left)] = lower[std::countr_zero(left)];
    for (std::size_t i = 0; i < segmentWidth; ++i)
        move(i);
    for (std::uint64_t left = blind[index]; left != 0; left &= left - 1)
        lower[std::countr_zero(left)] = kept[std::countr_zero(left)];
}

void PixelArray::settle(std::size_t index, const std::int16_t* light)
{
    Segment& segment = segments[index];
    for (std::size_t i = 0; i < segmentWidth; ++i) {
        segment.level[i] = light[i];
        // Anywhere between two events: a sensor that has watched for long has no common starting point.
        const int room = segment.onThreshold[i] + segment.offThreshold[i];
        const int above = 1 + static_cast<int>(random.next() % static_cast<std::uint32_t>(room - 1));
        segment.upper[i] = static_cast<std::int16_t>(light[i] + above);
        segment.lower[i] = static_cast<std::int16_t>(light[i] + above - room);
    }
}

bool PixelArray::advance(std::size_t index, std::uint32_t firstColumn, const std::int16_t* light,
                         const Step& step, std::span<const NoiseEvent> noise, FrameEvents& out)
{
    Segment& segment = segments[index];
    alignas(64) std::int16_t before[segmentWidth];
    const std::uint64_t due = kernels->step(light, segment.level, before, segment.lower, segment.upper,
                                            bandwidths[static_cast<std::size_t>(step.stepsLog2)]);
    if ((due | blind[index]) == 0 && noise.empty())
        return false;
    const std::size_t perPixel = (step.to - step.from) / refractory + 2;
    out.reserve(segmentWidth * perPixel + noise.size());
    blind[index] = Crossings(*this, index, before, firstColumn, step, out).run(due, noise);
    return blind[index] != 0;
}

void PixelArray::forget()
{
    if (forgetShare == 0)
        return;
    for (std::size_t index = 0; index < segments.size(); ++index) {
        Segment& segment = segments[index];
        moveBounds(index, [&](std::size_t i) {
            const int remembered = segment.upper[i] - segment.onThreshold[i];
            const int shift = ((segment.level[i] - remembered) * forgetShare + one / 2) >> fractionBits;
            segment.upper[i] = static_cast<std::int16_t>(segment.upper[i] + shift);
            segment.lower[i] = static_cast<std::int16_t>(segment.lower[i] + shift);
        });
    }
}

} // namespace korvane::simulation
