#include "camera/recording/evtdecoder.h"

#include "camera/recording/evtdecoders.h"

namespace korvane::recording {

EvtDecoder::EvtDecoder(EvtEncoding encoding, InstructionSet instructions)
    : kind(encoding), function(decodeEvt3Portable)
{
    const bool wide = instructions == InstructionSet::Best && hasWideInstructions();
    const bool bits = instructions == InstructionSet::Best && hasBitInstructions();
    switch (encoding) {
    case EvtEncoding::Evt2:
        function = wide ? decodeEvt2Wide : decodeEvt2Portable;
        break;
    case EvtEncoding::Evt21:
        function = bits ? decodeEvt21Wide : decodeEvt21Portable;
        break;
    case EvtEncoding::Evt21Legacy:
        function = bits ? decodeEvt21LegacyWide : decodeEvt21LegacyPortable;
        break;
    case EvtEncoding::Evt3:
        function = wide ? decodeEvt3Wide : decodeEvt3Portable;
        break;
    }
}

} // namespace korvane::recording
