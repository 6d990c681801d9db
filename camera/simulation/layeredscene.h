#pragma once

#include "camera/simulation/layer.h"
#include "camera/simulation/scene.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace korvane::simulation {

/// A scene stacked from layers. Derived classes add the layers once and move them frame by frame. What lies
/// behind something opaque is not drawn, and what nothing moves through is reported to be at rest. One thread
/// at a time.
class LayeredScene : public Scene
{
public:
    LayeredScene(int width, int height);

    void beginFrame(std::uint64_t start, std::uint32_t duration) final;
    void beginRow(int row, std::uint8_t* steps) final;
    void sample(int segment, int point, std::int16_t* out) final;

protected:
    /// Moves the layers to where they are at the start and the end of a frame, seconds of the scene's time.
    virtual void moveLayers(double before, double after) = 0;
    /// Sets how fast the scene's time flows; 1 at first.
    void setSpeed(double speed) { flow = speed; }
    double speed() const { return flow; }
    /// How often in a second of the scene's time the light on any pixel moves on by `threshold` (logUnits):
    /// the events of a perfect sensor. Watches every few rows at some moments within `period` seconds.
    double crossingsPerSecond(int threshold, double period);
    /// Puts a layer behind those added before; at most 16.
    void addBehind(std::shared_ptr<Layer> layer);

private:
    struct Stack // of a segment, bit i for layer i
    {
        std::uint32_t drawn = 0;
        std::uint32_t whole = 0;
    };
    std::vector<std::shared_ptr<Layer>> layers; // from the front
    std::vector<Stack> stacks;
    std::vector<std::uint8_t> bits;
    double flow = 1.0;
    int frame = 0;
};

} // namespace korvane::simulation
