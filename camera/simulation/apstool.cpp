#include "camera/simulation/apstool.h"

#include <QtGlobal>

#include <string>
#include <utility>
#include <vector>

namespace korvane::simulation {

namespace {

const std::string exposure = "exposure";
const std::string gain = "gain";
const std::string blackLevel = "black_level";
const std::string flip = "flip";

} // namespace

std::shared_ptr<ParameterTool> makeApsTool(std::shared_ptr<Handover<ApsParameters>> sensor)
{
    using Integer = ToolParameter::Integer;
    const ApsParameters standard;
    std::vector<ToolParameter> table{
        {exposure, QT_TRANSLATE_NOOP("CameraTools", "How long each picture gathers light. Longer: brighter."),
         Integer{ApsParameters::shortestExposureUs, ApsParameters::longestExposureUs, standard.exposureUs},
         "µs"},
        {gain, QT_TRANSLATE_NOOP("CameraTools", "Amplifies the picture. 6 dB act like twice the exposure."),
         Integer{0, ApsParameters::greatestGainDb, standard.gainDb}, "dB"},
        {blackLevel,
         QT_TRANSLATE_NOOP("CameraTools", "Value of pixels without light, added to every pixel."),
         Integer{0, ApsParameters::greatestBlackLevel, standard.blackLevel},
         {}},
        {flip,
         QT_TRANSLATE_NOOP("CameraTools", "Turns the picture upside down. Events are not turned."),
         ToolParameter::Switch{standard.flipped},
         {}},
    };
    return std::make_shared<ParameterTool>(std::move(table),
                                           [sensor = std::move(sensor)](const ToolValues& wanted) {
                                               ApsParameters parameters;
                                               parameters.exposureUs = wanted.integer(exposure);
                                               parameters.gainDb = wanted.integer(gain);
                                               parameters.blackLevel = wanted.integer(blackLevel);
                                               parameters.flipped = wanted.isOn(flip);
                                               sensor->set(parameters);
                                               return true;
                                           });
}

} // namespace korvane::simulation
