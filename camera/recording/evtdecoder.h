#pragma once

#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/recording/evtencoding.h"
#include "camera/recording/evtstate.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvane::recording {

/// What one call of a decoder works on. The decoder moves `next` and `out`; it stops before the first
/// incomplete word, and when fewer than `EvtDecoder::slack` places are left in the output.
struct EvtPass
{
    const std::uint8_t* next = nullptr; ///< first word to decode
    const std::uint8_t* end = nullptr; ///< decode no word that ends after this
    const std::uint8_t* streamEnd
        = nullptr; ///< end of the words in memory, at or after `end`; may be looked at
    Event2D* out = nullptr;
    Event2D* outEnd = nullptr;
    std::vector<EventTriggerIn>* triggers = nullptr; ///< where triggers go; null: they are not kept
    Geometry geometry; ///< events outside are counted and dropped
};

/// The instructions a decoder may use. Both give the same events; `Best` is what this processor has.
enum class InstructionSet {
    Portable,
    Best,
};

/// Decodes words of one encoding into events. Stateless itself and free of allocation (but for triggers): the
/// state goes in and out with each call, so any number of threads may decode the same stream.
class EvtDecoder
{
public:
    /// Places that a pass needs in its output to make progress: what one step of any decoder writes at most
    /// (32 vector words of 12 pixels) with room to write past the last event.
    static constexpr std::size_t slack = 512;

    explicit EvtDecoder(EvtEncoding encoding, InstructionSet instructions = InstructionSet::Best);

    EvtEncoding encoding() const { return kind; }
    /// Decodes until `pass.end` or until the output is full. Events come in stream order, their times never
    /// step back.
    void decode(EvtState& state, EvtPass& pass, EvtCounts& counts) const { function(state, pass, counts); }

private:
    using Function = void (*)(EvtState&, EvtPass&, EvtCounts&);

    EvtEncoding kind;
    Function function;
};

} // namespace korvane::recording
