#pragma once

#include "camera/recording/evtencoding.h"
#include "tests/support/temporaryrecordings.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

/// One word of a plain recording: an event, or an edge on the trigger input.
struct PlainWord
{
    std::uint64_t time = 0; ///< microseconds
    bool isTrigger = false;
};

/// Writes recordings word by word, in EVT 2.0, so that a test knows what is in them. The event at time t is
/// at column t mod 640, row t mod 480 and has the polarity t mod 2; so has an edge its polarity.
inline std::string writePlainRecording(const TemporaryRecordings& folder, const std::string& name,
                                       const std::vector<PlainWord>& words)
{
    std::vector<std::uint32_t> stream{evt::high2(0)};
    std::uint64_t high = 0;
    for (const PlainWord& word : words) {
        // Cameras send time words in idle stretches too.
        while (high != word.time >> 6U) {
            high = std::min(word.time >> 6U, high + (std::uint64_t{1} << 16U));
            stream.push_back(evt::high2(static_cast<std::uint32_t>(high)));
        }
        const auto bits = static_cast<unsigned>(word.time & 63U);
        const auto polarity = static_cast<unsigned>(word.time % 2);
        if (word.isTrigger)
            stream.push_back(evt::trigger2(bits, 0, polarity));
        else
            stream.push_back(evt::cd2(polarity, bits, static_cast<unsigned>(word.time % 640),
                                      static_cast<unsigned>(word.time % 480)));
    }
    return folder.write(name, TemporaryRecordings::header(korvane::recording::EvtEncoding::Evt2),
                        evt::words2(stream));
}

inline std::vector<PlainWord> eventsAt(const std::vector<std::uint64_t>& times)
{
    std::vector<PlainWord> words;
    for (const std::uint64_t time : times)
        words.push_back({time, false});
    return words;
}

/// One event every `every` microseconds in [from, to).
inline std::vector<PlainWord> steadyEvents(std::uint64_t from, std::uint64_t to, std::uint64_t every)
{
    std::vector<PlainWord> words;
    for (std::uint64_t time = from; time < to; time += every)
        words.push_back({time, false});
    return words;
}
