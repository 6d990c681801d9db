#include "camera/simulation/simulatedfusioncamera.h"

#include "camera/simulation/apstool.h"
#include "camera/simulation/biases.h"
#include "camera/simulation/fusionscene.h"

#include <utility>

namespace korvane::simulation {

namespace {

/// What the intensity sensor makes of the stage.
class StageFrames : public FrameSource
{
public:
    StageFrames(std::shared_ptr<const FusionStage> stage,
                std::shared_ptr<Handover<ApsParameters>> wantedParameters)
        : renderer(std::move(stage)), wanted(std::move(wantedParameters))
    {
    }
    ApsFrame frameAt(std::uint64_t time) override
    {
        if (wanted->take(parameters))
            renderer.setParameters(parameters);
        return renderer.render(time);
    }

private:
    ApsRenderer renderer;
    const std::shared_ptr<Handover<ApsParameters>> wanted;
    ApsParameters parameters;
};

} // namespace

std::shared_ptr<SimulatedFusionCamera> SimulatedFusionCamera::make(const SimulatedCameraConfig& config)
{
    return share(new SimulatedFusionCamera(config, std::make_shared<const FusionStage>(config.seed),
                                           std::make_shared<Handover<ApsParameters>>()));
}

SimulatedFusionCamera::SimulatedFusionCamera(const SimulatedCameraConfig& config,
                                             const std::shared_ptr<const FusionStage>& stage,
                                             Intensity parameters)
    : StreamedFusionCamera(
        {config.serial, config.product, {}},
        std::make_unique<SensorStream>(std::make_unique<FusionScene>(stage), config.sensor, config.seed),
        std::make_unique<StageFrames>(stage, parameters)),
      sensor(static_cast<SensorStream&>(source())), intensity(std::move(parameters)),
      startFails(config.failStart)
{
    if (config.failVideo)
        frameRecorder().setEncoders({{}, false});
    streamTools().add(ToolType::Biases, makeBiasesTool(sensor.parameters(), sensor.parameterHandover()));
    // The intensity sensor tells when a frame begins.
    streamTools().addTriggerInput(framePeriod);
    streamTools().add(ToolType::Aps, makeApsTool(intensity));
    offerTools();
}

void SimulatedFusionCamera::start(STREAM_TYPE type)
{
    if (!startFails)
        StreamedFusionCamera::start(type);
}

} // namespace korvane::simulation
